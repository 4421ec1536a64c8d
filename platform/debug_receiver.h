#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

// debug_receiver.h - the receiver's end of the debug channel, for programs that show the traces of
// others. It is no part of the library itself.
namespace Tools::Platform {

// One piece of `length` bytes, one at least, from the process with the id `sender`; `text` is good
// for the call only. The sender waits until the call returns.
using DebugPieceHandler =
    std::function<void(std::uint32_t sender, const char* text, std::size_t length)>;

// All of it but stop() belongs to one thread.
class DebugListener {
public:
    enum class Start { Done, AlreadyRunning, Failed };

    DebugListener();
    // Senders that still wait for an answer go on.
    ~DebugListener();
    DebugListener(const DebugListener&) = delete;
    DebugListener& operator=(const DebugListener&) = delete;

    // Becomes the receiver of this desktop, which has one at most.
    Start start();

    // Serves the senders until stop() is called or the time is over; no time limit if negative.
    void run(const DebugPieceHandler& handler, std::chrono::milliseconds limit);

    // From any thread, and from a signal handler. A run() that has not begun yet ends at once.
    void stop();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}
