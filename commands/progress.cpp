#include <mdtools/progress.h>

#include "platform/window.h"

namespace Tools {

ProgressHandler::~ProgressHandler() = default;
CancelHandler::~CancelHandler() = default;

ProgressMessenger::ProgressMessenger(WindowHandle window, std::uint32_t message)
    : m_window(window), m_message(message)
{}

ProgressMessenger::~ProgressMessenger() = default;

// A rendezvous, not a queue: each request replaces the pending one and is sent before the call
// returns, so the sender's memory is all the storage there is. No lock: the system's handover of
// the message orders the sender's writes before the window's reads.
void ProgressMessenger::setPosition(std::uint64_t value)
{
    clear();
    m_position = value;
    post();
}

void ProgressMessenger::setIncrement(std::uint64_t value)
{
    clear();
    m_increment = value;
    post();
}

void ProgressMessenger::setMinimum(std::uint64_t value)
{
    clear();
    m_minimum = value;
    post();
}

void ProgressMessenger::setMaximum(std::uint64_t value)
{
    clear();
    m_maximum = value;
    post();
}

void ProgressMessenger::setInfo(const char* text)
{
    clear();
    m_info = text;
    post();
}

void ProgressMessenger::setTitle(const char* text)
{
    clear();
    m_title = text;
    post();
}

void ProgressMessenger::activate()
{
    clear();
    m_activate = true;
    post();
}

void ProgressMessenger::reset()
{
    clear();
    m_reset = true;
    post();
}

// One request only, though a derived class may have left several: the order is part of the
// contract.
void ProgressMessenger::update(ProgressHandler* handler) const
{
    if (handler == nullptr)
        return;
    if (m_position)
        handler->setPosition(m_position.getValue());
    else if (m_increment)
        handler->setIncrement(m_increment.getValue());
    else if (m_minimum)
        handler->setMinimum(m_minimum.getValue());
    else if (m_maximum)
        handler->setMaximum(m_maximum.getValue());
    else if (m_info != nullptr)
        handler->setInfo(m_info);
    else if (m_title != nullptr)
        handler->setTitle(m_title);
    else if (m_activate)
        handler->activate();
    else if (m_reset)
        handler->reset();
}

mdt::Nullable<std::uint64_t> ProgressMessenger::getMinimum() const
{
    return m_minimum;
}

mdt::Nullable<std::uint64_t> ProgressMessenger::getMaximum() const
{
    return m_maximum;
}

void ProgressMessenger::post()
{
    if (m_window != nullptr)
        Platform::sendMessage(m_window, m_message);
}

void ProgressMessenger::clear()
{
    m_position = {};
    m_increment = {};
    m_minimum = {};
    m_maximum = {};
    m_info = nullptr;
    m_title = nullptr;
    m_activate = false;
    m_reset = false;
}

bool ProgressMessenger::isWindowThread() const
{
    return Platform::isWindowThread(m_window);
}

}
