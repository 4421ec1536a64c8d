#include <mdtools/observer.h>

#include <algorithm>
#include <memory>

namespace Tools {

Observer::Observer(Displayer* displayer) : m_displayer(displayer) {}
Observer::~Observer() = default;

Displayer* Observer::getDisplayer() const
{
    return m_displayer;
}

ObserverManager::~ObserverManager()
{
    // Taken out one by one, the first one first: an observer's end may ask for others, take them
    // back or bring new ones.
    std::reverse(m_observers.begin(), m_observers.end());
    while (!m_observers.empty()) {
        const std::unique_ptr<Observer> observer(m_observers.back());
        m_observers.pop_back();
    }
}

void ObserverManager::addObserver(Observer* observer)
{
    if (observer == nullptr ||
        std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end())
        return;
    // Ours from here on, even if the list cannot grow.
    std::unique_ptr<Observer> owner(observer);
    m_observers.push_back(observer);
    static_cast<void>(owner.release());
}

// Indices after the gap move down by one, those of the rounds under way with them.
void ObserverManager::removeObserver(Observer* observer)
{
    const auto position = std::find(m_observers.begin(), m_observers.end(), observer);
    if (position == m_observers.end())
        return;
    const auto index = static_cast<std::size_t>(position - m_observers.begin());
    for (Round& round : m_rounds) {
        round.next -= index < round.next ? 1 : 0;
        round.end -= index < round.end ? 1 : 0;
    }
    m_observers.erase(position);
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

// A walk by index over the live list. m_rounds is the stack of walks under way, whose indices
// removeObserver() keeps right; the guard takes this one off even if an observer throws.
void ObserverManager::broadcast(const Displayer* displayer, void (Observer::*request)())
{
    struct End {
        std::vector<Round>& rounds;
        ~End() { rounds.pop_back(); }
    };
    m_rounds.push_back({0, m_observers.size()});
    const End end{m_rounds};
    while (m_rounds.back().next < m_rounds.back().end) {
        Observer* const observer = m_observers[m_rounds.back().next++];
        if (displayer == nullptr || observer->getDisplayer() == displayer)
            (observer->*request)();
    }
}

}
