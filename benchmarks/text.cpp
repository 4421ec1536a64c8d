#include <mdtools/strings.h>

#include "text/conversion.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>
#include <random>

#if defined(HAVE_POSIX_PEERS)
#include <iconv.h>
#include <strings.h>
#endif
#if defined(HAVE_ABSL)
#include <absl/strings/match.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <absl/strings/strip.h>
#endif
#if defined(HAVE_BOOST)
#include <boost/algorithm/string.hpp>
#endif
#if defined(HAVE_FAST_FLOAT)
#include <fast_float/fast_float.h>
#endif
#if defined(HAVE_ICU)
#include <unicode/ucnv.h>
#endif

// Every row gets the same texts. Short ones come in sets that stay in the cache but are too many to
// be learnt by heart by the branch predictor.
namespace {

constexpr std::size_t SetSize = 512;

std::mt19937& randomNumbers()
{
    static std::mt19937 random(42);
    return random;
}

std::string randomWord(std::size_t size, std::string_view letters)
{
    std::string word;
    while (word.size() < size)
        word += letters[randomNumbers()() % letters.size()];
    return word;
}

constexpr std::string_view Letters = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view MixedLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

using Texts = std::vector<std::string>;

Texts makeSet(const std::function<std::string()>& make)
{
    Texts texts(SetSize);
    std::generate(texts.begin(), texts.end(), make);
    return texts;
}

// The same texts with the case of some letters changed.
Texts otherCase(Texts texts)
{
    for (std::string& text : texts) {
        for (char& c : text)
            c = static_cast<char>(randomNumbers()() % 3 == 0 && std::isalpha(c) ? c ^ 0x20 : c);
    }
    return texts;
}

std::string makeLines(std::size_t size, std::string_view ends)
{
    std::string text;
    while (text.size() < size)
        text.append(randomWord(1 + randomNumbers()() % 10, Letters))
            .append(1, ends[randomNumbers()() % ends.size()]);
    text.resize(size);
    return text;
}

template <class Body>
void add(const std::string& name, Body body)
{
    benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State& state) { body(state); });
}

// One iteration is one text of the set.
template <class Function>
void addForEach(const std::string& name, const Texts& texts, Function function)
{
    add(name, [&texts, function](benchmark::State& state) {
        std::size_t i = 0;
        for (auto _ : state)
            benchmark::DoNotOptimize(function(texts[i++ % SetSize]));
    });
}

template <class Function>
void addForPairs(const std::string& name, const Texts& a, const Texts& b, Function function)
{
    add(name, [&a, &b, function](benchmark::State& state) {
        std::size_t i = 0;
        for (auto _ : state) {
            const std::size_t k = i++ % SetSize;
            benchmark::DoNotOptimize(function(a[k], b[k]));
        }
    });
}

template <class Function>
void addFor(const std::string& name, const std::string& text, Function function)
{
    add(name, [&text, function](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(function(text));
    });
}

// Data lives as long as the program.
template <class T>
const T& keep(T value)
{
    return *new T(std::move(value));
}

void addComparisons()
{
    for (const std::size_t size : {10U, 30U, 100U, 0U}) {
        const Texts& a = keep(makeSet([size] {
            return randomWord(size != 0 ? size : 10 + randomNumbers()() % 91, MixedLetters);
        }));
        const Texts& b = keep(otherCase(a));
        const std::string tail = size != 0 ? "/" + std::to_string(size) : "";
        addForPairs("strieq/mdtools" + tail, a, b,
                    [](const std::string& x, const std::string& y) { return Tools::Strieq(x, y); });
        addForPairs("stricmp/mdtools" + tail, a, b, [](const std::string& x, const std::string& y) {
            return Tools::stricmp(x, y);
        });
#if defined(HAVE_POSIX_PEERS)
        for (const char* group : {"strieq", "stricmp"})
            addForPairs(group + ("/strcasecmp" + tail), a, b,
                        [](const std::string& x, const std::string& y) {
                            return strcasecmp(x.c_str(), y.c_str());
                        });
#endif
#if defined(HAVE_ABSL)
        for (const char* group : {"strieq", "stricmp"})
            addForPairs(group + ("/absl" + tail), a, b,
                        [](const std::string& x, const std::string& y) {
                            return absl::EqualsIgnoreCase(x, y);
                        });
#endif
    }
}

