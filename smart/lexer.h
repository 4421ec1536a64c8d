#pragma once

#include "smart/stream_reader.h"

#include <mdtools/smart_token.h>

#include <istream>
#include <string>
#include <string_view>

namespace Tools::Smart {

// Reads tokens from a stream without allocating for them. The stream is up to date after commit()
// and after the lexer's end.
class Lexer {
public:
    // `buffer` is scratch memory.
    Lexer(std::istream& stream, std::string& buffer) : m_reader(stream), m_buffer(buffer) {}

    // Reads the next token. At the end of the stream the last one stays.
    void next();

    // The stream ran out or a token was invalid, now or earlier.
    bool hasEnded() const { return m_hasEnded; }
    Token::Type type() const { return m_type; }
    // Of a Text or an Identifier, until the next token is read.
    std::string_view text() const { return m_text; }
    int decimal() const { return m_decimal; }
    double real() const { return m_real; }

    // Sets what the last token read here sets: a mark or an invalid token sets the type alone.
    void storeIn(Token& token) const;

    void commit() { m_reader.commit(); }

private:
    bool get(char& c);
    bool take(char wanted);
    void keepText();
    void skip();
    bool skipComment();
    void readQuoted();
    bool readQuotedPiece();
    bool readEscaped();
    void readWord(char first, bool isInArea);
    void readRestOfWord();
    void readNumber();
    void fail();

    StreamReader m_reader;
    std::string& m_buffer;
    // Lies in the stream's area (m_isInArea) or in the buffer.
    std::string_view m_text;
    Token::Type m_type = Token::Invalid;
    int m_decimal = 0;
    double m_real = 0.0;
    bool m_hasToken = false;
    bool m_hasEnded = false;
    bool m_isInArea = false;
};

}
