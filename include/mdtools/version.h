#pragma once

// The version of these headers, for the preprocessor. The one place of the number: the package, the
// library's file name and its version resource take it from here. Which version of the library a
// program runs with is what VersionInfo reads from its file (version_info.h).
//
// The major number changes when a program must be changed or compiled anew, the minor one when
// something is added, the patch when neither is needed.
#define MDTOOLS_VERSION_MAJOR 1
#define MDTOOLS_VERSION_MINOR 0
#define MDTOOLS_VERSION_PATCH 0

// For comparisons: 10203 is 1.2.3.
#define MDTOOLS_VERSION                                                                            \
    (MDTOOLS_VERSION_MAJOR * 10000 + MDTOOLS_VERSION_MINOR * 100 + MDTOOLS_VERSION_PATCH)
