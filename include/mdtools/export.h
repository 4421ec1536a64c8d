#pragma once

// MDTOOLS_API marks what the library exports; everything else stays hidden. The build of the
// library defines MDTOOLS_EXPORTS; MDTOOLS_STATIC serves programs that take the library's objects
// in directly.
#if defined(MDTOOLS_STATIC)
#define MDTOOLS_API
#elif defined(_WIN32)
#if defined(MDTOOLS_EXPORTS)
#define MDTOOLS_API __declspec(dllexport)
#else
#define MDTOOLS_API __declspec(dllimport)
#endif
#else
#define MDTOOLS_API __attribute__((visibility("default")))
#endif
