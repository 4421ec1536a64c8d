#pragma once

#include "smart/shared.h"

#include <cstddef>

namespace Tools::Smart {

// Memory for many small objects, freed as a whole when the last of them, each an owner of the page,
// has gone. They may go in different threads.
class Page : public SharedObject {
public:
    static Shared<Page> create(std::size_t size);
    static void destroy(Page* page);

    // Null if there is not enough left. For one thread at a time.
    void* take(std::size_t size);

private:
    explicit Page(std::size_t size) : m_left(size) {}

    std::size_t m_left;
};

// Gives memory to the records of one tree. The first ones are allocated one by one, so that a few
// records do not occupy a page; then pages of growing size serve, as many records stay together or
// go together.
class PagePool {
public:
    // Memory on a page, or of its own: then `page` is null, and operator delete frees it.
    void* allocate(std::size_t size, Shared<Page>& page);

private:
    OwnerStock<Page> m_owners;
    Page* m_page = nullptr;
    std::size_t m_allocated = 0;
};

}
