#pragma once

// Everything at once.

#include <mdtools/application_registry.h>
#include <mdtools/build_number.h>
#include <mdtools/command.h>
#include <mdtools/command_list.h>
#include <mdtools/constants.h>
#include <mdtools/data_changed.h>
#include <mdtools/debug_output.h>
#include <mdtools/directory.h>
#include <mdtools/displayer.h>
#include <mdtools/encoding.h>
#include <mdtools/environment.h>
#include <mdtools/error.h>
#include <mdtools/export.h>
#include <mdtools/file.h>
#include <mdtools/filters.h>
#include <mdtools/folders.h>
#include <mdtools/geometry.h>
#include <mdtools/language.h>
#include <mdtools/mdml_constants.h>
#include <mdtools/nullable.h>
#include <mdtools/number_format.h>
#include <mdtools/observer.h>
#include <mdtools/path.h>
#include <mdtools/platform_types.h>
#include <mdtools/registry.h>
#include <mdtools/selection.h>
#include <mdtools/strings.h>
#include <mdtools/version_info.h>
#include <mdtools/version_number.h>
#include <mdtools/version_text.h>
#include <mdtools/system.h>
#include <mdtools/threads.h>
