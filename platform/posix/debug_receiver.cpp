#include "platform/debug_receiver.h"

#include "platform/debug_channel.h"
#include "platform/posix/debug_socket.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/patience.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <list>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <semaphore.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

using Clock = std::chrono::steady_clock;

// The receiver's end belongs to the one thread that runs the listener; only stop() comes from
// others, and it writes to nothing but an event. A sender's block is mapped for reading and may be
// looked at between a sender's request and the answer only, while its sender waits. Nothing in it
// is trusted: neither that it ends with a NUL nor that it stays as it is, should another thread of
// a broken sender go on writing.

// Some 40 microseconds.
constexpr int IdleRounds = 200;
// After so many rounds the others are looked after, busy as these senders may be.
constexpr int MostRounds = 1000;

// A sender's block, opened at its first piece and kept until the sender goes.
class Block {
public:
    Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { close(); }

    // Null if `sender` has no block of this user.
    const char* open(std::uint32_t sender);
    // Takes away the names that a dead sender has left.
    void removeNames() const;

private:
    void close();

    std::uint32_t m_sender = 0;
    const char* m_text = nullptr;
    struct stat m_status = {};
};

const char* Block::open(std::uint32_t sender)
{
    if (m_text && m_sender == sender)
        return m_text;
    close();
    const FileDescriptor file(::shm_open(debugBlockName(sender).c_str(), O_RDONLY, 0));
    if (!file.valid() || ::fstat(file.get(), &m_status) != 0 || m_status.st_uid != ::geteuid() ||
        m_status.st_size < static_cast<off_t>(DebugBlockSize))
        return nullptr;
    void* view = ::mmap(nullptr, DebugBlockSize, PROT_READ, MAP_SHARED, file.get(), 0);
    if (view == MAP_FAILED)
        return nullptr;
    m_sender = sender;
    m_text = static_cast<const char*>(view);
    return m_text;
}

void Block::removeNames() const
{
    if (!m_text)
        return;
    const std::string name = debugBlockName(m_sender);
    const FileDescriptor file(::shm_open(name.c_str(), O_RDONLY, 0));
    struct stat status = {};
    // A sender that ended in order has removed them, and another one may have made new ones.
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || status.st_ino != m_status.st_ino)
        return;
    ::shm_unlink(name.c_str());
    ::sem_unlink(debugEventName(m_sender).c_str());
}

void Block::close()
{
    if (m_text)
        ::munmap(const_cast<char*>(m_text), DebugBlockSize);
    m_text = nullptr;
}

struct Sender {
    explicit Sender(FileDescriptor value) : socket(std::move(value)) {}

    FileDescriptor socket;
    Block block;
    bool gone = false;
};

