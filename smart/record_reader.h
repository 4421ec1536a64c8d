#pragma once

#include <mdtools/smart_record.h>

namespace Tools::Smart {

// Reads one record or sequence from an iterator, which is on its opening mark, and leaves the
// iterator on the last token that was read.
class RecordReader {
public:
    // Both throw WrongToken.
    static void read(IstreamTokenIterator& tokens, Record& record);
    static void read(IstreamTokenIterator& tokens, Sequence& sequence);

private:
    static void read(IstreamTokenIterator& tokens, Token::Type opening, Record* record,
                     Sequence* sequence);
};

}
