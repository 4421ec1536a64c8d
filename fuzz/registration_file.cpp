// Any bytes as a registration file; what can be read must come back from what is written.

#include "tools/registration_file.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace Tools::Registration;

bool isSame(const Change& a, const Change& b)
{
    return a.name == b.name && a.type == b.type && a.data == b.data;
}

void check(const Content& content, const Change& change, Format format)
{
    Writer writer(format);
    const KeyPath& path = content.keys[change.key];
    if (!writer.addKey(path) || !writer.addValue(change.name, change.type, change.data))
        return;
    const Content again = parse(writer.take());
    if (again.changes.size() != 2 || !isSame(again.changes[1], change) ||
        again.keys[0].names != path.names || again.keys[0].hive != path.hive)
        std::abort();
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        const Content content = parse(std::string(reinterpret_cast<const char*>(data), size));
        for (const Change& change : content.changes)
            if (change.kind == Change::Kind::SetValue)
                for (const Format format : {Format::Version5, Format::Regedit4})
                    check(content, change, format);
    } catch (const Fault& fault) {
        if (fault.line() > size + 1)
            std::abort();
    }
    return 0;
}