// Serves the next piece; false if there is none just now.
bool serve(Sender& sender, const DebugPieceHandler& handler)
{
    if (sender.gone)
        return false;
    DebugRequest request;
    const ssize_t count = ::recv(sender.socket.get(), &request, sizeof(request), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
        return false;
    if (count != sizeof(request)) {
        sender.gone = true;
        return false;
    }
    if (const char* text = sender.block.open(request.sender))
        handler(request.sender, text, ::strnlen(text, DebugBlockSize - 1));
    const char answer = 1;
    ::send(sender.socket.get(), &answer, sizeof(answer), MSG_NOSIGNAL | MSG_DONTWAIT);
    return true;
}

// Serves `active` as long as pieces keep coming.
void serveWhileAwake(const std::vector<Sender*>& active, const DebugPieceHandler& handler,
                     Patience& patience)
{
    int pieces = 0;
    int idle = patience.next();
    for (int round = 0; round < MostRounds && (round == 0 || idle > 0); ++round) {
        --idle;
        for (Sender* sender : active) {
            if (!serve(*sender, handler))
                continue;
            idle = patience.next();
            ++pieces;
        }
    }
    if (pieces > 1)
        patience.succeeded();
    else
        patience.failed();
}

// The name of a socket outlives its owner; only a connection shows that somebody listens. A full
// queue is somebody, too.
bool isAnswering(const sockaddr_un& address)
{
    const FileDescriptor socket(
        ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int result =
        ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    return result == 0 || errno == EAGAIN;
}

int remaining(std::chrono::milliseconds limit, Clock::time_point begin)
{
    if (limit.count() < 0)
        return -1;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    const auto rest = std::max<std::int64_t>(0, (limit - passed).count());
    return static_cast<int>(std::min<std::int64_t>(rest, 1'000'000));
}

}

struct DebugListener::State {
    FileDescriptor stop{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    FileDescriptor listener;
    sockaddr_un address = {};
    std::list<Sender> senders;
    // No descriptor is left for another sender.
    bool full = false;
    Patience patience{IdleRounds};

    Start listenIn(const std::string& directory);
    void accept();
    void removeGone();
    std::vector<pollfd> waitables() const;
};

DebugListener::Start DebugListener::State::listenIn(const std::string& directory)
{
    if (!makeDebugSocketAddress(directory, address))
        return Start::Failed;
    // Two receivers that start at once must not both replace a dead one.
    // The lock goes with the descriptor, whatever way this function is left.
    const FileDescriptor lock(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock.valid())
        return Start::Failed;
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 || isAnswering(address))
        return Start::AlreadyRunning;
    ::unlink(address.sun_path);

    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        return Start::Failed;
    if (::listen(socket.get(), SOMAXCONN) != 0) {
        ::unlink(address.sun_path);
        return Start::Failed;
    }
    listener = std::move(socket);
    return Start::Done;
}

void DebugListener::State::accept()
{
    for (;;) {
        FileDescriptor socket(
            ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket.valid()) {
            full = (errno == EMFILE || errno == ENFILE) && !senders.empty();
            return;
        }
        if (isPeerSameUser(socket.get()))
            senders.emplace_back(std::move(socket));
    }
}

void DebugListener::State::removeGone()
{
    senders.remove_if([this](const Sender& sender) {
        if (!sender.gone)
            return false;
        sender.block.removeNames();
        full = false;
        return true;
    });
}

// The stop event, the listener, and the senders in their order.
std::vector<pollfd> DebugListener::State::waitables() const
{
    std::vector<pollfd> list = {{stop.get(), POLLIN, 0}, {full ? -1 : listener.get(), POLLIN, 0}};
    for (const Sender& sender : senders)
        list.push_back({sender.socket.get(), POLLIN, 0});
    return list;
}

DebugListener::DebugListener() : m_state(std::make_unique<State>()) {}

DebugListener::~DebugListener()
{
    if (m_state->listener.valid())
        ::unlink(m_state->address.sun_path);
}

DebugListener::Start DebugListener::start()
{
    const std::array<std::string, 2> directories = debugSocketDirectories();
    const Start result = m_state->listenIn(directories.front());
    if (result != Start::Failed)
        return result;
    const std::string& directory = directories.back();
    ::mkdir(directory.c_str(), S_IRWXU);
    return isPrivateDirectory(directory) ? m_state->listenIn(directory) : Start::Failed;
}

void DebugListener::run(const DebugPieceHandler& handler, std::chrono::milliseconds limit)
{
    const Clock::time_point begin = Clock::now();
    std::vector<Sender*> active;
    for (;;) {
        std::vector<pollfd> list = m_state->waitables();
        const int rest = remaining(limit, begin);
        ::poll(list.data(), list.size(), rest);
        if (list[0].revents != 0 || rest == 0)
            return;

        active.clear();
        std::size_t i = 2;
        for (Sender& sender : m_state->senders) {
            if (list[i++].revents != 0)
                active.push_back(&sender);
        }
        serveWhileAwake(active, handler, m_state->patience);
        m_state->removeGone();
        m_state->accept();
    }
}

void DebugListener::stop()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_state->stop.get(), &one, sizeof(one));
}

}