void addSearches()
{
    for (const std::size_t size : {120U, 65536U}) {
        const std::string& sought = keep(std::string("GirderBridge"));
        const std::string& text =
            keep(makeLines(size - sought.size(), " ") + Tools::toLower(sought));
        const std::string tail = "/" + std::to_string(size);
        addFor("stristr/mdtools" + tail, text, [&sought](const std::string& s) {
            return Tools::stristr(s.c_str(), sought.c_str());
        });
#if defined(HAVE_POSIX_PEERS)
        addFor("stristr/strcasestr" + tail, text,
               [&sought](const std::string& s) { return strcasestr(s.c_str(), sought.c_str()); });
#endif
    }
}

void addTokenizing()
{
    const std::string& text = keep(makeLines(1024, " \t,"));
    addFor("tokenize/mdtools", text,
           [](const std::string& s) { return Tools::tokenize(s, std::string(" \t,")); });
#if defined(HAVE_POSIX_PEERS)
    addFor("tokenize/strtok_r", text, [](const std::string& s) {
        std::string copy = s;
        std::vector<std::string> tokens;
        char* state = nullptr;
        for (char* p = strtok_r(copy.data(), " \t,", &state); p;
             p = strtok_r(nullptr, " \t,", &state))
            tokens.emplace_back(p);
        return tokens;
    });
#endif
#if defined(HAVE_ABSL)
    addFor("tokenize/absl", text, [](const std::string& s) {
        return std::vector<std::string>(
            absl::StrSplit(s, absl::ByAnyChar(" \t,"), absl::SkipEmpty()));
    });
#endif
#if defined(HAVE_BOOST)
    addFor("tokenize/boost", text, [](const std::string& s) {
        std::vector<std::string> tokens;
        boost::split(tokens, s, boost::is_any_of(" \t,"), boost::token_compress_on);
        return tokens;
    });
#endif
}

void addReplacing()
{
    std::string sparse = makeLines(65536, " ");
    for (std::size_t i = 0; i < sparse.size(); i += 4096)
        sparse.replace(i, 6, "girder");
    struct Row {
        const char* name;
        std::string text, from, to;
    };
    static const Row rows[] = {
        {"Dense", makeLines(65536, " ."), " ", "\\ "},
        {"Sparse", sparse, "girder", "frame"},
    };
    for (const Row& row : rows) {
        const auto name = [&row](const char* who) {
            return std::string("replaceAll") + row.name + "/" + who;
        };
        addFor(name("mdtools"), row.text,
               [&row](const std::string& s) { return Tools::replaceAll(s, row.from, row.to); });
#if defined(HAVE_ABSL)
        addFor(name("absl"), row.text, [&row](const std::string& s) {
            return absl::StrReplaceAll(s, {{row.from, row.to}});
        });
#endif
#if defined(HAVE_BOOST)
        addFor(name("boost"), row.text, [&row](const std::string& s) {
            return boost::replace_all_copy(s, row.from, row.to);
        });
#endif
    }
}

void addTrimming()
{
    const Texts& texts = keep(makeSet([] {
        return std::string(randomNumbers()() % 4, ' ') +
               randomWord(5 + randomNumbers()() % 30, Letters) +
               std::string(randomNumbers()() % 4, ' ');
    }));
    addForEach("trim/mdtools", texts,
               [](const std::string& s) { return Tools::trim(s, " \t\r\n"); });
#if defined(HAVE_ABSL)
    addForEach("trim/absl", texts,
               [](const std::string& s) { return std::string(absl::StripAsciiWhitespace(s)); });
#endif
}

void addPrefixes()
{
    // Half of the texts begin with the one that is asked for.
    const std::string& prefix = keep(std::string("girder"));
    const Texts& texts = keep(makeSet([&prefix] {
        return (randomNumbers()() % 2 != 0 ? prefix : std::string("frames")) +
               randomWord(20, Letters);
    }));
    const Texts& prefixes = keep(Texts(SetSize, prefix));
    const Texts& raised = keep(otherCase(prefixes));
    addForPairs(
        "startsWith/mdtools", texts, prefixes,
        [](const std::string& s, const std::string& p) { return Tools::startsWith(s, p, true); });
    addForPairs(
        "startsWithoutCase/mdtools", texts, raised,
        [](const std::string& s, const std::string& p) { return Tools::startsWith(s, p, false); });
#if defined(HAVE_ABSL)
    addForPairs("startsWith/absl", texts, prefixes,
                [](const std::string& s, const std::string& p) { return absl::StartsWith(s, p); });
    addForPairs("startsWithoutCase/absl", texts, raised,
                [](const std::string& s, const std::string& p) {
                    return absl::StartsWithIgnoreCase(s, p);
                });
#endif
}

