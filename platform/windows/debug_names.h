#pragma once

#include <cstdint>
#include <string>

// debug_names.h - what both ends of the debug channel have to agree on here.
//
// The receiver owns a window of the class; for each piece a sender sends it the registered message
// with 0 and its process id.
namespace Tools::Platform {

constexpr const char* DebugWindowClass = "TMdDebugReceiverDecFrame";
constexpr const char* DebugMessageName = "MdDebugTransferMessage";

inline std::string debugBlockName(std::uint32_t sender)
{
    return "MdDebugTransferMemory" + std::to_string(sender);
}

inline std::string debugEventName(std::uint32_t sender)
{
    return "MdDebugTransferMemoryEvent" + std::to_string(sender);
}

}
