#pragma once

// The system's handles as they appear in this library's interface, without the system's headers. On
// Windows each is the very type that <windows.h> declares, so a HKEY, HWND, HMODULE or PTP_WORK
// converts to it without a cast; elsewhere they point to private objects of the library. Null is
// "none" throughout.

#if defined(_WIN32)

#include <guiddef.h>

struct HKEY__;
struct HWND__;
struct HINSTANCE__;
struct _TP_WORK;
struct _TP_CALLBACK_INSTANCE;

namespace Tools {

using KeyHandle = ::HKEY__*;
using WindowHandle = ::HWND__*;
using ModuleHandle = ::HINSTANCE__*;
using WorkHandle = ::_TP_WORK*;
using WorkInstance = ::_TP_CALLBACK_INSTANCE*;
using Guid = ::GUID;

}

#else

#include <cstdint>

namespace Tools {

struct KeyObject;
struct WindowObject;
struct ModuleObject;
struct WorkObject;
struct WorkInstanceObject;

using KeyHandle = KeyObject*;
using WindowHandle = WindowObject*;
using ModuleHandle = ModuleObject*;
using WorkHandle = WorkObject*;
using WorkInstance = WorkInstanceObject*;

// A globally unique identifier, field by field as Windows has it.
struct Guid {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    unsigned char Data4[8];
};

}

#endif

namespace Tools {

// A running process; HANDLE on Windows.
using ProcessHandle = void*;

// What a work item of a ThreadPool calls, on a thread of the pool; PTP_WORK_CALLBACK on Windows.
using WorkCallback = void (*)(WorkInstance instance, void* context, WorkHandle work);

}
