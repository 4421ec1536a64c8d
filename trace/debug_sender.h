#pragma once

#include <atomic>
#include <cstdarg>

// The process's connection to the receiver of the debug channel, without labels.
namespace Tools::DebugSender {

// Lost: the receiver has ended; what was opened for it is still there.
enum class Link : int { Unknown, Connecting, Open, Closed, Lost };

extern std::atomic<Link> s_link;

// The one test that a call costs without a receiver. False also before the first use.
inline bool isClosed()
{
    return s_link.load(std::memory_order_relaxed) >= Link::Closed;
}

// Looks for the receiver at the first call. True while messages can be sent.
bool connect();

// A receiver was there at the first call, whatever became of it.
bool receiverWasFound();

void send(const char* format, va_list args);

// Marks a thread that uses what end() frees.
class Use {
public:
    Use();
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
};
bool isUsed();

// Closes the connection for good. What other threads are using just now is left to the system.
void end();

// Forgets everything, as a forked child has to: the next use looks for the receiver again.
void restart();

}
