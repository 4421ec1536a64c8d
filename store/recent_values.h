#pragma once

#include "store/database.h"

#include <mdtools/platform_types.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace Tools::Store {

// A direct-mapped cache of the small values that were read last through each handle, for reading
// without a lock: programs ask for the same few settings again and again. An entry holds good while
// the change counter that it names shows the number it was read at. Any thread may read; one at a
// time, the holder of the store's lock, may store or clear.
//
// Each entry is a seqlock. Its writer makes the sequence odd, writes the other words in any order,
// and makes the sequence even again. A reader who sees the same even sequence before and after has
// words that belong together. The counter is compared between the two: what was right at the number
// it shows was right at that moment of the call. All words are atomics, as a reader may meet any
// mixture of them before it sees that the sequence has moved on.
class RecentValues {
public:
    // False if nothing is known of the value now; it may be known not to exist, too.
    bool read(KeyHandle key, std::string_view name, bool& exists,
              Platform::ValueReceiver& receiver) const;

    // The counter must stay readable for ever, and the number be one at which the value is right.
    void store(KeyHandle key, std::string_view name, const StoredValue& value,
               const std::uint64_t* counter, std::uint64_t number);
    void clear();

private:
    static constexpr std::size_t EntryCount = 512;
    static constexpr std::size_t NameWords = 4;
    static constexpr std::size_t DataWords = 7;

    using Word = std::uint64_t;
    template <std::size_t Count>
    using Words = std::array<Word, Count>;

    // Two cache lines.
    struct alignas(64) Entry {
        std::atomic<Word> sequence = 0;
        std::atomic<Word> key = 0;
        std::atomic<Word> counter = 0;
        std::atomic<Word> number = 0;
        std::atomic<Word> shape = 0;
        std::array<std::atomic<Word>, NameWords> name{};
        std::array<std::atomic<Word>, DataWords> data{};
    };

    static Words<NameWords> pack(std::string_view name);
    static std::size_t indexOf(Word key, const Words<NameWords>& name);

    std::array<Entry, EntryCount> m_entries;
};

}
