#include <mdtools/debug_output.h>

#include "platform/console.h"
#include "platform/debug_receiver.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

// mdtools-receiver: shows what the programs of this desktop trace.

namespace {

using Tools::Platform::DebugListener;

constexpr const char* Usage =
    "usage: mdtools-receiver [--raw] [--seconds N]\n"
    "Shows the debug output of all programs of this desktop, each piece with date, time and the\n"
    "sender's process id, until Ctrl-C. Start it first: a program looks for it only once.\n"
    "  --raw        the bytes of the pieces and nothing else\n"
    "  --seconds N  end by itself after N seconds\n";

struct Options {
    bool raw = false;
    bool help = false;
    // None if negative.
    std::chrono::milliseconds limit{-1};
};

bool parseSeconds(std::string_view text, Options& options)
{
    std::uint32_t seconds = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), seconds);
    options.limit = std::chrono::seconds(seconds);
    return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size();
}

bool parse(int count, char** arguments, Options& options)
{
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--raw")
            options.raw = true;
        else if (argument == "--help")
            options.help = true;
        else if (argument != "--seconds" || ++i == count || !parseSeconds(arguments[i], options))
            return false;
    }
    return true;
}

// With its origin, and on a line of its own.
std::string describe(std::uint32_t sender, std::string_view piece)
{
    std::string text = Tools::DebugReceiverHelper::getDateAndTime();
    text.append(" [").append(std::to_string(sender)).append("] ").append(piece);
    if (text.back() != '\n')
        text += '\n';
    return text;
}

// For the handler of Ctrl-C, which has no argument. Set before the handler is, and never changed.
DebugListener* s_listener = nullptr;

void stopListener()
{
    s_listener->stop();
}

int run(DebugListener& listener, const Options& options)
{
    s_listener = &listener;
    Tools::Platform::onEndRequest(stopListener);
    if (options.limit.count() > 0)
        Tools::Platform::endAfter(static_cast<unsigned int>(options.limit.count() / 1000));
    bool written = true;
    listener.run(
        [&](std::uint32_t sender, const char* text, std::size_t length) {
            const std::string_view piece(text, length);
            const std::string line = options.raw ? std::string() : describe(sender, piece);
            const std::string_view output = options.raw ? piece : std::string_view(line);
            // Nobody reads any more: end, rather than hold up the senders for nothing.
            if (written && !Tools::Platform::writeStandardOutput(output.data(), output.size())) {
                written = false;
                listener.stop();
            }
        },
        options.limit);
    Tools::Platform::onEndRequest(nullptr);
    return written ? 0 : 1;
}

}

int main(int count, char** arguments)
{
    Options options;
    if (!parse(count, arguments, options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    if (options.help) {
        std::fputs(Usage, stdout);
        return 0;
    }
    DebugListener listener;
    switch (listener.start()) {
    case DebugListener::Start::Done:
        break;
    case DebugListener::Start::AlreadyRunning:
        std::fputs("mdtools-receiver: another receiver is running already\n", stderr);
        return 1;
    case DebugListener::Start::Failed:
        std::fputs("mdtools-receiver: cannot listen on this desktop\n", stderr);
        return 1;
    }
    if (!options.raw) {
        // Scripts wait for this line, and some run-times hold it back when it goes to a file.
        std::fputs("mdtools-receiver: waiting for messages; Ctrl-C ends it\n", stderr);
        std::fflush(stderr);
    }
    return run(listener, options);
}
