#pragma once

// Everything at once.

#include <mdtools/constants.h>
#include <mdtools/directory.h>
#include <mdtools/error.h>
#include <mdtools/export.h>
#include <mdtools/file.h>
#include <mdtools/filters.h>
#include <mdtools/folders.h>
#include <mdtools/nullable.h>
#include <mdtools/path.h>
#include <mdtools/platform_types.h>
