#include "smart/page.h"

#include <algorithm>
#include <new>

namespace Tools::Smart {

namespace {

constexpr std::size_t LargestPage = 32768;
constexpr std::size_t LargestObject = 1024;
// Pages begin when this much was allocated, and grow with it.
constexpr std::size_t FirstBytes = 8192;
constexpr std::size_t Alignment = 8;
static_assert(sizeof(Page) % Alignment == 0);

}

// Objects are taken from the end on, so that has to be aligned as the beginning is.
Shared<Page> Page::create(std::size_t size)
{
    size -= size % Alignment;
    void* memory = ::operator new(sizeof(Page) + size);
    return Shared<Page>(new (memory) Page(size));
}

void Page::destroy(Page* page)
{
    page->~Page();
    ::operator delete(page);
}

void* Page::take(std::size_t size)
{
    size += (Alignment - size % Alignment) % Alignment;
    if (m_left < size)
        return nullptr;
    m_left -= size;
    return reinterpret_cast<std::byte*>(this + 1) + m_left;
}

void* PagePool::allocate(std::size_t size, Shared<Page>& page)
{
    m_allocated += size;
    if (m_allocated < FirstBytes || size > LargestObject)
        return ::operator new(size);
    void* memory = m_page != nullptr ? m_page->take(size) : nullptr;
    if (memory == nullptr) {
        Shared<Page> fresh = Page::create(std::min(m_allocated / 4, LargestPage));
        m_page = fresh.get();
        m_owners = OwnerStock<Page>(std::move(fresh));
        memory = m_page->take(size);
    }
    page = m_owners.take();
    return memory;
}

}
