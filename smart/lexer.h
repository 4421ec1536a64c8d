#pragma once

#include "smart/numbers.h"
#include "smart/stream_reader.h"

#include <mdtools/smart_token.h>

#include <istream>
#include <string>
#include <string_view>

namespace Tools::Smart {

// Reads tokens from a stream without allocating for them: a token's text is a view into the
// stream's get area, and is copied only when the area ends within or after it. The stream is up to
// date after the lexer's end.
class Lexer {
public:
    // `buffer` is scratch memory. The lexer goes on for an iterator that may have ended.
    Lexer(std::istream& stream, std::string& buffer, bool hasEnded)
        : m_reader(stream), m_buffer(buffer), m_hasEnded(hasEnded)
    {}

    // Reads the next token. At the end of the stream the last one stays.
    void next();

    // The stream ran out or a token was invalid, now or earlier.
    bool hasEnded() const { return m_hasEnded; }
    Token::Type type() const { return m_type; }
    // Of a Text or an Identifier, until the next token is read.
    std::string_view text() const { return m_text; }
    // Of a Decimal or a Real.
    const Number& number() const { return m_number; }

    // Sets what the last complete token read here sets: a mark or an invalid token sets the type
    // alone. One that the stream's exception interrupted does not count.
    void storeIn(Token& token) const;

    // The rest of the stream's area, for a caller that reads tokens there itself. It reports where
    // they ended and what the last one was; text lies in the area.
    const char* areaNext() const { return m_reader.next(); }
    const char* areaEnd() const { return m_reader.end(); }
    void take(const char* end, Token::Type type)
    {
        m_reader.setNext(end);
        m_type = type;
        m_hasToken = true;
        m_isInArea = false;
    }
    void takeText(const char* end, std::string_view text)
    {
        take(end, Token::Text);
        m_text = text;
        m_isInArea = true;
    }
    void takeNumber(const char* end, const Number& number)
    {
        take(end, number.isReal ? Token::Real : Token::Decimal);
        m_number.isReal = number.isReal;
        m_number.decimal = number.decimal;
        m_number.real = number.real;
    }

private:
    bool get(char& c);
    bool take(char wanted);
    void keepText();
    void saveText();
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
    Number m_number;
    // The text of the last complete token while the next one, of which there is only a part yet,
    // takes its place.
    std::string m_savedText;
    bool m_isComplete = true;
    bool m_hasToken = false;
    bool m_hasEnded;
    bool m_isInArea = false;
};

}
