#include "store/recent_values.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Tools::Store {

namespace {

constexpr auto Relaxed = std::memory_order_relaxed;

template <class Number>
Number load(const char* bytes)
{
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

std::uint64_t shapeOf(std::size_t nameSize, const StoredValue& value)
{
    return std::uint64_t{value.kind} << 32 | value.data.size() << 16 | nameSize << 1 |
           (value.exists ? 1 : 0);
}

}

// The name in words, parts of it twice, so that it takes no loop over bytes. Names of the same
// length differ if the words do.
RecentValues::Words<RecentValues::NameWords> RecentValues::pack(std::string_view name)
{
    const char* begin = name.data();
    const std::size_t size = name.size();
    const char* end = begin + size;
    if (size >= 2 * sizeof(Word))
        return {load<Word>(begin), load<Word>(begin + sizeof(Word)),
                load<Word>(end - 2 * sizeof(Word)), load<Word>(end - sizeof(Word))};
    if (size >= sizeof(Word))
        return {load<Word>(begin), load<Word>(end - sizeof(Word))};
    if (size >= sizeof(std::uint32_t))
        return {load<std::uint32_t>(begin), load<std::uint32_t>(end - sizeof(std::uint32_t))};
    if (size == 0)
        return {};
    return {load<std::uint8_t>(begin), load<std::uint8_t>(begin + size / 2),
            load<std::uint8_t>(end - 1)};
}

// Any mixture will do that spreads short names.
std::size_t RecentValues::indexOf(Word key, const Words<NameWords>& name)
{
    const Word mixed =
        key ^ name[0] ^ std::rotl(name[1], 21) ^ std::rotl(name[2], 42) ^ std::rotl(name[3], 11);
    return mixed * 0x9E3779B97F4A7C15 >> 55;
}

bool RecentValues::read(KeyHandle key, std::string_view name, bool& exists,
                        Platform::ValueReceiver& receiver) const
{
    if (name.size() > NameWords * sizeof(Word))
        return false;
    const Words<NameWords> wanted = pack(name);
    const auto handle = reinterpret_cast<Word>(key);
    const Entry& entry = m_entries[indexOf(handle, wanted)];

    const Word sequence = entry.sequence.load(std::memory_order_acquire);
    const Word shape = entry.shape.load(Relaxed);
    Word difference =
        (sequence & 1) | (entry.key.load(Relaxed) ^ handle) | ((shape >> 1 & 0x7FFF) ^ name.size());
    for (std::size_t i = 0; i < NameWords; ++i)
        difference |= entry.name[i].load(Relaxed) ^ wanted[i];
    if (difference != 0)
        return false;
    auto* counter = reinterpret_cast<Word*>(entry.counter.load(Relaxed));
    if (counter == nullptr || std::atomic_ref(*counter).load() != entry.number.load(Relaxed))
        return false;
    const std::size_t size = std::min<std::size_t>(shape >> 16 & 0xFFFF, sizeof(Words<DataWords>));
    Words<DataWords> data;
    for (std::size_t i = 0; i * sizeof(Word) < size; ++i)
        data[i] = entry.data[i].load(Relaxed);
    std::atomic_thread_fence(std::memory_order_acquire);
    if (entry.sequence.load(Relaxed) != sequence)
        return false;

    exists = (shape & 1) != 0;
    if (exists)
        receiver.receive(
            static_cast<std::uint32_t>(shape >> 32),
            std::string_view(reinterpret_cast<const char*>(data.data()), shape >> 16 & 0xFFFF));
    return true;
}

void RecentValues::store(KeyHandle key, std::string_view name, const StoredValue& value,
                         const std::uint64_t* counter, std::uint64_t number)
{
    Words<DataWords> dataWords{};
    if (name.size() > NameWords * sizeof(Word) || value.data.size() > sizeof dataWords)
        return;
    const Words<NameWords> nameWords = pack(name);
    std::memcpy(dataWords.data(), value.data.data(), value.data.size());
    const auto handle = reinterpret_cast<Word>(key);
    Entry& entry = m_entries[indexOf(handle, nameWords)];

    const Word sequence = entry.sequence.load(Relaxed);
    entry.sequence.store(sequence + 1, Relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    entry.key.store(handle, Relaxed);
    entry.counter.store(reinterpret_cast<Word>(counter), Relaxed);
    entry.number.store(number, Relaxed);
    entry.shape.store(shapeOf(name.size(), value), Relaxed);
    for (std::size_t i = 0; i < NameWords; ++i)
        entry.name[i].store(nameWords[i], Relaxed);
    for (std::size_t i = 0; i < DataWords; ++i)
        entry.data[i].store(dataWords[i], Relaxed);
    entry.sequence.store(sequence + 2, std::memory_order_release);
}

void RecentValues::clear()
{
    for (Entry& entry : m_entries)
        entry.counter.store(0, Relaxed);
}

}
