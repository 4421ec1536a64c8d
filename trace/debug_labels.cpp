#include "trace/debug_labels.h"

#include <mdtools/registry.h>
#include <mdtools/strings.h>

#include "trace/debug_sender.h"

#include <atomic>
#include <memory>
#include <set>

namespace Tools::DebugLabels {

namespace {

// In lower case.
using Labels = std::set<std::string>;

// A cache that is published once: null until some thread has read the settings; the set it points
// to is never changed afterwards, so whoever has the pointer reads without a lock. Only release()
// takes it back, and leaves the set alone while a DebugSender::Use says that some thread may be in
// it.
std::atomic<const Labels*> s_labels{nullptr};

Labels readFrom(Registry::Hive hive)
{
    const RegistryKey key = Registry::find(hive, "Software\\MERODA\\Settings", false);
    const RegistryValue value = key["DebugLabels"];
    Labels labels;
    if (value.type() != RegistryValue::MultiString)
        return labels;
    for (const std::string& label : value.getMultiString())
        labels.insert(toLower(label));
    return labels;
}

// Without a lock, which a process might be forked with: threads that come at the same moment read
// the settings twice, and the first one's result counts.
const Labels& getLabels()
{
    if (const Labels* labels = s_labels.load())
        return *labels;
    auto labels = std::make_unique<Labels>(readFrom(Registry::CurrentUser));
    if (labels->empty())
        *labels = readFrom(Registry::LocalMachine);
    const Labels* first = nullptr;
    if (!s_labels.compare_exchange_strong(first, labels.get()))
        return *first;
    return *labels.release();
}

}

bool contains(const std::string& label)
{
    return getLabels().contains(toLower(label));
}

void release()
{
    const Labels* labels = s_labels.exchange(nullptr);
    if (!DebugSender::isUsed())
        delete labels;
}

}
