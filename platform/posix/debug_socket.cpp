#include "platform/posix/debug_socket.h"

#include "platform/environment.h"

#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tools::Platform {

// The user's own runtime directory, or one below /tmp; isOwnDirectory() must be asked about both.
std::array<std::string, 2> debugSocketDirectories()
{
    std::string runtime;
    readVariable("XDG_RUNTIME_DIR", runtime);
    return {runtime.starts_with('/') ? runtime : "", "/tmp/mdtools-" + std::to_string(::geteuid())};
}

bool isOwnDirectory(const std::string& directory)
{
    struct stat status = {};
    return ::lstat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool makeDebugSocketAddress(const std::string& directory, sockaddr_un& address)
{
    const std::string path = directory + "/TMdDebugReceiverDecFrame";
    address = {};
    address.sun_family = AF_UNIX;
    if (directory.empty() || path.size() >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

// The kernel vouches for this; what the peer sends is not needed for it.
bool isPeerSameUser(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof(peer);
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

std::string debugBlockName(std::uint32_t sender)
{
    return "/MdDebugTransferMemory" + std::to_string(sender);
}

std::string debugEventName(std::uint32_t sender)
{
    return "/MdDebugTransferMemoryEvent" + std::to_string(sender);
}

}
