#include "smart/arena.h"

#include <algorithm>
#include <new>

namespace Tools::Smart {

namespace {

constexpr std::size_t LargestPage = 32768;
constexpr std::size_t LargestObject = 1024;
// Pages begin when this much was allocated, and grow with it.
constexpr std::size_t FirstBytes = 8192;
constexpr std::size_t Alignment = 8;
static_assert(sizeof(ArenaPage) % Alignment == 0);

}

// Objects are taken from the end on, so that has to be aligned as the beginning is.
Shared<ArenaPage> ArenaPage::create(std::size_t size)
{
    size -= size % Alignment;
    void* memory = ::operator new(sizeof(ArenaPage) + size);
    return Shared<ArenaPage>(new (memory) ArenaPage(size));
}

// The objects are gone by now, or were never made.
void ArenaPage::destroy(ArenaPage* page)
{
    page->~ArenaPage();
    ::operator delete(page);
}

// Downward from the end, so that one number is all the state.
void* ArenaPage::take(std::size_t size)
{
    size += (Alignment - size % Alignment) % Alignment;
    if (m_left < size)
        return nullptr;
    m_left -= size;
    return reinterpret_cast<std::byte*>(this + 1) + m_left;
}

void* Arena::allocate(std::size_t size, Shared<ArenaPage>& page)
{
    m_allocated += size;
    if (m_allocated < FirstBytes || size > LargestObject)
        return ::operator new(size);
    void* memory = m_page != nullptr ? m_page->take(size) : nullptr;
    if (memory == nullptr) {
        Shared<ArenaPage> fresh = ArenaPage::create(std::min(m_allocated / 4, LargestPage));
        m_page = fresh.get();
        m_owners = OwnerStock<ArenaPage>(std::move(fresh));
        memory = m_page->take(size);
    }
    page = m_owners.take();
    return memory;
}

}
