// Records of 48 MB, read and written, beside JSON documents of the same content.

#include <mdtools/smart_record.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#if defined(WITH_RAPIDJSON)
#define RAPIDJSON_SSE2
#include <rapidjson/document.h>
#include <rapidjson/istreamwrapper.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#endif
#if defined(WITH_SIMDJSON)
#include <simdjson.h>
#endif

namespace {

namespace Smart = Tools::Smart;

constexpr int RecordCount = 200000;

// One sequence of records of eight entries.
Smart::Record makeTree()
{
    std::mt19937 random(1);
    Smart::Sequence members;
    for (int i = 0; i < RecordCount; ++i) {
        const auto real = [&](unsigned range) {
            return static_cast<double>(random() % range) / 1000;
        };
        Smart::Record point;
        const std::string number = std::to_string(random() % 90 + 10);
        point.setText("layer", "level " + number).setReal("offset", real(9999));
        Smart::Record member;
        member.setDecimal("number", i).setDecimal("section", static_cast<int>(random() % 500));
        member.setReal("length", real(99999)).setReal("load", real(99999));
        member.setText("title", "Main girder, bay " + number + ", lower flange plate");
        member.setRecord("support", point);
        members.push_back(std::move(member));
    }
    Smart::Record tree;
    tree.setSequence("members", std::move(members));
    return tree;
}

const std::string& recordText()
{
    static const std::string text = [] {
        std::ostringstream stream;
        makeTree().writeTo(stream, 0, "  ");
        return stream.str();
    }();
    return text;
}

// A file of that text, as long as the object lives.
class File {
public:
    explicit File(const std::string& text)
        : m_path((std::filesystem::temp_directory_path() /
                  ("mdtools-bench-" + std::to_string(std::random_device()())))
                     .string())
    {
        std::ofstream(m_path, std::ios_base::binary) << text;
    }
    ~File() { std::filesystem::remove(m_path); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

class MemoryBuffer : public std::streambuf {
public:
    explicit MemoryBuffer(const std::string& text)
    {
        char* begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

// A growing buffer of bytes, as the peer writes into one.
class GrowingBuffer : public std::streambuf {
public:
    ~GrowingBuffer() override { std::free(m_bytes); }

protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override
    {
        const auto size = static_cast<std::size_t>(count);
        if (m_size + size > m_capacity) {
            m_capacity = m_size + size + m_capacity / 2;
            m_bytes = static_cast<char*>(std::realloc(m_bytes, m_capacity));
        }
        std::memcpy(m_bytes + m_size, text, size);
        m_size += size;
        return count;
    }
    int_type overflow(int_type c) override
    {
        const char byte = traits_type::to_char_type(c);
        return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
    }

private:
    char* m_bytes = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

void readMemory(benchmark::State& state)
{
    const std::string& text = recordText();
    for (auto _ : state) {
        MemoryBuffer buffer(text);
        std::istream stream(&buffer);
        Smart::Record record;
        record.readFrom(stream);
        benchmark::DoNotOptimize(record);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void readFile(benchmark::State& state)
{
    const File file(recordText());
    for (auto _ : state) {
        std::ifstream stream(file.path(), std::ios_base::binary);
        Smart::Record record;
        record.readFrom(stream);
        benchmark::DoNotOptimize(record);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void writeMemory(benchmark::State& state)
{
    const Smart::Record record = makeTree();
    for (auto _ : state) {
        GrowingBuffer buffer;
        std::ostream stream(&buffer);
        record.writeTo(stream, 0, "  ");
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void writeString(benchmark::State& state)
{
    const Smart::Record record = makeTree();
    for (auto _ : state) {
        std::ostringstream stream;
        record.writeTo(stream, 0, "  ");
        benchmark::DoNotOptimize(stream);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void writeFile(benchmark::State& state)
{
    const Smart::Record record = makeTree();
    const File file("");
    for (auto _ : state) {
        std::ofstream stream(file.path(), std::ios_base::binary);
        record.writeTo(stream, 0, "  ");
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void writeFileLines(benchmark::State& state)
{
    const std::string& text = recordText();
    const File file("");
    for (auto _ : state) {
        std::FILE* out = std::fopen(file.path().c_str(), "wb");
        std::setvbuf(out, nullptr, _IONBF, 0);
        for (std::size_t i = 0; i < text.size();) {
            const std::size_t end = text.find('\n', i) + 1;
            benchmark::DoNotOptimize(std::fwrite(text.data() + i, 1, end - i, out));
            i = end;
        }
        std::fclose(out);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

BENCHMARK(readMemory)->Name("records_read/mdtools")->Unit(benchmark::kMillisecond);
BENCHMARK(readFile)->Name("records_read_file/mdtools")->Unit(benchmark::kMillisecond);
BENCHMARK(writeMemory)->Name("records_write/mdtools")->Unit(benchmark::kMillisecond);
BENCHMARK(writeString)->Name("records_write_string/mdtools")->Unit(benchmark::kMillisecond);
BENCHMARK(writeFile)->Name("records_write_file/mdtools")->Unit(benchmark::kMillisecond);
BENCHMARK(writeFileLines)
    ->Name("records_write_file/one_write_a_line")
    ->Unit(benchmark::kMillisecond);

#if defined(WITH_RAPIDJSON)

void write(rapidjson::PrettyWriter<rapidjson::StringBuffer>& writer, const Smart::Record& record)
{
    writer.StartObject();
    for (const auto& [name, type] : record) {
        writer.Key(name.c_str());
        if (type == Smart::Type::Text) {
            writer.String(record.getText(name).c_str());
        } else if (type == Smart::Type::Decimal) {
            writer.Int(record.getDecimal(name));
        } else if (type == Smart::Type::Real) {
            writer.Double(record.getReal(name));
        } else if (type == Smart::Type::Record) {
            write(writer, record.getRecord(name));
        } else {
            writer.StartArray();
            for (const Smart::Record& r : record.getSequence(name))
                write(writer, r);
            writer.EndArray();
        }
    }
    writer.EndObject();
}

const std::string& jsonText()
{
    static const std::string text = [] {
        rapidjson::StringBuffer buffer;
        rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
        writer.SetIndent(' ', 2);
        write(writer, makeTree());
        return std::string(buffer.GetString(), buffer.GetSize());
    }();
    return text;
}

void readMemoryRapidJson(benchmark::State& state)
{
    const std::string& text = jsonText();
    for (auto _ : state) {
        rapidjson::Document document;
        document.Parse(text.c_str());
        benchmark::DoNotOptimize(document);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void readFileRapidJson(benchmark::State& state)
{
    const File file(jsonText());
    for (auto _ : state) {
        std::ifstream stream(file.path(), std::ios_base::binary);
        rapidjson::IStreamWrapper wrapper(stream);
        rapidjson::Document document;
        document.ParseStream(wrapper);
        benchmark::DoNotOptimize(document);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void writeMemoryRapidJson(benchmark::State& state)
{
    rapidjson::Document document;
    document.Parse(jsonText().c_str());
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
        writer.SetIndent(' ', 2);
        document.Accept(writer);
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

BENCHMARK(readMemoryRapidJson)->Name("records_read/rapidjson")->Unit(benchmark::kMillisecond);
BENCHMARK(readFileRapidJson)->Name("records_read_file/rapidjson")->Unit(benchmark::kMillisecond);
BENCHMARK(writeMemoryRapidJson)->Name("records_write/rapidjson")->Unit(benchmark::kMillisecond);
BENCHMARK(writeMemoryRapidJson)
    ->Name("records_write_string/rapidjson")
    ->Unit(benchmark::kMillisecond);

#if defined(WITH_SIMDJSON)

// What a user would put the values into: simdjson's own document is gone with the next one.
struct Tree {
    using Value = std::variant<std::int64_t, double, std::string, Tree, std::vector<Tree>>;
    std::vector<std::pair<std::string, Value>> entries;
};

Tree treeOf(simdjson::dom::object object);

Tree::Value valueOf(simdjson::dom::element element)
{
    switch (element.type()) {
    case simdjson::dom::element_type::INT64:
        return std::int64_t(element);
    case simdjson::dom::element_type::DOUBLE:
        return double(element);
    case simdjson::dom::element_type::STRING:
        return std::string(std::string_view(element));
    case simdjson::dom::element_type::OBJECT:
        return treeOf(simdjson::dom::object(element));
    default: {
        std::vector<Tree> trees;
        for (const simdjson::dom::element e : simdjson::dom::array(element))
            trees.push_back(treeOf(simdjson::dom::object(e)));
        return trees;
    }
    }
}

Tree treeOf(simdjson::dom::object object)
{
    Tree tree;
    tree.entries.reserve(object.size());
    for (const auto& field : object)
        tree.entries.emplace_back(std::string(field.key), valueOf(field.value));
    return tree;
}

void readMemorySimdJson(benchmark::State& state)
{
    const simdjson::padded_string text(jsonText());
    for (auto _ : state) {
        simdjson::dom::parser parser;
        const simdjson::dom::element element = parser.parse(text);
        const Tree tree = treeOf(simdjson::dom::object(element));
        benchmark::DoNotOptimize(tree);
    }
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

BENCHMARK(readMemorySimdJson)->Name("records_read/simdjson")->Unit(benchmark::kMillisecond);

#endif
#endif

}
