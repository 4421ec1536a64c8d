#include <mdtools/debug_output.h>

#include "trace/debug_labels.h"
#include "trace/debug_sender.h"

namespace Tools {

namespace {

// Labels are not even read while nobody would see the message.
bool isWanted(const char* label)
{
    return DebugSender::connect() && DebugReceiver::get()->checkLabel(label);
}

}

// The functions with a variable number of arguments test before anything else: a program that
// traces in its loops pays for this test alone.

void debugPrintf(const char* format, ...)
{
    if (DebugSender::isClosed())
        return;
    va_list args;
    va_start(args, format);
    DebugSender::send(format, args);
    va_end(args);
}

void debugVPrintf(const char* format, va_list args)
{
    if (!DebugSender::isClosed())
        DebugSender::send(format, args);
}

void debugPrintfLabel(const char* label, const char* format, ...)
{
    if (DebugSender::isClosed() || !isWanted(label))
        return;
    va_list args;
    va_start(args, format);
    DebugSender::send(format, args);
    va_end(args);
}

void debugVPrintfLabel(const char* label, const char* format, va_list args)
{
    if (!DebugSender::isClosed() && isWanted(label))
        DebugSender::send(format, args);
}

DebugReceiver* DebugReceiver::get()
{
    static DebugReceiver receiver;
    DebugSender::connect();
    return &receiver;
}

void DebugReceiver::printf(const char* format, ...) const
{
    if (DebugSender::isClosed())
        return;
    va_list args;
    va_start(args, format);
    DebugSender::send(format, args);
    va_end(args);
}

void DebugReceiver::vprintf(const char* format, va_list args) const
{
    debugVPrintf(format, args);
}

void DebugReceiver::printfLabel(const char* label, const char* format, ...) const
{
    if (DebugSender::isClosed() || !isWanted(label))
        return;
    va_list args;
    va_start(args, format);
    DebugSender::send(format, args);
    va_end(args);
}

void DebugReceiver::vprintfLabel(const char*, const char* format, va_list args) const
{
    debugVPrintf(format, args);
}

bool DebugReceiver::checkLabel(const char* label) const
{
    const DebugSender::Use use;
    return !label || DebugLabels::contains(label);
}

bool DebugReceiver::checkWindow() const
{
    return DebugSender::receiverWasFound();
}

}

void MdDebugPrintf(const char* format, ...)
{
    if (Tools::DebugSender::isClosed())
        return;
    va_list args;
    va_start(args, format);
    Tools::DebugSender::send(format, args);
    va_end(args);
}

void MdDebugPrintfLabel(const char* label, const char* format, ...)
{
    if (Tools::DebugSender::isClosed() || !Tools::isWanted(label))
        return;
    va_list args;
    va_start(args, format);
    Tools::DebugSender::send(format, args);
    va_end(args);
}

void MdDebugVPrintf(const char* format, va_list args)
{
    Tools::debugVPrintf(format, args);
}

void MdDebugVPrintfLabel(const char* label, const char* format, va_list args)
{
    Tools::debugVPrintfLabel(label, format, args);
}
