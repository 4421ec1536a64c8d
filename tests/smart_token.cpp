#include "support/text_source.h"

#include <mdtools/smart_token.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <istream>
#include <limits>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Tools::Smart::IstreamTokenIterator;
using Tools::Smart::Token;
using Tools::Smart::tokenTypeName;

std::string describe(const Token& token)
{
    switch (token.getType()) {
    case Token::Text:
        return "'" + token.getValText() + "'";
    case Token::Identifier:
        return token.getValText();
    case Token::Decimal:
        return std::to_string(token.getValDecimal());
    case Token::Real:
        return "real " + std::to_string(token.getValReal());
    default:
        return tokenTypeName(token.getType());
    }
}

std::string tokensOf(const std::string& input)
{
    std::istringstream stream(input);
    std::string result;
    IstreamTokenIterator i(stream);
    for (; !i.end(); ++i)
        result += describe(*i) + " ";
    return result + ((*i).getType() == Token::Invalid ? "invalid" : "end");
}

TEST(SmartToken, typesHaveNames)
{
    const char* const names[] = {"invalid", "text", "decimal", "real", "identifier",
                                 "=",       "(",    ")",       "[",    "]"};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(tokenTypeName(static_cast<Token::Type>(i)), names[i]);
    for (const int i : {-1, 10})
        EXPECT_EQ(tokenTypeName(static_cast<Token::Type>(i)),
                  "[error - token type not specified...]");
}

TEST(SmartToken, holdsItsFields)
{
    const auto expectFields = [](const Token& token, Token::Type type, const std::string& text,
                                 int decimal, double real) {
        EXPECT_EQ(token.getType(), type);
        EXPECT_EQ(token.getValText(), text);
        EXPECT_EQ(token.getValDecimal(), decimal);
        EXPECT_EQ(token.getValReal(), real);
    };
    expectFields(Token(), Token::Invalid, "", 0, 0.0);
    expectFields(Token(7), Token::Decimal, "", 7, 0.0);
    expectFields(Token(7.5), Token::Real, "", 0, 7.5);
    expectFields(Token(Token::Equals), Token::Equals, "", 0, 0.0);

    Token token(Token::Identifier, "name");
    expectFields(token, Token::Identifier, "name", 0, 0.0);
    token.setValText(2.5);
    token.setValDecimal(3);
    token.setValText(token.getValText());
    expectFields(token, Token::Identifier, "name", 3, 2.5);
    token.setType(Token::Text);
    token.setValText("other");
    expectFields(token, Token::Text, "other", 3, 2.5);
}

