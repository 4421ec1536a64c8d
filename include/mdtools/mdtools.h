#pragma once

// Everything at once.

#include <mdtools/build_number.h>
#include <mdtools/constants.h>
#include <mdtools/directory.h>
#include <mdtools/encoding.h>
#include <mdtools/application_registry.h>
#include <mdtools/constants.h>
#include <mdtools/directory.h>
#include <mdtools/environment.h>
#include <mdtools/error.h>
#include <mdtools/export.h>
#include <mdtools/file.h>
#include <mdtools/filters.h>
#include <mdtools/folders.h>
#include <mdtools/mdml_constants.h>
#include <mdtools/geometry.h>
#include <mdtools/language.h>
#include <mdtools/nullable.h>
#include <mdtools/number_format.h>
#include <mdtools/path.h>
#include <mdtools/platform_types.h>
#include <mdtools/strings.h>
#include <mdtools/version_info.h>
#include <mdtools/version_number.h>
#include <mdtools/version_text.h>
#include <mdtools/registry.h>
