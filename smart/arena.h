#pragma once

#include "smart/shared.h"

#include <cstddef>

namespace Tools::Smart {

// A page of an arena: memory for many small objects, given out by moving a mark (a bump allocator)
// and freed as a whole when the last of them, each an owner of the page, has gone. They may go in
// different threads.
class ArenaPage : public SharedObject {
public:
    static Shared<ArenaPage> create(std::size_t size);
    static void destroy(ArenaPage* page);

    // Null if there is not enough left. For one thread at a time.
    void* take(std::size_t size);

private:
    explicit ArenaPage(std::size_t size) : m_left(size) {}

    std::size_t m_left;
};

// The arena of the records of one tree. The first ones are allocated one by one, so that a few
// records do not occupy a page; then pages of growing size serve, as many records stay together or
// go together. The arena itself may go before them.
class Arena {
public:
    // Memory on an arena page, or of its own: then `page` is null, and operator delete frees it.
    void* allocate(std::size_t size, Shared<ArenaPage>& page);

private:
    OwnerStock<ArenaPage> m_owners;
    ArenaPage* m_page = nullptr;
    std::size_t m_allocated = 0;
};

}