TEST(SmartToken, lexes)
{
    static const struct {
        const char *input, *tokens;
    } cases[] = {
        {"", "invalid"},
        {" \t\r\n# only a comment", "invalid"},
        {"  #word\n  name", "name end"},
        {"a=b", "a = b end"},
        {"a#b", "a#b end"},
        {"a\"b\"", "a\"b\" end"},
        {"(=)[]", "( = ) [ ] end"},
        {"a\vb\fc", "a\vb\fc end"},
        {R"("ab\"c")", "'ab\"c' end"},
        {R"("\n\t\q\\\#")", "'\n\tq\\#' end"},
        {"\"ab\"  # comment\n \"cd\"", "'abcd' end"},
        {"\"ab\"\"\"\"cd\"x", "'abcd' x end"},
        {"\"a#b\nc\" #x\n)", "'a#b\nc' ) end"},
        {"\"a\" \"b", "invalid"},
        {"x \"ab", "x invalid"},
        {"\"ab\\", "invalid"},
        {"\"", "invalid"},
        {"12) 0 -0 007", "12 ) 0 0 7 end"},
        {"2147483647 -2147483648", "2147483647 -2147483648 end"},
        {"000000000000000000001", "1 end"},
        {"2147483648", "invalid"},
        {"-2147483649", "invalid"},
        {"12. .5 1e3 -2E-1", "real 12.000000 real 0.500000 real 1000.000000 real -0.200000 end"},
        {"-.5e+1", "real -5.000000 end"},
        {"1e999 -1e999", "real inf real -inf end"},
        {"1e-999", "real 0.000000 end"},
        {"-", "invalid"},
        {".", "invalid"},
        {"-.", "invalid"},
        {".e5", "invalid"},
        {"1x", "invalid"},
        {"1.2.3", "invalid"},
        {"3abc", "invalid"},
        {"1.5e", "invalid"},
        {"1e+", "invalid"},
        {"0x10", "invalid"},
        {"0x1e", "invalid"},
        {"-inf", "invalid"},
        {"-infinite", "invalid"},
        {"--5", "invalid"},
        {"-+5.0", "invalid"},
        {"1#2", "invalid"},
        {"+5 nan inf e5", "+5 nan inf e5 end"},
        {"x 1x y", "x invalid"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        EXPECT_EQ(tokensOf(c.input), c.tokens);
    }
    EXPECT_EQ(tokensOf(std::string("1\0", 2)), "invalid");
    EXPECT_EQ(tokensOf(std::string("a\0b \"c\0d\"", 9)), std::string("a\0b 'c\0d' end", 13));
}

TEST(SmartToken, comparesAndCopiesIterators)
{
    std::istringstream stream("a b c");
    std::istringstream other("x");
    const IstreamTokenIterator end;
    EXPECT_TRUE(end == IstreamTokenIterator());
    IstreamTokenIterator i(stream);
    const IstreamTokenIterator atOther(other);
    EXPECT_FALSE(i == end);
    EXPECT_FALSE(i == atOther);

    const IstreamTokenIterator old = i++;
    EXPECT_EQ(old->getValText(), "a");
    EXPECT_EQ(i->getValText(), "b");
    EXPECT_TRUE(old == i);
    // Both read from the one stream.
    IstreamTokenIterator second = old;
    EXPECT_EQ((*++second).getValText(), "c");
    EXPECT_FALSE((++second).end() && !second.end());
    EXPECT_TRUE(++i == end);
    EXPECT_EQ(i->getValText(), "b");
    // The end flag stays, but what the stream has later is read.
    stream.clear();
    stream.str("d");
    EXPECT_EQ((*++i).getValText(), "d");
    EXPECT_TRUE(i.end());

    IstreamTokenIterator none;
    EXPECT_TRUE((++none).end());
}

// The numbers themselves, against the C library.
TEST(SmartToken, convertsExactly)
{
    std::mt19937_64 random(1);
    const auto expectExact = [](const std::string& word) {
        std::istringstream stream(word);
        const IstreamTokenIterator i(stream);
        EXPECT_EQ(i->getType(), Token::Real) << word;
        EXPECT_EQ(i->getValReal(), std::strtod(word.c_str(), nullptr)) << word;
    };
    for (const char* word :
         {"9007199254740993.0", "9007199254740992.5", "1e22", "1e23", "123456789012345678e-22",
          "2.2250738585072011e-308", "4.9e-324", "2.4e-324", "1.7976931348623159e308",
          "1.7976931348623158e308", "0.000000000000000000000000000000000000000000000000001",
          "00000000000000000000000000012345678.5", "8.5899345920000000000000000000000000001e9"})
        expectExact(word);
    expectExact("1." + std::string(100000, '3') + "e5");
    expectExact(std::string(1000, '9') + "e-990");
    expectExact("0." + std::string(1000, '0') + "1e1001");
    for (int i = 0; i < 20000; ++i) {
        char word[64];
        const int digits = static_cast<int>(random() % 20);
        const double mantissa = std::ldexp(static_cast<double>(random() >> 11), -53);
        const double value = std::ldexp(mantissa, static_cast<int>(random() % 200) - 100);
        std::snprintf(word, sizeof word, i % 2 == 0 ? "%.*e" : "%.*f", digits + 1, value);
        expectExact(word);
    }
}

// The lexer's rules one character at a time, as they are told in the header.
class LiteralLexer {
public:
    explicit LiteralLexer(std::istream& stream) : m_stream(stream) { read(); }

    Token token;
    bool end = false;

    void read()
    {
        m_buffer.clear();
        skip();
        if (!get()) {
            end = true;
            return;
        }
        const std::string marks = "=()[]";
        const std::size_t mark = marks.find(m_buffer[0]);
        if (mark != std::string::npos)
            token.setType(static_cast<Token::Type>(Token::Equals + static_cast<int>(mark)));
        else if (m_buffer[0] == '"')
            readText();
        else
            readWord();
    }

private:
    bool get()
    {
        char c = 0;
        if (!m_stream.get(c))
            return false;
        m_buffer += c;
        return true;
    }

    void skip()
    {
        for (;;) {
            char c = 0;
            do
                m_stream.get(c);
            while (m_stream && std::string(" \t\n\r").find(c) != std::string::npos);
            if (!m_stream)
                return;
            if (c != '#') {
                m_stream.putback(c);
                return;
            }
            while (m_stream.get(c) && c != '\n') {
            }
        }
    }

    void fail()
    {
        token.setType(Token::Invalid);
        end = true;
    }

    void readText()
    {
        m_buffer.clear();
        for (;;) {
            bool isEscaped = false;
            do {
                if (!get())
                    return fail();
                isEscaped = m_buffer.back() == '\\';
                if (isEscaped) {
                    m_buffer.pop_back();
                    if (!get())
                        return fail();
                    char& c = m_buffer.back();
                    c = c == 'n' ? '\n' : c == 't' ? '\t' : c;
                }
            } while (isEscaped || m_buffer.back() != '"');
            m_buffer.pop_back();
            skip();
            if (!get())
                break;
            const char c = m_buffer.back();
            m_buffer.pop_back();
            if (c != '"') {
                m_stream.putback(c);
                break;
            }
        }
        token = Token(Token::Text, m_buffer);
    }

    void readWord()
    {
        while (std::string(" \t\n\r=()[]").find(m_buffer.back()) == std::string::npos && get()) {
        }
        if (m_stream) {
            m_stream.putback(m_buffer.back());
            m_buffer.pop_back();
        }
        static const std::regex real(R"(-?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?)");
        static const std::regex decimal(R"(-?\d{1,15})");
        if (std::string("-.0123456789").find(m_buffer[0]) == std::string::npos) {
            token = Token(Token::Identifier, m_buffer);
        } else if (m_buffer.find_first_of(".eE") != std::string::npos) {
            if (!std::regex_match(m_buffer, real))
                return fail();
            token = Token(std::strtod(m_buffer.c_str(), nullptr));
        } else {
            const long long value = std::regex_match(m_buffer, decimal)
                                        ? std::strtoll(m_buffer.c_str(), nullptr, 10)
                                        : std::numeric_limits<long long>::max();
            if (value != static_cast<int>(value))
                return fail();
            token = Token(static_cast<int>(value));
        }
    }

    std::istream& m_stream;
    std::string m_buffer;
};

std::string randomInput(std::mt19937& random)
{
    static const char* const pieces[] = {" ",
                                         "\t",
                                         "\n",
                                         "\r\n",
                                         "#",
                                         "# x\n",
                                         "\"",
                                         "\\",
                                         "\\\"",
                                         "\"a b\"",
                                         "\"\"",
                                         "(",
                                         ")",
                                         "[",
                                         "]",
                                         "=",
                                         "a",
                                         "name",
                                         "n",
                                         "t",
                                         "1",
                                         "-2",
                                         "3.5",
                                         "e",
                                         "1e5",
                                         ".",
                                         "-",
                                         "+",
                                         "12",
                                         "9999999999",
                                         "    ",
                                         "\"a longer text than the smallest areas\"",
                                         "aLongerWordThanTheSmallestAreas"};
    std::string input;
    for (std::size_t n = random() % 24; n > 0; --n)
        input += pieces[random() % std::size(pieces)];
    return input;
}

void expectEqual(const IstreamTokenIterator& i, const LiteralLexer& literal, std::istream& stream,
                 std::istream& literalStream)
{
    EXPECT_EQ(i.end(), literal.end);
    EXPECT_EQ(i->getType(), literal.token.getType());
    EXPECT_EQ(i->getValText(), literal.token.getValText());
    EXPECT_EQ(i->getValDecimal(), literal.token.getValDecimal());
    EXPECT_EQ(i->getValReal(), literal.token.getValReal());
    EXPECT_EQ(stream.rdstate(), literalStream.rdstate());
    EXPECT_EQ(MdToolsTest::TextSource::of(stream).position(),
              MdToolsTest::TextSource::of(literalStream).position());
}

// Whatever the stream's buffer can do, the tokens, the flags and the position are those of reading
// character by character, also when others read in between.
TEST(SmartToken, leavesTheStreamExact)
{
    using MdToolsTest::TextSource;
    std::mt19937 random(7);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        const std::string input = randomInput(random);
        const TextSource::Kind kind = TextSource::Kinds[random() % std::size(TextSource::Kinds)];
        SCOPED_TRACE(input + " (" + std::to_string(kind.area) + ", " +
                     std::to_string(kind.canPutBack) + ")");
        TextSource source(input, kind);
        TextSource literalSource(input, kind);
        std::istream stream(&source);
        std::istream literalStream(&literalSource);
        IstreamTokenIterator i(stream);
        LiteralLexer literal(literalStream);
        for (int step = 0; step < 30; ++step) {
            expectEqual(i, literal, stream, literalStream);
            if (random() % 8 == 0) {
                EXPECT_EQ(stream.get(), literalStream.get());
            }
            ++i;
            literal.read();
        }
    }
}

TEST(SmartToken, throwsWhenTheStreamDoes)
{
    MdToolsTest::TextSource source("a b", {2, true});
    std::istream stream(&source);
    stream.exceptions(std::ios_base::eofbit);
    IstreamTokenIterator i(stream);
    EXPECT_EQ(i->getValText(), "a");
    EXPECT_THROW(++i, std::ios_base::failure);
    EXPECT_EQ(source.position(), 3U);
    EXPECT_EQ(i->getValText(), "a");
}

// Counts its flushes; they fail or throw.
class Prompt : public std::stringbuf {
public:
    enum Answer { Good, Fails, Throws };
    explicit Prompt(Answer answer) : m_answer(answer) {}
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        if (m_answer == Throws)
            throw std::runtime_error("no terminal");
        return m_answer == Good ? 0 : -1;
    }

private:
    Answer m_answer;
};

