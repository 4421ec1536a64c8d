#include <mdtools/selection.h>

namespace Tools {

SelectableObject::~SelectableObject() = default;

SelectableObject::Flag SelectableObject::getSelected() const
{
    return m_flag;
}

bool SelectableObject::isNotSelected() const
{
    return m_flag == NotSelected;
}

bool SelectableObject::isSelected() const
{
    return m_flag == Selected;
}

bool SelectableObject::isSelectedOff() const
{
    return m_flag == SelectedOff;
}

bool SelectableObject::isSelectedOn() const
{
    return m_flag == SelectedOn;
}

void SelectableObject::setNotSelected()
{
    m_flag = NotSelected;
}

void SelectableObject::setSelected()
{
    m_flag = Selected;
}

void SelectableObject::setSelectedOff()
{
    m_flag = SelectedOff;
}

void SelectableObject::setSelectedOn()
{
    m_flag = SelectedOn;
}

void SelectableObject::setSelected(Flag flag)
{
    m_flag = flag;
}

// The four flags are two bits in disguise: what the object is, and what it will be once the pending
// pick is settled. The functions below are their transitions, odd ones included.
void SelectableObject::condSelect(int flag)
{
    if (flag != 0)
        m_flag = m_flag == NotSelected ? Selected : SelectedOn;
    else
        m_flag = m_flag == Selected ? SelectedOff : NotSelected;
}

void SelectableObject::select()
{
    m_flag = m_flag == Selected || m_flag == SelectedOn ? SelectedOff : SelectedOn;
}

// Unlike select(), it takes an object that is coming on for one that is off.
SelectableObject::Flag SelectableObject::toggleSelected(int mode)
{
    const bool off = mode == -1 ? m_flag == Selected : mode == 0;
    m_flag = off ? SelectedOff : SelectedOn;
    return m_flag;
}

void SelectableObject::resetUnselected()
{
    if (m_flag == SelectedOff)
        m_flag = NotSelected;
    else if (m_flag == SelectedOn)
        m_flag = Selected;
}

Interface::~Interface() = default;

bool Interface::getDeleted() const
{
    return m_deleted;
}

void Interface::setDeleted(bool deleted)
{
    m_deleted = deleted;
}

Visibility::~Visibility() = default;

}
