#pragma once

// Everything at once, and what holds for all headers.
//
// Text. A std::string, or a const char*, holds text in the process's code page: on Windows the
// system's ANSI code page, elsewhere the one whose number the variable MDTOOLS_CODEPAGE gives (1252
// without it). That holds for paths, names, messages and the texts of exceptions as well; on Linux
// the bytes of a path are the file's name as they are. A character may have several bytes. Where
// something else is meant a header says so, by "bytes" or by its type: a wchar_t is one unit of
// UTF-16, also where it could hold more. What the library writes does not depend on the locale,
// unless a stream of the caller writes it.
//
// Threads. Functions outside of classes and static functions may be called by any thread. An object
// belongs to one thread at a time, for reading, too; different objects are independent, also where
// they mean the same file, setting or variable. Headers say where more is allowed, or less: what
// belongs to the thread of a window, or is one for the whole process.
//
// There is nothing to set up before the first call and nothing to clean up after the last one.

#include <mdtools/application_registry.h>
#include <mdtools/argument_keeper.h>
#include <mdtools/build_number.h>
#include <mdtools/clock.h>
#include <mdtools/command.h>
#include <mdtools/command_list.h>
#include <mdtools/constants.h>
#include <mdtools/data_changed.h>
#include <mdtools/debug_output.h>
#include <mdtools/directory.h>
#include <mdtools/displayer.h>
#include <mdtools/dll_util.h>
#include <mdtools/encoding.h>
#include <mdtools/environment.h>
#include <mdtools/error.h>
#include <mdtools/export.h>
#include <mdtools/file.h>
#include <mdtools/file_output.h>
#include <mdtools/filters.h>
#include <mdtools/folders.h>
#include <mdtools/formula_interpreter.h>
#include <mdtools/geometry.h>
#include <mdtools/guid_util.h>
#include <mdtools/language.h>
#include <mdtools/logger.h>
#include <mdtools/mail_process.h>
#include <mdtools/mdml_constants.h>
#include <mdtools/message_window.h>
#include <mdtools/nullable.h>
#include <mdtools/number_format.h>
#include <mdtools/observer.h>
#include <mdtools/path.h>
#include <mdtools/platform_types.h>
#include <mdtools/print_job.h>
#include <mdtools/process.h>
#include <mdtools/progress.h>
#include <mdtools/recorder.h>
#include <mdtools/registry.h>
#include <mdtools/selection.h>
#include <mdtools/shell.h>
#include <mdtools/smart_record.h>
#include <mdtools/smart_token.h>
#include <mdtools/strings.h>
#include <mdtools/system.h>
#include <mdtools/table.h>
#include <mdtools/threads.h>
#include <mdtools/version.h>
#include <mdtools/version_info.h>
#include <mdtools/version_number.h>
#include <mdtools/version_text.h>
