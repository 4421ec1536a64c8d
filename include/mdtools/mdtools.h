#pragma once

// Everything at once.

#include <mdtools/constants.h>
#include <mdtools/export.h>
#include <mdtools/filters.h>
#include <mdtools/nullable.h>
#include <mdtools/platform_types.h>
