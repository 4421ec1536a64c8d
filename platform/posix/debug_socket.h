#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <sys/un.h>

// debug_socket.h - what both ends of the debug channel have to agree on here.
//
// The receiver listens on a socket; a sender connects to it once and, for each piece, sends a
// DebugRequest and waits for one byte of answer.
namespace Tools::Platform {

struct DebugRequest {
    std::uint32_t zero = 0;
    std::uint32_t sender = 0;
};
static_assert(sizeof(DebugRequest) == 8, "eight bytes in the order of this processor");

// The directories in which a receiver may listen, the preferred one first; it is empty in an
// environment that names none.
std::array<std::string, 2> debugSocketDirectories();

// The directory itself, not one that a link leads to, belongs to this user, and nobody else may put
// anything into it: a receiver may listen there, and a sender believe in what it finds. The
// variable may name another user's directory, in a program that runs with his environment.
bool isOwnDirectory(const std::string& directory);

// False if there is no directory, or one whose path does not fit into an address.
bool makeDebugSocketAddress(const std::string& directory, sockaddr_un& address);

// The process at the other end runs as the same user.
bool isPeerSameUser(int socket);

// The names of a sender's block and event.
std::string debugBlockName(std::uint32_t sender);
std::string debugEventName(std::uint32_t sender);

}
