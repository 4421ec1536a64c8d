#pragma once

#include "platform/debug_receiver.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace MdToolsTest {

struct Piece {
    std::uint32_t sender = 0;
    std::string text;
};

// A receiver of the debug channel on a thread of its own. A piece is in pieces() before the call
// that sent it returns.
class TestReceiver {
public:
    using Callback = std::function<void(const Piece&)>;

    // `callback` sees each piece first, on the receiver's thread.
    explicit TestReceiver(Callback callback = {}) : m_callback(std::move(callback))
    {
        std::promise<bool> started;
        m_thread = std::thread([this, &started] { run(started); });
        m_running = started.get_future().get();
    }
    ~TestReceiver()
    {
        {
            const std::lock_guard<std::mutex> lock(m_stopping);
            m_listener->stop();
        }
        m_thread.join();
    }
    TestReceiver(const TestReceiver&) = delete;
    TestReceiver& operator=(const TestReceiver&) = delete;

    bool running() const { return m_running; }

    std::vector<Piece> pieces() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_pieces;
    }

    // The texts of one sender.
    std::vector<std::string> texts(std::uint32_t sender) const
    {
        std::vector<std::string> result;
        for (const Piece& piece : pieces()) {
            if (piece.sender == sender)
                result.push_back(piece.text);
        }
        return result;
    }

private:
    void run(std::promise<bool>& started)
    {
        // What belongs to a thread is made and ended on it.
        Tools::Platform::DebugListener listener;
        m_listener = &listener;
        const auto result = listener.start();
        started.set_value(result == Tools::Platform::DebugListener::Start::Done);
        listener.run(
            [this](std::uint32_t sender, const char* text, std::size_t length) {
                add({sender, std::string(text, length)});
            },
            std::chrono::milliseconds(-1));
        // The call of stop() has returned, too.
        const std::lock_guard<std::mutex> lock(m_stopping);
    }

    void add(Piece piece)
    {
        if (m_callback)
            m_callback(piece);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_pieces.push_back(std::move(piece));
    }

    Callback m_callback;
    mutable std::mutex m_mutex;
    std::vector<Piece> m_pieces;
    std::mutex m_stopping;
    bool m_running = false;
    Tools::Platform::DebugListener* m_listener = nullptr;
    std::thread m_thread;
};

}