template <class T>
T fromChars(const std::string& s)
{
    T value{};
    std::from_chars(s.data(), s.data() + s.size(), value);
    return value;
}

void addParsing()
{
    const Texts& integers = keep(makeSet([] {
        return std::to_string(static_cast<int>(randomNumbers()()) >> randomNumbers()() % 31);
    }));
    const Texts& reals = keep(makeSet([] {
        char text[40];
        const double value = static_cast<double>(randomNumbers()() % 2000000) / 1000.0 - 1000.0;
        std::snprintf(text, sizeof text, randomNumbers()() % 4 != 0 ? "%.*f" : "%.*e",
                      static_cast<int>(randomNumbers()() % 7), value);
        return std::string(text);
    }));
    addForEach("tryParseInt/mdtools", integers,
               [](const std::string& s) { return Tools::tryParseInt(s); });
    addForEach("tryParseInt/from_chars", integers, fromChars<int>);
    addForEach("tryParseDouble/mdtools", reals,
               [](const std::string& s) { return Tools::tryParseDouble(s); });
    addForEach("tryParseDouble/from_chars", reals, fromChars<double>);
#if defined(HAVE_FAST_FLOAT)
    addForEach("tryParseDouble/fast_float", reals, [](const std::string& s) {
        double value = 0.0;
        fast_float::from_chars(s.data(), s.data() + s.size(), value);
        return value;
    });
#endif
}

#if defined(HAVE_POSIX_PEERS)
std::string iconvert(const char* to, const char* from, const std::string& text)
{
    const iconv_t handle = iconv_open(to, from);
    std::string result(text.size() * 2, '\0');
    char* in = const_cast<char*>(text.data());
    char* out = result.data();
    std::size_t inLeft = text.size();
    std::size_t outLeft = result.size();
    iconv(handle, &in, &inLeft, &out, &outLeft);
    result.resize(result.size() - outLeft);
    iconv_close(handle);
    return result;
}
#endif

void addConversions()
{
    // German text: an umlaut in every second or third word, now and then a sign that only the code
    // page has.
    std::string german = makeLines(65536, " ");
    for (std::size_t i = 0; i < german.size(); i += 1 + randomNumbers()() % 30)
        german[i] = "\xE4\xF6\xFC\xDF\xC4"[randomNumbers()() % 5];
    for (std::size_t i = 0; i < german.size(); i += 1 + randomNumbers()() % 400)
        german[i] = "\x80\x84\x96"[randomNumbers()() % 3];
    const std::string& narrow = keep(std::move(german));
    const std::wstring& wide = keep(Tools::toWide(narrow));
    addFor("toWide/mdtools", narrow, [](const std::string& s) { return Tools::toWide(s); });
    add("toNarrow/mdtools", [&wide](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(Tools::toNarrow(wide));
    });
#if defined(HAVE_POSIX_PEERS)
    const std::string& units = keep(iconvert("UTF-16LE", "CP1252", narrow));
    addFor("toWide/iconv", narrow,
           [](const std::string& s) { return iconvert("UTF-16LE", "CP1252", s); });
    addFor("toNarrow/iconv", units,
           [](const std::string& s) { return iconvert("CP1252", "UTF-16LE", s); });
#endif
#if defined(HAVE_ICU)
    UErrorCode error = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open("windows-1252", &error);
    const std::u16string& icuUnits = keep(std::u16string(wide.begin(), wide.end()));
    addFor("toWide/icu", narrow, [converter](const std::string& s) {
        UErrorCode status = U_ZERO_ERROR;
        std::u16string result(s.size(), u'\0');
        ucnv_toUChars(converter, result.data(), static_cast<int>(result.size()), s.data(),
                      static_cast<int>(s.size()), &status);
        return result;
    });
    add("toNarrow/icu", [converter, &icuUnits](benchmark::State& state) {
        for (auto _ : state) {
            UErrorCode status = U_ZERO_ERROR;
            std::string result(icuUnits.size(), '\0');
            ucnv_fromUChars(converter, result.data(), static_cast<int>(result.size()),
                            icuUnits.data(), static_cast<int>(icuUnits.size()), &status);
            benchmark::DoNotOptimize(result);
        }
    });
#endif
}

const bool registered = [] {
    addComparisons();
    addSearches();
    addTokenizing();
    addReplacing();
    addTrimming();
    addPrefixes();
    addParsing();
    addConversions();
    return true;
}();

}
