#pragma once

#include <mdtools/displayer.h>
#include <mdtools/export.h>

#include <cstddef>
#include <vector>

namespace Tools {

// Something that is shown in a view: it knows how to put itself into its displayer, take itself out
// and bring itself up to date. The displayer is not owned.
class MDTOOLS_API Observer {
public:
    virtual ~Observer();

    virtual void addToDisplayer() = 0;
    virtual void removeFromDisplayer() = 0;
    virtual void updateInDisplayer() = 0;

    Displayer* getDisplayer() const;

protected:
    explicit Observer(Displayer* displayer);
    Observer(const Observer&) = default;
    Observer& operator=(const Observer&) = default;

private:
    Displayer* m_displayer;
};

// Owns observers, in the order of their addition, and passes requests on to them. All calls belong
// to one thread.
class MDTOOLS_API ObserverManager {
public:
    ObserverManager() = default;
    // Deletes the observers that are still there.
    virtual ~ObserverManager();
    ObserverManager(const ObserverManager&) = delete;
    ObserverManager& operator=(const ObserverManager&) = delete;

    // Takes the observer over, unless it is there already. Null is ignored.
    void addObserver(Observer* observer);
    // Gives the observer back to the caller. Ignored if it is not there.
    void removeObserver(Observer* observer);
    // The first one of that displayer; null if there is none.
    Observer* findObserver(const Displayer* displayer) const;

    // Ask every observer of that displayer (null: every observer), in order. An exception of an
    // observer ends the round and reaches the caller. An observer must not add or remove observers
    // of its manager meanwhile. Where one does so all the same, nothing is damaged: a removed
    // observer is not asked any more, an added one is asked from the next round on. Destroying the
    // manager is not survived. An observer may ask for another round, which runs to its end within
    // this one.
    void addToDisplayer(const Displayer* displayer);
    void removeFromDisplayer(const Displayer* displayer);
    void updateInDisplayer(const Displayer* displayer);

private:
    // A round under way: who is asked next, and where those end who were there at first. Removing
    // an observer moves both, so a round never skips or repeats one.
    struct Round {
        std::size_t next;
        std::size_t end;
    };

    void broadcast(const Displayer* displayer, void (Observer::*request)());

    std::vector<Observer*> m_observers;
    // The broadcasts that are under way, the innermost last.
    std::vector<Round> m_rounds;
};

}
