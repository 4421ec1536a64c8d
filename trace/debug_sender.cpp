#include "trace/debug_sender.h"

#include "platform/debug_channel.h"
#include "platform/lifetime.h"
#include "trace/debug_labels.h"
#include "trace/formatted_text.h"

#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

// Any number of threads send without a lock of this process; what they share is guarded thus:
// - s_link is a state machine. Unknown -> Connecting -> Open or Closed, Open -> Lost, and end() to
//   Closed from everywhere; each step is one compare-exchange, so one thread alone opens the
//   channel.
// - s_block, s_receiverFound and what the platform has opened are written while the link is
//   Connecting, by the thread that made it so. Whoever has read Open afterwards may read them.
// - The block's content and s_postponed belong to the thread that has taken the block: a
//   system-wide lock that the receiver knows, too.
// - s_users counts the threads between a Use and its end. end() closes the link first and looks at
//   the count then: at 0 nobody can come to what it frees; otherwise the system frees it.
namespace Tools::DebugSender {

std::atomic<Link> s_link{Link::Unknown};

namespace {

// No message has more characters, once it is formatted.
constexpr std::size_t MostCharacters = 65535;

std::atomic<int> s_users{0};
std::atomic<bool> s_receiverFound{false};
std::atomic<bool> s_handlersSet{false};
char* s_block = nullptr;

// What the thread that holds the block has been asked to send meanwhile; only that thread may look.
std::vector<std::string>* s_postponed = nullptr;

void endAll(Platform::LibraryEnd reason)
{
    // The system frees everything, and what a stopped thread was doing is better left alone.
    if (reason == Platform::LibraryEnd::ThreadsStopped)
        return;
    end();
    DebugLabels::release();
}

// The link is Connecting, so one thread at a time comes here.
void open()
{
    const Use use;
    if (!s_handlersSet.exchange(true)) {
        Platform::onLibraryEnd(endAll);
        Platform::onForkedChild(restart);
    }
    const bool found = Platform::findDebugReceiver();
    s_receiverFound = found;
    s_block = found ? Platform::openDebugBlock() : nullptr;
    Link expected = Link::Connecting;
    const Link reached = s_block ? Link::Open : Link::Closed;
    // The library may have been ended meanwhile.
    if (!s_link.compare_exchange_strong(expected, reached) || !s_block)
        Platform::closeDebugChannel();
}

// Copies the next piece of `text` into the block. Returns what follows it in the message.
std::string_view putPiece(std::string_view text)
{
    const std::string_view head = text.substr(0, Platform::DebugBlockSize - 1);
    const std::size_t lineFeed = head.find('\n');
    const bool isLine = lineFeed != std::string_view::npos;
    const std::size_t size = isLine ? lineFeed + 1 : head.size();
    std::memcpy(s_block, text.data(), size);
    s_block[size] = '\0';
    // After the first bytes of an overlong line everything is dropped, further lines as well.
    return isLine ? text.substr(size) : std::string_view();
}

void sendPieces(std::string_view text)
{
    while (!text.empty() && !isClosed()) {
        text = putPiece(text);
        Link expected = Link::Open;
        if (!Platform::deliverDebugBlock())
            s_link.compare_exchange_strong(expected, Link::Lost);
    }
}

// Holds the block: sends one message, and then what this thread is asked to send meanwhile.
class Delivery {
public:
    Delivery() { s_postponed = &m_postponed; }
    ~Delivery() { Platform::releaseDebugBlock(); }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    void send(const char* message)
    {
        sendPieces(message);
        for (std::size_t i = 0; i < m_postponed.size(); ++i) {
            const std::string text = std::move(m_postponed[i]);
            sendPieces(text);
        }
    }

private:
    std::vector<std::string> m_postponed;
};

void sendText(const char* text)
{
    if (*text == '\0')
        return;
    // Waiting for the receiver, the system may let this thread answer other windows, whose code
    // may trace. The block is taken then, and waiting for it would be for ever.
    if (Platform::holdsDebugBlock()) {
        s_postponed->emplace_back(text);
        return;
    }
    if (Platform::takeDebugBlock())
        Delivery().send(text);
}

}

Use::Use()
{
    s_users.fetch_add(1);
}

Use::~Use()
{
    s_users.fetch_sub(1);
}

bool isUsed()
{
    return s_users.load() != 0;
}

bool connect()
{
    for (;;) {
        Link link = s_link.load();
        if (link >= Link::Open)
            return link == Link::Open;
        if (link == Link::Unknown && s_link.compare_exchange_strong(link, Link::Connecting))
            open();
        else
            std::this_thread::yield();
    }
}

bool receiverWasFound()
{
    connect();
    return s_receiverFound;
}

void send(const char* format, va_list args)
{
    const Use use;
    if (!connect())
        return;
    const FormattedText text(format, args, MostCharacters);
    if (text.get())
        sendText(text.get());
}

void end()
{
    const Link before = s_link.exchange(Link::Closed);
    if (before != Link::Open && before != Link::Lost)
        return;
    Platform::removeDebugNames();
    if (!isUsed())
        Platform::closeDebugChannel();
}

void restart()
{
    Platform::abandonDebugChannel();
    s_users = 0;
    s_link = Link::Unknown;
}

}
