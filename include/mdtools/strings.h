#pragma once

#include <mdtools/export.h>
#include <mdtools/nullable.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// Some C libraries and old programs have macros of these names; here they are functions.
#undef atof
#undef atoi
#undef atol
#undef strcmp
#undef stricmp
#undef stristr
#undef strlwr
#undef strncpy
#undef strupr

// Functions for narrow text: char and std::string in the process's ANSI code page, which may be a
// double-byte one. This is the encoding of all narrow text in this library unless a header says
// otherwise. Elsewhere than on Windows the environment variable MDTOOLS_CODEPAGE names the page
// (any single-byte page, 932, 936, 949, 950, or 65001 for UTF-8); 1252 is the default. It is read
// once.
//
// Where a function looks at characters, the second byte of a double-byte character is never taken
// for a character of its own. `setlocale` changes nothing here.
//
// A std::string may hold NUL bytes: comparisons, stristr and checkName end at the first one, all
// other functions work on every byte. All functions may be called from any thread; those that
// change their argument are for one thread at a time on the same text.
namespace Tools {

// --- Equality and order ---

// The same buffer, or the same characters. Two nulls are equal, one null equals nothing.
MDTOOLS_API bool Streq(const std::string& a, const std::string& b);
MDTOOLS_API bool Streq(const std::string& a, const char* b);
MDTOOLS_API bool Streq(const char* a, const std::string& b);
MDTOOLS_API bool Streq(const char* a, const char* b);

// Without case, by the fixed table of `strlwr`. Two nulls are equal, one null equals nothing.
MDTOOLS_API bool Strieq(const std::string& a, const std::string& b);
MDTOOLS_API bool Strieq(const std::string& a, const char* b);
MDTOOLS_API bool Strieq(const char* a, const std::string& b);
MDTOOLS_API bool Strieq(const char* a, const char* b);

// Negative, 0 or positive: the order by character values, unsigned; every double-byte character is
// greater than every single-byte one. A first byte of a double-byte character that is alone
// before the end counts as the end. Null comes before any text and equals null.
MDTOOLS_API int strcmp(const char* a, const char* b);

// The order of `strcmp` of both texts after `strlwr`. -1 if either is null, even if both are.
MDTOOLS_API int stricmp(const std::string& a, const std::string& b);
MDTOOLS_API int stricmp(const std::string& a, const char* b);
MDTOOLS_API int stricmp(const char* a, const std::string& b);
MDTOOLS_API int stricmp(const char* a, const char* b);

// --- Search and tests ---

// `sub` occurs in `s`, without case by the table of `strlwr`, and begins at a character there. An
// empty `sub` occurs everywhere. Both null: true; one null: false.
MDTOOLS_API bool stristr(const std::string& s, const std::string& sub);
MDTOOLS_API bool stristr(const std::string& s, const char* sub);
MDTOOLS_API bool stristr(const char* s, const char* sub);

// The first or last bytes of `s` are those of the other text; without case after `toLower` of both
// (not the table of `strlwr`).
MDTOOLS_API bool startsWith(const std::string& s, const std::string& prefix, bool caseSensitive);
MDTOOLS_API bool endsWith(const std::string& s, const std::string& suffix, bool caseSensitive);

// Some character of `chars` occurs in `s`. Without case only `s` is lowered, so an upper-case
// letter in `chars` then never matches: callers list lower-case letters.
MDTOOLS_API bool containsAny(const std::string& s, const std::string& chars, bool caseSensitive);

// One of  / : * ? " < > |  occurs. A backslash is not reported, so that a name with folders in it
// passes; `replaceForbiddenFilenameChars` does replace it. Looks at bytes.
MDTOOLS_API bool hasForbiddenFilenameChar(const std::string& s);

// Removes leading and trailing blanks from `name` (as `removeBlanks` does), then returns whether it
// is a name: not empty, without blank, tab, line feed, comma and control characters. A carriage
// return is allowed.
MDTOOLS_API bool checkName(std::string& name);

// --- Building new texts ---

// Case mapping of the code page. A letter whose partner is not in the page stays.
MDTOOLS_API std::string toLower(const std::string& s);
MDTOOLS_API std::string toUpper(const std::string& s);

// `s` without the bytes that occur in `chars` at both ends, the front, the back.
MDTOOLS_API std::string trim(const std::string& s, const std::string& chars);
MDTOOLS_API std::string trimStart(const std::string& s, const std::string& chars);
MDTOOLS_API std::string trimEnd(const std::string& s, const std::string& chars);

// Replaces every occurrence, from the front and without looking at inserted text again; or the
// last one only. An empty `from` occurs nowhere.
MDTOOLS_API std::string replaceAll(const std::string& s, const std::string& from,
                                   const std::string& to);
MDTOOLS_API std::string replaceLast(const std::string& s, const std::string& from,
                                    const std::string& to);

// Every character that occurs in `chars` becomes `c`.
MDTOOLS_API std::string replaceAny(const std::string& s, const std::string& chars, char c);

// Every one of  / \ : * ? " < > |  becomes the text `replacement`. Looks at bytes.
MDTOOLS_API std::string replaceForbiddenFilenameChars(const std::string& s,
                                                      const std::string& replacement);

// The runs of bytes between those that occur in `delimiters`, in order and without empty ones.
MDTOOLS_API std::vector<std::string> tokenize(const std::string& s, const std::string& delimiters);

// Wraps the words of `s` (separated by blanks and tabs) into lines. A word joins the line, after
// one blank, while the line's length and its own add up to less than `maxLength`; the blank is not
// counted. A longer word is a line of its own.
MDTOOLS_API std::vector<std::string> tokenize(const std::string& s, std::size_t maxLength);

// --- In place; each function returns its argument, null stays null ---

// Removes blanks (or the byte `c`) at the front; tabs are no blanks.
MDTOOLS_API char* removeLeadingBlanks(char* p);
MDTOOLS_API char* removeLeadingCharakters(char* p, char c);

// Removes blanks (or `c`) from the back. The scan starts at the byte whose index is the number of
// characters less one: in text with double-byte characters that lies before the end, and what
// follows goes with a removed blank or stays.
MDTOOLS_API char* removeTrailingBlanks(char* p);
MDTOOLS_API char* removeTrailingCharakters(char* p, char c);

// Both ends: `removeLeadingBlanks`, then `removeTrailingBlanks`.
MDTOOLS_API void removeBlanks(char* p);

// The first character that is no white space (blank, tab, line feed, vertical tab, form feed,
// carriage return), or the terminator. `p` is not null.
MDTOOLS_API char* skipSpaces(char* p);
MDTOOLS_API const char* skipSpaces(const char* p);

// Maps every byte through fixed tables, whatever the code page: A-Z and 0xC0-0xDE to the byte 0x20
// above, and back for a-z, 0xE0-0xF6 and 0xF8-0xFE. Not inverse: 0xD7 becomes 0xF7, which stays.
MDTOOLS_API char* strlwr(char* p);
MDTOOLS_API char* strupr(char* p);
MDTOOLS_API std::string& strlwr(std::string& s);
MDTOOLS_API std::string& strupr(std::string& s);

// Copies at most `size` - 1 bytes and a terminator into `dst`; touches nothing after it. Returns
// 0. Does nothing if `dst` or `src` is null. `size` is at least 1: with 0 the terminator is still
// written.
MDTOOLS_API int strncpy(char* dst, std::size_t size, const char* src);

// A copy that the caller frees with delete[]; of null an empty text.
MDTOOLS_API char* stringDuplicate(const char* src);

// --- Numbers; the decimal point is "." whatever the locale ---

// The number at the beginning, after white space; 0 if there is none. Whole numbers saturate at 32
// bits; reals read like strtod. Null reads like the empty text.
MDTOOLS_API int atoi(const std::string& s);
MDTOOLS_API int atoi(const char* s);
MDTOOLS_API long atol(const std::string& s);
MDTOOLS_API long atol(const char* s);
MDTOOLS_API double atof(const std::string& s);
MDTOOLS_API double atof(const char* s);

// Empty if there is no number at the beginning, or if it is out of range; text after the number is
// accepted. All whole numbers have 32 bits on every platform. A minus sign before an unsigned
// number is accepted and wraps: "-1" is 4294967295.
MDTOOLS_API mdt::Nullable<int> tryParseInt(const std::string& s);
MDTOOLS_API mdt::Nullable<unsigned int> tryParseUInt(const std::string& s);
MDTOOLS_API mdt::Nullable<long> tryParseLong(const std::string& s);

// Takes what std::stod takes, hexadecimal numbers, "inf" and "nan" included. Out of range are
// overflow, underflow, and numbers that lose digits because they are too small for a full mantissa.
MDTOOLS_API mdt::Nullable<double> tryParseDouble(const std::string& s);

}
