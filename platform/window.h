#pragma once

#include <mdtools/platform_types.h>

#include <functional>

// platform/window.h - windows and the messages that threads send to them.
namespace Tools::Platform {

// Returns when the window's thread has handled the message, or the window is gone. Meanwhile the
// calling thread handles what is sent to windows of its own. On the window's thread the message is
// handled at once.
void sendMessage(WindowHandle window, unsigned int message);

// False for null and for windows that are gone.
bool isWindowThread(WindowHandle window);

// Handles the messages that other threads have sent to windows of this thread by now and wait for.
void handleSentMessages();

// False leaves the message to the system.
using MessageHandler = std::function<bool(unsigned int message)>;

// A window without a picture, of the calling thread; null if the system has none to give. It ends
// with its thread at the latest. The handler may destroy it.
WindowHandle createWindow(MessageHandler handler);

// Called on another thread, the window may stay until its own thread next looks at its messages.
void destroyWindow(WindowHandle window);

// What has become of the messages that waited.
enum class Pumped {
    All,
    // Others have been posted since and wait already.
    Others,
    // The program has been asked to end, and finds that in its own message loop.
    Ended
};

// Handles the messages that wait at the time of the call for windows of this thread; on Windows
// posted ones, too, if they are for this window.
Pumped processMessages(WindowHandle window);

// Waits until new messages may be there; false if none came in that time, or the window, which is
// one of this thread, is gone. A negative time is without limit.
bool waitForMessages(WindowHandle window, int milliseconds);

}
