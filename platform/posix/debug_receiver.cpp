#include "platform/debug_receiver.h"

#include "platform/debug_channel.h"
#include "platform/posix/debug_socket.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/patience.h"
#include "platform/posix/retry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <list>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <semaphore.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/mman.h> // shm_open
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

using Clock = std::chrono::steady_clock;

// The receiver's end belongs to the one thread that runs the listener; only stop() comes from
// others, and it writes to nothing but an event. A sender's block may be looked at between a
// sender's request and the answer only, while its sender waits. Nothing in it is trusted: neither
// that it ends with a NUL, nor that it is all there, nor that it stays as it is, should another
// thread of a broken sender go on writing. So it is copied, and read instead of mapped: touching a
// page that the sender has cut off would end this program.

// Some 40 microseconds.
constexpr int IdleRounds = 200;
// After so many rounds the others are looked after, busy as these senders may be.
constexpr int MostRounds = 1000;
// In milliseconds: how often new senders are looked at while there is no descriptor for any.
constexpr int FullPause = 100;

// A sender's block, opened at its first piece and kept until the sender goes.
class Block {
public:
    // False if `sender` has no block of this user.
    bool open(std::uint32_t sender);
    // The text in the block, up to its NUL or the end.
    std::string_view read(std::array<char, DebugBlockSize>& buffer) const;
    // Takes away the names that a dead sender has left.
    void removeNames() const;

private:
    std::uint32_t m_sender = 0;
    FileDescriptor m_file;
    struct stat m_status = {};
};

// The name may be anything's: without O_NONBLOCK a pipe would hold up all senders.
FileDescriptor openBlock(std::uint32_t sender, struct stat& status)
{
    FileDescriptor file(::shm_open(debugBlockName(sender).c_str(), O_RDONLY | O_NONBLOCK, 0));
    const bool isBlock = file.valid() && ::fstat(file.get(), &status) == 0 &&
                         S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
    return isBlock ? std::move(file) : FileDescriptor();
}

bool Block::open(std::uint32_t sender)
{
    if (!m_file.valid() || m_sender != sender) {
        m_file = FileDescriptor();
        m_file = openBlock(sender, m_status);
        m_sender = sender;
    }
    return m_file.valid();
}

// Most pieces are short, and copying a whole block takes longer than asking twice.
std::string_view Block::read(std::array<char, DebugBlockSize>& buffer) const
{
    constexpr std::size_t Most = DebugBlockSize - 1;
    std::size_t length = 0;
    for (std::size_t part : {std::size_t{256}, Most}) {
        const ssize_t count = retryInterrupted([&] {
            return ::pread(m_file.get(), buffer.data() + length, part - length, off_t(length));
        });
        if (count <= 0)
            break;
        const auto* const begin = buffer.data() + length;
        const std::size_t found = ::strnlen(begin, std::size_t(count));
        length += found;
        if (found < std::size_t(count))
            break;
    }
    return {buffer.data(), length};
}

void Block::removeNames() const
{
    if (!m_file.valid())
        return;
    struct stat status = {};
    // A sender that ended in order has removed them, and another one may have made new ones.
    if (!openBlock(m_sender, status).valid() || status.st_ino != m_status.st_ino)
        return;
    ::shm_unlink(debugBlockName(m_sender).c_str());
    ::sem_unlink(debugEventName(m_sender).c_str());
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
    errno = 0;
    const bool isOpen = sender.block.open(request.sender);
    if (!isOpen && (errno == EMFILE || errno == ENFILE)) {
        sender.gone = true; // refused, as one that finds no descriptor to come by
        return false;
    }
    if (isOpen) {
        std::array<char, DebugBlockSize> buffer;
        const std::string_view text = sender.block.read(buffer);
        if (!text.empty())
            handler(request.sender, text.data(), text.size());
    }
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

int openSpare()
{
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
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
    // Given up for a moment to take a sender for whom there is no other, and to refuse him.
    FileDescriptor spare{openSpare()};
    // Not even that has been possible: new senders have to wait.
    bool full = false;
    Patience patience{IdleRounds};

    Start listenIn(const std::string& directory);
    void accept();
    bool refuse();
    void removeGone();
    std::vector<pollfd> waitables() const;
};

DebugListener::Start DebugListener::State::listenIn(const std::string& directory)
{
    if (!makeDebugSocketAddress(directory, address) || !isOwnDirectory(directory))
        return Start::Failed;
    // Two receivers that start at once must not both replace a dead one.
    // The lock goes with the descriptor, whatever way this function is left.
    const FileDescriptor lock(
        ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!lock.valid())
        return Start::Failed;
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 || isAnswering(address))
        return Start::AlreadyRunning;
    // Nothing but what a receiver of this user has left may go.
    struct stat left = {};
    if (::lstat(address.sun_path, &left) == 0 && S_ISSOCK(left.st_mode) &&
        left.st_uid == ::geteuid())
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
    full = false;
    for (;;) {
        FileDescriptor socket(
            ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (socket.valid()) {
            if (isPeerSameUser(socket.get()))
                senders.emplace_back(std::move(socket));
            continue;
        }
        if (errno != EMFILE && errno != ENFILE && errno != ENOBUFS && errno != ENOMEM)
            return;
        if (!refuse()) {
            // Without a descriptor the system complains even if nobody wants to come in.
            full = errno != EAGAIN && errno != EWOULDBLOCK;
            return;
        }
    }
}

// A sender that is not taken would wait at its first trace; refused, it goes on without tracing.
// False, with the cause in errno, if there is none or no way.
bool DebugListener::State::refuse()
{
    spare = FileDescriptor();
    const bool isRefused =
        FileDescriptor(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC)).valid();
    const int cause = errno;
    spare = FileDescriptor(openSpare());
    errno = cause;
    return isRefused;
}

void DebugListener::State::removeGone()
{
    senders.remove_if([](const Sender& sender) {
        if (!sender.gone)
            return false;
        sender.block.removeNames();
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
    return m_state->listenIn(directory);
}

void DebugListener::run(const DebugPieceHandler& handler, std::chrono::milliseconds limit)
{
    const Clock::time_point begin = Clock::now();
    std::vector<Sender*> active;
    for (;;) {
        std::vector<pollfd> list = m_state->waitables();
        const int rest = remaining(limit, begin);
        const int pause = m_state->full && (rest < 0 || rest > FullPause) ? FullPause : rest;
        ::poll(list.data(), list.size(), pause);
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
