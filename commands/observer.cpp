#include <mdtools/observer.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace Tools {

Observer::Observer(Displayer* displayer) : m_displayer(displayer) {}
Observer::Observer(const Observer&) = default;
Observer& Observer::operator=(const Observer&) = default;
Observer::~Observer() = default;

Displayer* Observer::getDisplayer() const
{
    return m_displayer;
}

ObserverManager::ObserverManager() = default;

ObserverManager::~ObserverManager()
{
    // Taken out first: an observer's end may ask the manager for others.
    for (Observer* observer : std::exchange(m_observers, {}))
        delete observer;
}

void ObserverManager::addObserver(Observer* observer)
{
    if (observer == nullptr ||
        std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end())
        return;
    std::unique_ptr<Observer> owner(observer);
    m_observers.push_back(observer);
    static_cast<void>(owner.release());
}

void ObserverManager::removeObserver(Observer* observer)
{
    const auto place = std::find(m_observers.begin(), m_observers.end(), observer);
    if (place != m_observers.end())
        m_observers.erase(place);
}

Observer* ObserverManager::findObserver(const Displayer* displayer) const
{
    const auto found =
        std::find_if(m_observers.begin(), m_observers.end(), [displayer](const Observer* observer) {
            return observer->getDisplayer() == displayer;
        });
    return found != m_observers.end() ? *found : nullptr;
}

void ObserverManager::addToDisplayer(const Displayer* displayer)
{
    broadcast(displayer, &Observer::addToDisplayer);
}

void ObserverManager::removeFromDisplayer(const Displayer* displayer)
{
    broadcast(displayer, &Observer::removeFromDisplayer);
}

void ObserverManager::updateInDisplayer(const Displayer* displayer)
{
    broadcast(displayer, &Observer::updateInDisplayer);
}

void ObserverManager::broadcast(const Displayer* displayer, void (Observer::*request)())
{
    for (std::size_t i = 0; i < m_observers.size();) {
        Observer* const observer = m_observers[i];
        if (displayer == nullptr || observer->getDisplayer() == displayer)
            (observer->*request)();
        if (i < m_observers.size() && m_observers[i] == observer) {
            ++i;
            continue;
        }
        // Somebody went: on behind the one just asked, or, if it is gone itself, at its place.
        const auto place = std::find(m_observers.begin(), m_observers.end(), observer);
        if (place != m_observers.end())
            i = static_cast<std::size_t>(place - m_observers.begin()) + 1;
    }
}

}
