#include "platform/debug_channel.h"

#include "platform/posix/debug_socket.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/patience.h"
#include "platform/posix/retry.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

// The sender's end, shared by the threads of this process and with the receiver:
// - The pointers and the socket are written by the one thread that opens the channel, before the
//   link counts as open, and by closing; threads read them only in between.
// - The block, s_patience and the socket's conversation belong to the thread that holds the event
//   (a semaphore of 1). It writes a piece, sends the request, and writes the next piece only after
//   the answer: so the receiver reads a block that nobody is writing.
// - s_holder is that thread's own id from after taking the event until before giving it back. Any
//   thread may compare it with its own id: equal it can be only for the holder itself.

// Some 20 microseconds.
constexpr int AnswerTries = 100;

// A receiver that does not take connections any more is given up after this time. There may be one
// in each of two directories, and together they are to cost less than a second.
constexpr timeval ConnectLimit = {0, 400'000};

int s_socket = -1;
void* s_block = nullptr;
sem_t* s_event = nullptr;
std::uint32_t s_process = 0;
std::atomic<pthread_t> s_holder{0};
Patience s_patience(AnswerTries);

int connectTo(const sockaddr_un& address)
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    // On a local socket this limits connect() as well.
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &ConnectLimit, sizeof(ConnectLimit));
    const bool isConnected =
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    return isConnected && isPeerSameUser(socket.get()) ? socket.release() : -1;
}

// The names carry the id of this process, so whoever holds one already is dead: its objects are
// replaced, never reused, as it may have left them in any state.
FileDescriptor createBlock(const char* name)
{
    constexpr int Flags = O_RDWR | O_CREAT | O_EXCL;
    int file = ::shm_open(name, Flags, S_IRUSR | S_IWUSR);
    if (file < 0 && errno == EEXIST && ::shm_unlink(name) == 0)
        file = ::shm_open(name, Flags, S_IRUSR | S_IWUSR);
    return FileDescriptor(file);
}

sem_t* createEvent(const char* name)
{
    constexpr int Flags = O_CREAT | O_EXCL;
    sem_t* event = ::sem_open(name, Flags, S_IRUSR | S_IWUSR, 1U);
    if (event == SEM_FAILED && errno == EEXIST && ::sem_unlink(name) == 0)
        event = ::sem_open(name, Flags, S_IRUSR | S_IWUSR, 1U);
    return event == SEM_FAILED ? nullptr : event;
}

void* mapBlock(const char* name)
{
    const FileDescriptor file = createBlock(name);
    if (!file.valid())
        return nullptr;
    // The memory is reserved now: a write into a block that the system has no room for would end
    // the program.
    void* block = MAP_FAILED;
    if (::posix_fallocate(file.get(), 0, DebugBlockSize) == 0)
        block = ::mmap(nullptr, DebugBlockSize, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (block != MAP_FAILED)
        return block;
    ::shm_unlink(name);
    return nullptr;
}

ssize_t receive(int flags)
{
    char answer = 0;
    return retryInterrupted([&] { return ::recv(s_socket, &answer, sizeof(answer), flags); });
}

// Adaptive spinning: a receiver on another processor answers before a sleep would have begun.
bool waitForAnswer()
{
    for (int tries = s_patience.next(); tries > 0; --tries) {
        const ssize_t count = receive(MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            continue;
        s_patience.succeeded();
        return count > 0;
    }
    s_patience.failed();
    return receive(0) > 0;
}

}

bool findDebugReceiver()
{
    const std::array<std::string, 2> directories = debugSocketDirectories();
    for (const std::string& directory : directories) {
        sockaddr_un address;
        if (!makeDebugSocketAddress(directory, address) || !isOwnDirectory(directory))
            continue;
        s_socket = connectTo(address);
        if (s_socket >= 0)
            return true;
    }
    return false;
}

char* openDebugBlock()
{
    s_process = static_cast<std::uint32_t>(::getpid());
    s_block = mapBlock(debugBlockName(s_process).c_str());
    if (s_block)
        s_event = createEvent(debugEventName(s_process).c_str());
    return s_event ? static_cast<char*>(s_block) : nullptr;
}

bool takeDebugBlock()
{
    retryInterrupted([] { return ::sem_wait(s_event); });
    s_holder = ::pthread_self();
    return true;
}

void releaseDebugBlock()
{
    s_holder = 0;
    ::sem_post(s_event);
}

bool holdsDebugBlock()
{
    return s_holder == ::pthread_self();
}

bool deliverDebugBlock()
{
    const DebugRequest request = {0, s_process};
    const ssize_t count =
        retryInterrupted([&] { return ::send(s_socket, &request, sizeof(request), MSG_NOSIGNAL); });
    return count == sizeof(request) && waitForAnswer();
}

void removeDebugNames()
{
    if (s_block)
        ::shm_unlink(debugBlockName(s_process).c_str());
    if (s_event)
        ::sem_unlink(debugEventName(s_process).c_str());
}

void closeDebugChannel()
{
    // The names go first: what the receiver still finds when the connection ends has been left by
    // a process that died.
    removeDebugNames();
    if (s_event)
        ::sem_close(s_event);
    abandonDebugChannel();
}

void abandonDebugChannel()
{
    // A forked child keeps the event's mapping: closing it takes a lock that another thread of the
    // parent may have held.
    s_event = nullptr;
    s_holder = 0;
    if (s_block)
        ::munmap(s_block, DebugBlockSize);
    s_block = nullptr;
    FileDescriptor(std::exchange(s_socket, -1)).close();
}

}
