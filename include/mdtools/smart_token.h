#pragma once

#include <mdtools/export.h>

#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <string>

namespace Tools::Smart {

class RecordReader;

// One lexical unit of the record format: a quoted text, a number, a name or one of the marks
// "= ( ) [ ]". A plain value. Its text has the bytes of the input, in whatever encoding that is;
// the marks, blanks and digits of the format are ASCII.
class MDTOOLS_API Token {
public:
    // The numbers are fixed; messages and callers rely on them.
    enum Type : int {
        Invalid = 0,
        Text = 1,
        Decimal = 2,
        Real = 3,
        Identifier = 4,
        Equals = 5,
        OpenParenthesis = 6,
        CloseParenthesis = 7,
        OpenBracket = 8,
        CloseBracket = 9
    };

    // An Invalid, a Decimal, a Real, and any type with or without a text; the value fields not
    // given are empty or zero.
    Token();
    Token(int value);
    Token(double value);
    Token(Type type);
    Token(Type type, std::string text);

    Type getType() const { return m_type; }

    // The number of a Decimal or of a Real, the text of a Text or of an Identifier; of any other
    // type without meaning.
    int getValDecimal() const { return m_decimal; }
    double getValReal() const { return m_real; }
    const std::string& getValText() const { return m_text; }

    // Each setter changes its own field only. The one for the real number is an overload of
    // setValText; callers know it by that name.
    void setType(Type type) { m_type = type; }
    void setValDecimal(int value) { m_decimal = value; }
    void setValText(const std::string& text);
    void setValText(double value) { m_real = value; }

private:
    Type m_type;
    std::string m_text;
    int m_decimal = 0;
    double m_real = 0.0;
};

// The name of a token type in messages: "invalid", "text", "decimal", "real", "identifier" or the
// mark itself.
MDTOOLS_API std::string tokenTypeName(Token::Type type);

// Reads tokens from a stream, one with each increment. Blanks, tabs, line ends and comments ("#" to
// the end of the line, where a token could begin) are skipped. A token ends where the next one
// begins, so nothing after it is taken from the stream but the blanks and comments after a quoted
// text, whose continuation might follow ("ab" "cd" is one text abcd). Between two operations the
// stream is exactly where reading it character by character would have left it; it may be read
// by others, or by several iterators in turn.
//
// A word that begins with one of "-.0123456789" and is not a number as a whole (integers have 32
// bits), and a quoted text that is not closed, give a token of type Invalid and set the end flag.
// The iterator throws nothing itself; the stream does if its exceptions() say so.
//
// The stream must outlive the iterator. One thread at a time.
class MDTOOLS_API IstreamTokenIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Token;
    using difference_type = std::ptrdiff_t;
    using pointer = const Token*;
    using reference = const Token&;

    // The end of every stream.
    IstreamTokenIterator() = default;
    // Reads the first token at once.
    explicit IstreamTokenIterator(std::istream& stream);

    // The last token read. It stays when the stream runs out. A mark sets the type only; the value
    // fields are those of earlier tokens then.
    const Token& operator*() const { return m_token; }
    const Token* operator->() const { return &m_token; }

    IstreamTokenIterator& operator++();
    IstreamTokenIterator operator++(int);

    // True once the stream has run out or a token was invalid; it never becomes false again, though
    // an increment still takes a token from the stream if there is one.
    bool end() const { return m_end; }

    // Equal on the same stream with the same end flag, and at the end of whatever streams.
    friend bool operator==(const IstreamTokenIterator& a, const IstreamTokenIterator& b)
    {
        return a.m_end == b.m_end && (a.m_end || a.m_stream == b.m_stream);
    }

private:
    friend class RecordReader;

    void read();

    std::istream* m_stream = nullptr;
    Token m_token;
    bool m_end = true;
    std::string m_buffer;
};

}
