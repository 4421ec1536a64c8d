#include "platform/processors.h"

#include "platform/posix/topology.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <numeric>

#include <unistd.h>

namespace Tools::Platform {

namespace {

using Numbers = std::vector<int>;

// Far above what any kernel supports; a damaged file must not fill the memory.
constexpr long MaximumNumber = 65535;

// Numbers and ranges as in "0-3,8". Empty if the file is missing.
Numbers readList(const std::string& path)
{
    std::ifstream file(path);
    Numbers numbers;
    for (std::string range; std::getline(file, range, ',');) {
        char* end = nullptr;
        const long first = std::strtol(range.c_str(), &end, 10);
        if (end == range.c_str() || first < 0)
            continue;
        const long last = *end == '-' ? std::strtol(end + 1, nullptr, 10) : first;
        for (long i = first; i <= std::min(last, MaximumNumber); ++i)
            numbers.push_back(static_cast<int>(i));
    }
    return numbers;
}

int readNumber(const std::string& path)
{
    std::ifstream file(path);
    int number = 0;
    file >> number;
    return number;
}

// A bit a processor. With one above 63 in the group only the number of bits is right, which is what
// processors are counted by.
std::uint64_t toMask(const Numbers& processors)
{
    std::uint64_t mask = 0;
    for (const int processor : processors)
        mask |= std::uint64_t{1} << (processor % 64);
    if (processors.empty() || processors.back() < 64)
        return mask;
    return ~std::uint64_t{0} >> (64 - std::min<std::size_t>(processors.size(), 64));
}

class Topology {
public:
    Topology(const std::string& root, int fallbackCount)
        : m_root(root), m_online(readList(root + "/cpu/online"))
    {
        if (!m_online.empty())
            return;
        m_online.resize(static_cast<std::size_t>(std::max(fallbackCount, 1)));
        std::iota(m_online.begin(), m_online.end(), 0);
    }

    std::vector<ProcessorRecord> read()
    {
        for (const int processor : m_online)
            addProcessor(processor);
        addNodes();
        return m_records;
    }

private:
    // Each core, cache and package is reported by the first of its processors.
    void addProcessor(int processor)
    {
        const std::string directory = m_root + "/cpu/cpu" + std::to_string(processor);
        const Numbers package = readGroup(directory + "/topology/package_cpus_list",
                                          directory + "/topology/core_siblings_list", m_online);
        if (package.front() == processor)
            add(ProcessorRecord::Package, package);
        const Numbers core = readGroup(directory + "/topology/core_cpus_list",
                                       directory + "/topology/thread_siblings_list", {processor});
        if (core.front() != processor)
            return;
        add(ProcessorRecord::Core, core);
        addCaches(directory + "/cache/index", processor);
    }

    // The kernel numbers a processor's caches without gaps.
    void addCaches(const std::string& prefix, int processor)
    {
        for (int i = 0;; ++i) {
            const std::string directory = prefix + std::to_string(i);
            const Numbers sharing = readList(directory + "/shared_cpu_list");
            if (sharing.empty())
                return;
            if (sharing.front() == processor)
                add(ProcessorRecord::Cache, sharing, readNumber(directory + "/level"));
        }
    }

    void addNodes()
    {
        const Numbers nodes = readList(m_root + "/node/online");
        for (const int node : nodes)
            add(ProcessorRecord::NumaNode,
                readList(m_root + "/node/node" + std::to_string(node) + "/cpulist"));
        if (nodes.empty())
            add(ProcessorRecord::NumaNode, m_online);
    }

    // Older kernels know the second name only.
    static Numbers readGroup(const std::string& path, const std::string& oldPath,
                             const Numbers& fallback)
    {
        Numbers group = readList(path);
        if (group.empty())
            group = readList(oldPath);
        return group.empty() ? fallback : group;
    }

    void add(int relation, const Numbers& processors, int cacheLevel = 0)
    {
        m_records.push_back({relation, toMask(processors), cacheLevel});
    }

    std::string m_root;
    Numbers m_online;
    std::vector<ProcessorRecord> m_records;
};

}

std::vector<ProcessorRecord> readTopology(const std::string& root, int fallbackCount)
{
    return Topology(root, fallbackCount).read();
}

Processors readProcessors()
{
    const long online = ::sysconf(_SC_NPROCESSORS_ONLN);
    return {.records = readTopology("/sys/devices/system", static_cast<int>(online))};
}

}
