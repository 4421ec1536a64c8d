#include <mdtools/directory.h>
#include <mdtools/file.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fnmatch.h>
#include <fstream>
#include <glob.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t BigFile = std::size_t{64} << 20U;
constexpr int Folders = 100;
constexpr int FilesPerFolder = 100;

void write(const fs::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

// 10,000 files of one to two kilobytes in a hundred directories.
void makeTree(const fs::path& root)
{
    for (int i = 0; i < Folders; ++i) {
        const fs::path folder = root / ("folder" + std::to_string(i));
        fs::create_directories(folder);
        for (int k = 0; k < FilesPerFolder; ++k)
            write(folder / ("girder" + std::to_string(k) + (k % 10 == 0 ? ".dat" : ".txt")),
                  std::string(1000 + std::size_t(k) * 10, 'x'));
    }
}

// What all rows work on, made by the first one and removed at the end.
class Data {
public:
    static const Data& get()
    {
        static const Data data;
        return data;
    }

    std::string name(const char* entry) const { return (m_root / entry).string(); }

private:
    Data() : m_root(fs::temp_directory_path() / ("mdtools-bench-" + std::to_string(getpid())))
    {
        fs::create_directories(m_root / "flat");
        std::mt19937_64 random(1);
        std::string big(BigFile, '\0');
        for (char& c : big)
            c = static_cast<char>(random());
        write(m_root / "a", big);
        write(m_root / "b", big);
        makeTree(m_root / "tree");
        for (int i = 0; i < Folders * FilesPerFolder; ++i)
            write(m_root / "flat" / ("joint" + std::to_string(i * 7919 % 10007) + ".dat"), "");
    }
    ~Data() { fs::remove_all(m_root); }

    fs::path m_root;
};

void run(const std::string& command)
{
    if (std::system(command.c_str()) != 0)
        std::abort();
}

template <class Work>
void measure(benchmark::State& state, Work work)
{
    const Data& data = Data::get();
    for (auto _ : state)
        work(data);
}

// `prepare` is not timed.
template <class Prepare, class Work>
void measure(benchmark::State& state, Prepare prepare, Work work)
{
    const Data& data = Data::get();
    for (auto _ : state) {
        state.PauseTiming();
        prepare(data);
        state.ResumeTiming();
        work(data);
    }
}

void equalOurs(benchmark::State& state)
{
    measure(state, [](const Data& d) {
        benchmark::DoNotOptimize(Tools::File::isEqual(d.name("a"), d.name("b")));
    });
}

void equalCmp(benchmark::State& state)
{
    measure(state, [](const Data& d) { run("exec cmp -s " + d.name("a") + " " + d.name("b")); });
}

void removeTarget(const Data& d)
{
    fs::remove(d.name("target"));
}

void concatenateOurs(benchmark::State& state)
{
    measure(state, removeTarget,
            [](const Data& d) { Tools::File::concatenate(d.name("a"), d.name("target")); });
}

void concatenateCat(benchmark::State& state)
{
    measure(state, removeTarget,
            [](const Data& d) { run("exec cat " + d.name("a") + " >> " + d.name("target")); });
}

void removeCopy(const Data& d)
{
    fs::remove_all(d.name("copy"));
}

void copyOurs(benchmark::State& state)
{
    measure(state, removeCopy,
            [](const Data& d) { Tools::Directory::copy(d.name("tree"), d.name("copy"), {}, {}); });
}

void copyStandard(benchmark::State& state)
{
    measure(state, removeCopy, [](const Data& d) {
        fs::copy(d.name("tree"), d.name("copy"), fs::copy_options::recursive);
    });
}

void makeCopy(const Data& d)
{
    fs::remove_all(d.name("copy"));
    fs::copy(d.name("tree"), d.name("copy"), fs::copy_options::recursive);
}

void removalOurs(benchmark::State& state)
{
    measure(state, makeCopy,
            [](const Data& d) { Tools::Directory::removeRecursively(d.name("copy")); });
}

void removalRm(benchmark::State& state)
{
    measure(state, makeCopy, [](const Data& d) { run("exec rm -rf " + d.name("copy")); });
}

void findOurs(benchmark::State& state)
{
    measure(state, [](const Data& d) {
        std::vector<Tools::File::Info> result;
        Tools::File::findByWildCard(d.name("flat"), "*.dat", result, false);
        benchmark::DoNotOptimize(result.data());
    });
}

void findGlob(benchmark::State& state)
{
    measure(state, [](const Data& d) {
        glob_t result = {};
        glob((d.name("flat") + "/*.dat").c_str(), 0, nullptr, &result);
        benchmark::DoNotOptimize(result.gl_pathv);
        globfree(&result);
    });
}

void findTreeOurs(benchmark::State& state)
{
    measure(state, [](const Data& d) {
        std::vector<Tools::File::Info> result;
        Tools::File::findByWildCard(d.name("tree"), "*.txt", result, true);
        benchmark::DoNotOptimize(result.data());
    });
}

void findTreeStandard(benchmark::State& state)
{
    measure(state, [](const Data& d) {
        std::vector<fs::path> result;
        for (const auto& entry : fs::recursive_directory_iterator(d.name("tree"))) {
            if (fnmatch("*.txt", entry.path().filename().c_str(), FNM_CASEFOLD) == 0)
                result.push_back(entry.path());
        }
        benchmark::DoNotOptimize(result.data());
    });
}

void row(const char* name, void (*function)(benchmark::State&))
{
    benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
}

const bool Registered = [] {
    row("equal/mdtools", equalOurs);
    row("equal/cmp", equalCmp);
    row("concatenate/mdtools", concatenateOurs);
    row("concatenate/cat", concatenateCat);
    row("treeCopy/mdtools", copyOurs);
    row("treeCopy/std_filesystem", copyStandard);
    row("treeRemoval/mdtools", removalOurs);
    row("treeRemoval/rm", removalRm);
    row("find/mdtools", findOurs);
    row("find/glob", findGlob);
    row("findTree/mdtools", findTreeOurs);
    row("findTree/std_filesystem_fnmatch", findTreeStandard);
    return true;
}();

}
