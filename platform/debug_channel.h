#pragma once

#include <cstddef>

// debug_channel.h - the sender's end of the debug channel: the receiver, the block of memory that a
// piece of text is handed over in, and the event that says the block is free. A process has one
// each. The two objects carry the process id in their names, so that a receiver finds them.
namespace Tools::Platform {

// A piece of up to 4,095 bytes and its NUL.
constexpr std::size_t DebugBlockSize = 4096;

// False if no receiver is running, or none that takes this sender within a second; nothing was
// created then.
bool findDebugReceiver();

// Makes the block and the event for the receiver that was found. Null if that fails.
char* openDebugBlock();

// Waits without limit until the block is free, and takes it for the calling thread. False if the
// thread that has it was stopped at the end of the process.
bool takeDebugBlock();
void releaseDebugBlock();
// The calling thread has taken the block.
bool holdsDebugBlock();

// Informs the receiver that a piece is in the block, and waits until it has read it. False: the
// receiver is gone for good.
bool deliverDebugBlock();

// Takes the names of the two objects away from other processes. The objects themselves stay, as
// threads may be using them.
void removeDebugNames();

// Gives back everything; no thread is using the channel any more.
void closeDebugChannel();

// In a forked child: lets go of what belongs to the parent, whose names stay.
void abandonDebugChannel();

}