// A tied stream is flushed before something is read; its failure and its exception have the
// consequences that they have for get().
TEST(SmartToken, flushesTheTiedStream)
{
    for (const Prompt::Answer answer : {Prompt::Good, Prompt::Fails, Prompt::Throws}) {
        for (const std::ios_base::iostate ofTied :
             {std::ios_base::goodbit, std::ios_base::badbit}) {
            for (const std::ios_base::iostate own :
                 {std::ios_base::goodbit, std::ios_base::badbit}) {
                SCOPED_TRACE(::testing::Message() << answer << ", " << ofTied << ", " << own);
                std::ios_base::iostate states[2];
                bool hasThrown[2];
                for (const bool byToken : {false, true}) {
                    Prompt prompt(answer);
                    std::ostream tied(&prompt);
                    tied.exceptions(ofTied);
                    std::istringstream stream("word next");
                    stream.tie(&tied);
                    stream.exceptions(own);
                    hasThrown[byToken] = false;
                    bool isAtEnd = false;
                    try {
                        if (byToken)
                            isAtEnd = IstreamTokenIterator(stream).end();
                        else
                            isAtEnd = stream.get() == std::char_traits<char>::eof();
                        EXPECT_EQ(isAtEnd, stream.fail());
                    } catch (const std::exception&) {
                        hasThrown[byToken] = true;
                    }
                    states[byToken] = stream.rdstate();
                    EXPECT_GE(prompt.flushes, 1);
                }
                EXPECT_EQ(states[true], states[false]);
                EXPECT_EQ(hasThrown[true], hasThrown[false]);
            }
        }
    }
}

TEST(SmartToken, readsBadStreams)
{
    std::istream none(nullptr);
    EXPECT_TRUE(IstreamTokenIterator(none).end());
    std::ifstream missing("/no such directory/no such file");
    EXPECT_TRUE(IstreamTokenIterator(missing).end());
    std::istringstream failed("a");
    failed.setstate(std::ios_base::eofbit);
    EXPECT_TRUE(IstreamTokenIterator(failed).end());
    EXPECT_TRUE(failed.fail());
}

}
