#pragma once

#include <mdtools/export.h>

namespace Tools {

// The selection mark of a model's object. Beside the two settled states there are two pending ones,
// for picks that the user may still take back: resetUnselected() settles them. An object and its
// mark belong to one thread.
class MDTOOLS_API SelectableObject {
public:
    enum Flag : int {
        NotSelected = 0,
        Selected = 1,
        // Pending: becomes NotSelected.
        SelectedOff = 2,
        // Pending: becomes Selected.
        SelectedOn = 3
    };

    virtual ~SelectableObject();

    Flag getSelected() const;

    // Each is true for its one flag only: a pending object is neither selected nor not selected.
    bool isNotSelected() const;
    bool isSelected() const;
    bool isSelectedOff() const;
    bool isSelectedOn() const;

    // These set their flag whatever it was; setSelected(flag) stores any number as given.
    void setNotSelected();
    void setSelected();
    void setSelectedOff();
    void setSelectedOn();
    void setSelected(Flag flag);

    // Not 0: an object that is not selected becomes Selected at once, any other SelectedOn. 0: a
    // selected one becomes SelectedOff, any other NotSelected.
    void condSelect(int flag);
    // Turns over into a pending state: what is on or coming on goes off, and the other way round.
    void select();
    // -1 turns over by the flag (Selected becomes SelectedOff, all others SelectedOn), 0 gives
    // SelectedOff, anything else SelectedOn. Returns the new flag.
    Flag toggleSelected(int mode);
    // Settles what is pending.
    void resetUnselected();

protected:
    SelectableObject() = default;
    SelectableObject(const SelectableObject&) = default;
    SelectableObject& operator=(const SelectableObject&) = default;

private:
    Flag m_flag = NotSelected;
};

// A base for objects that are marked as deleted before they go. Not deleted at first.
class MDTOOLS_API Interface {
public:
    virtual ~Interface();

    bool getDeleted() const;
    void setDeleted(bool deleted);

protected:
    Interface() = default;
    Interface(const Interface&) = default;
    Interface& operator=(const Interface&) = default;

private:
    bool m_deleted = false;
};

// A base for objects that can be shown or hidden; what that means is up to them.
class MDTOOLS_API Visibility {
public:
    Visibility() = default;
    Visibility(const Visibility&) = default;
    Visibility& operator=(const Visibility&) = default;
    virtual ~Visibility();
};

}
