#include "platform/lifetime.h"

#include <atomic>
#include <memory>

namespace Tools::Platform {

namespace {

// A Treiber stack to which any thread pushes and from which only the end takes, all at once. So
// nobody reads a node that another one may free.
struct Node {
    EndHandler handler;
    Node* next;
};

std::atomic<Node*> s_handlers{nullptr};
std::atomic<bool> s_isWatched{false};

void callHandlers(LibraryEnd end)
{
    // Once more for what the handlers themselves brought into use.
    while (Node* first = s_handlers.exchange(nullptr)) {
        while (first != nullptr) {
            const std::unique_ptr<Node> node(first);
            first = node->next;
            node->handler(end);
        }
    }
}

}

void onLibraryEnd(EndHandler handler)
{
    if (!s_isWatched.exchange(true))
        watchLibraryEnd(callHandlers);
    auto node = std::make_unique<Node>(Node{handler, s_handlers.load()});
    while (!s_handlers.compare_exchange_weak(node->next, node.get())) {
    }
    static_cast<void>(node.release());
}

}
