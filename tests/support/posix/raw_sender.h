#pragma once

#include "platform/debug_channel.h"
#include "platform/posix/debug_socket.h"
#include "platform/posix/file_descriptor.h"

#include <cstdint>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace MdToolsTest {

// A sender that keeps to no rule but the protocol's bytes. It has a number of its own, which is no
// process's, and waits for an answer for ten seconds.
class RawSender {
public:
    enum class Answer { Yes, Refused, None };

    explicit RawSender(std::uint32_t number)
        : m_number(number), m_socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
    {
        const timeval limit = {10, 0};
        ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
        sockaddr_un address;
        Tools::Platform::makeDebugSocketAddress(Tools::Platform::debugSocketDirectories().front(),
                                                address);
        m_isConnected = ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address),
                                  sizeof(address)) == 0;
    }
    ~RawSender() { ::shm_unlink(blockName().c_str()); }
    RawSender(const RawSender&) = delete;
    RawSender& operator=(const RawSender&) = delete;

    bool isConnected() const { return m_isConnected; }
    std::string blockName() const { return Tools::Platform::debugBlockName(m_number); }

    // The block holds these bytes and nothing else.
    void makeBlock(const std::string& bytes)
    {
        m_block = Tools::Platform::FileDescriptor(
            ::shm_open(blockName().c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600));
        cutBlock(0);
        [[maybe_unused]] const auto count = ::pwrite(m_block.get(), bytes.data(), bytes.size(), 0);
    }
    void cutBlock(std::size_t size)
    {
        [[maybe_unused]] const int result = ::ftruncate(m_block.get(), off_t(size));
    }
    void giveBlockTo(unsigned int user)
    {
        [[maybe_unused]] const int result = ::fchown(m_block.get(), user, user);
    }

    Answer ask()
    {
        const Tools::Platform::DebugRequest request = {0, m_number};
        if (::send(m_socket.get(), &request, sizeof(request), MSG_NOSIGNAL) < 0)
            return Answer::Refused;
        char answer = 0;
        const ssize_t count = ::recv(m_socket.get(), &answer, 1, 0);
        return count > 0                           ? Answer::Yes
               : count == 0 || errno == ECONNRESET ? Answer::Refused
                                                   : Answer::None;
    }

private:
    std::uint32_t m_number;
    Tools::Platform::FileDescriptor m_socket;
    Tools::Platform::FileDescriptor m_block;
    bool m_isConnected = false;
};

}
