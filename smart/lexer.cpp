#include "smart/lexer.h"

#include "smart/scan.h"

namespace Tools::Smart {

// Value fields that the token does not have keep what they had.
void Lexer::storeIn(Token& token) const
{
    if (!m_hasToken)
        return;
    if (m_type == Token::Text || m_type == Token::Identifier)
        token = Token(m_type, m_isComplete ? std::string(m_text) : m_savedText);
    else if (m_type == Token::Decimal)
        token = Token(m_number.decimal);
    else if (m_type == Token::Real)
        token = Token(m_number.real);
    else
        token.setType(m_type);
}

void Lexer::next()
{
    skip();
    const bool isInArea = m_reader.next() != m_reader.end();
    char c = 0;
    if (!get(c)) {
        m_hasEnded = true;
        return;
    }
    // The stream may throw before the token is complete. Type and number change at its end only.
    m_isComplete = false;
    switch (c) {
    case '(':
        m_type = Token::OpenParenthesis;
        break;
    case ')':
        m_type = Token::CloseParenthesis;
        break;
    case '=':
        m_type = Token::Equals;
        break;
    case '[':
        m_type = Token::OpenBracket;
        break;
    case ']':
        m_type = Token::CloseBracket;
        break;
    case '"':
        readQuoted();
        break;
    default:
        readWord(c, isInArea);
        break;
    }
    m_hasToken = true;
    m_isComplete = true;
}

// The one way past the end of the area: what follows comes from the stream, character by character
// or as a new area.
bool Lexer::get(char& c)
{
    const char* next = m_reader.next();
    if (next != m_reader.end()) {
        c = *next;
        m_reader.setNext(next + 1);
        return true;
    }
    keepText();
    return m_reader.getFromStream(c);
}

// Takes the next character if it is this one.
bool Lexer::take(char wanted)
{
    char c = 0;
    if (!get(c))
        return false;
    if (c != wanted)
        m_reader.putBack(c);
    return c == wanted;
}

// The last token's text must outlive the area that it lies in.
void Lexer::keepText()
{
    if (!m_isInArea)
        return;
    m_buffer.assign(m_text);
    m_text = m_buffer;
    m_isInArea = false;
}

// Before the next token's text takes its place.
void Lexer::saveText()
{
    if (m_hasToken && (m_type == Token::Text || m_type == Token::Identifier))
        m_savedText.assign(m_text);
}

// Skips blanks and comments.
void Lexer::skip()
{
    char c = 0;
    do {
        do {
            m_reader.setNext(findNonBlank(m_reader.next(), m_reader.end()));
            if (!get(c))
                return;
        } while (is(c, Blank));
        if (c != '#') {
            m_reader.putBack(c);
            return;
        }
    } while (skipComment());
}

// False if the stream ran out before the end of the line.
bool Lexer::skipComment()
{
    char c = 0;
    do {
        m_reader.setNext(findLineFeed(m_reader.next(), m_reader.end()));
        if (!get(c))
            return false;
    } while (c != '\n');
    return true;
}

// Reads a text after its opening quote, with all its continuations.
void Lexer::readQuoted()
{
    const char* const start = m_reader.next();
    const char* const stop = findQuoteOrBackslash(start, m_reader.end());
    saveText();
    m_buffer.clear();
    m_isInArea = stop != m_reader.end() && *stop == '"';
    if (m_isInArea) {
        m_text = std::string_view(start, static_cast<std::size_t>(stop - start));
        m_reader.setNext(stop + 1);
    } else if (!readQuotedPiece()) {
        return;
    }
    for (skip(); take('"'); skip()) {
        keepText();
        if (!readQuotedPiece())
            return;
    }
    m_type = Token::Text;
}

// Appends a text up to its closing quote to the buffer.
bool Lexer::readQuotedPiece()
{
    for (char c = 0; c != '"';) {
        const char* const start = m_reader.next();
        const char* const stop = findQuoteOrBackslash(start, m_reader.end());
        m_buffer.append(start, stop);
        m_reader.setNext(stop);
        if (!get(c) || (c == '\\' && !readEscaped())) {
            fail();
            return false;
        }
        if (c != '"' && c != '\\')
            m_buffer += c;
    }
    m_text = m_buffer;
    return true;
}

// Reads the character after a backslash.
bool Lexer::readEscaped()
{
    char c = 0;
    if (!get(c))
        return false;
    m_buffer += c == 'n' ? '\n' : c == 't' ? '\t' : c;
    return true;
}

// `first` is taken; isInArea: it is the character before the reader's position in the area.
void Lexer::readWord(char first, bool isInArea)
{
    const char* const start = m_reader.next();
    const char* const stop = findDelimiter(start, m_reader.end());
    if (isInArea && stop != m_reader.end()) {
        m_isInArea = true;
        m_text = std::string_view(start - 1, static_cast<std::size_t>(stop - start) + 1);
        m_reader.setNext(stop);
    } else {
        saveText();
        m_isInArea = false;
        m_buffer.assign(1, first);
        readRestOfWord();
    }
    if (is(first, NumberStart))
        readNumber();
    else
        m_type = Token::Identifier;
}

// The word does not end within the area: it is put together in the buffer.
void Lexer::readRestOfWord()
{
    char c = 0;
    for (;; m_buffer += c) {
        const char* const start = m_reader.next();
        const char* const stop = findDelimiter(start, m_reader.end());
        m_buffer.append(start, stop);
        m_reader.setNext(stop);
        if (!get(c))
            break;
        if (is(c, Delimiter)) {
            m_reader.putBack(c);
            break;
        }
    }
    m_text = m_buffer;
}

// A word that begins as a number has to be one.
void Lexer::readNumber()
{
    if (parseNumber(m_text, m_number))
        m_type = m_number.isReal ? Token::Real : Token::Decimal;
    else
        fail();
}

// What was taken for the token stays taken.
void Lexer::fail()
{
    m_type = Token::Invalid;
    m_hasEnded = true;
}

}
