#include <mdtools/smart_token.h>

#include "smart/lexer.h"

#include <utility>

namespace Tools::Smart {

std::string tokenTypeName(Token::Type type)
{
    switch (type) {
    case Token::Invalid:
        return "invalid";
    case Token::Text:
        return "text";
    case Token::Decimal:
        return "decimal";
    case Token::Real:
        return "real";
    case Token::Identifier:
        return "identifier";
    case Token::Equals:
        return "=";
    case Token::OpenParenthesis:
        return "(";
    case Token::CloseParenthesis:
        return ")";
    case Token::OpenBracket:
        return "[";
    case Token::CloseBracket:
        return "]";
    }
    return "[error - token type not specified...]";
}

Token::Token() : m_type(Invalid) {}

Token::Token(int value) : m_type(Decimal), m_decimal(value) {}

Token::Token(double value) : m_type(Real), m_real(value) {}

Token::Token(Type type) : m_type(type) {}

Token::Token(Type type, std::string text) : m_type(type), m_text(std::move(text)) {}

void Token::setValText(const std::string& text)
{
    if (&text != &m_text)
        m_text = text;
}

IstreamTokenIterator::IstreamTokenIterator(std::istream& stream)
    : m_stream(&stream), m_token(Token::Invalid), m_end(false)
{
    read();
}

IstreamTokenIterator& IstreamTokenIterator::operator++()
{
    read();
    return *this;
}

IstreamTokenIterator IstreamTokenIterator::operator++(int)
{
    IstreamTokenIterator old = *this;
    read();
    return old;
}

// A lexer for each token: between two tokens the stream is up to date.
void IstreamTokenIterator::read()
{
    if (m_stream == nullptr)
        return;
    Lexer lexer(*m_stream, m_buffer, m_end);
    lexer.next();
    lexer.storeIn(m_token);
    m_end = lexer.hasEnded();
}

}
