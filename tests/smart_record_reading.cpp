#include "support/locales.h"
#include "support/records.h"
#include "support/text_source.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

namespace {

using namespace MdToolsTest;
using namespace Tools::Smart;

TEST(SmartRecord, reads)
{
    static const struct {
        const char *input, *tree, *error, *rest;
    } cases[] = {
        {"()x", "()", "", "x"},
        {"(a = 1 b = 2.5 c = \"t\" d = (e = 3) f = [(g = 4)()]) next",
         "(a:1 b:r2.5 c:'t' d:(e:3 ) f:[(g:4 )()] )", "", " next"},
        {"# comment\n(a=1 b=2 #)\nc=-3)(", "(a:1 b:2 c:-3 )", "", "("},
        {"(a = 1 a = \"t\")", "(a:'t' )", "", ""},
        {"(a = (a = 1 a = 2.5 a = \"x\" b = 1 a = 7))", "(a:(a:7 b:1 ) )", "", ""},
        {"(a = (x = 1) a = (y = 2))", "(a:(y:2 ) )", "", ""},
        {"(a = \"a\\\"b\")", "(a:'a\"b' )", "", ""},
        {"(a = 3.0)", "(a:r3 )", "", ""},
        {"", "()", "( invalid", ""},
        {"[]", "()", "( [", "]"},
        {"1x", "()", "( invalid", ""},
        {"(a 1)", "()", "= decimal", ")"},
        {"(a = )", "()", "text )", ""},
        {"(a = 1 = 2)", "(a:1 )", "identifier =", " 2)"},
        {"(a = b)", "()", "text identifier", ")"},
        {"(1 = 2)", "()", "identifier decimal", " = 2)"},
        {"(a = 1 b = (c = 2 d))", "(a:1 )", "= )", ")"},
        {"(a = 1 b = [(c = 2) 3])", "(a:1 )", "( decimal", "])"},
        // Cut off anywhere
        {"(", "()", "", ""},
        {"(a", "()", "", ""},
        {"(a =", "()", "", ""},
        {"(a = 1", "(a:1 )", "", ""},
        {"(a = \"t", "()", "", ""},
        {"(a = 1 b = (c = 2", "(a:1 b:(c:2 ) )", "", ""},
        {"(a = [(b = 1)(c", "(a:[(b:1 )()] )", "", ""},
        {"(a = [", "(a:[] )", "", ""},
        // An invalid token ends the reading; every level takes one more token.
        {"(a = 1 b = 1x c = 2)", "(a:1 )", "", " c = 2)"},
        {"(a = (b = (c = 1x d = 2", "(a:(b:() ) )", "", " 2"},
        {"(a = [(b = 1x c = 2", "(a:[()] )", "", " 2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        std::istringstream stream(c.input);
        Record record;
        std::string error;
        try {
            record.readFrom(stream);
        } catch (const WrongToken& e) {
            error = tokenTypeName(e.getWanted()) + " " + tokenTypeName(e.getActual());
            EXPECT_EQ(e.getToken().getType(), e.getActual());
        }
        EXPECT_EQ(dump(record), c.tree);
        EXPECT_EQ(error, c.error);
        stream.clear();
        std::string rest;
        std::getline(stream, rest);
        EXPECT_EQ(rest, c.rest);
    }
    EXPECT_EQ(messageOf<std::runtime_error>([] { parsed("(a 1)"); }),
              "Tools::Smart::WrongToken: want [=], get [decimal]");
}

// Which of its numbers are reals may differ from record to record.
TEST(SmartRecord, tellsNumbersApart)
{
    constexpr int Count = 50;
    const auto textOf = [](int shift, const char* equals, const char* real, const char* decimal) {
        std::string text = "(";
        for (int i = 0; i < Count; ++i)
            text += "n" + std::to_string(i + 10) + equals + ((i + shift) % 3 == 0 ? real : decimal);
        return text + ")";
    };
    const std::string input = textOf(0, " = ", "1.5 ", "2 ") + textOf(1, " = ", "1.5 ", "2 ");
    const std::string tree = textOf(0, ":", "r1.5 ", "2 ") + textOf(1, ":", "r1.5 ", "2 ");
    Record record = parsed("(s = [" + input + input + "])");
    EXPECT_EQ(dump(record), "(s:[" + tree + tree + "] )");
    Record first = record.getSequence("s")[0];
    for (int i = 0; i < Count; ++i) {
        const std::string name = "n" + std::to_string(i + 10);
        if (i % 3 == 0)
            first.setDecimal(name, 2);
        if ((i + 1) % 3 == 0)
            first.setReal(name, 1.5);
    }
    EXPECT_EQ(dump(first), textOf(1, ":", "r1.5 ", "2 "));
    EXPECT_EQ(dump(record), "(s:[" + tree + tree + "] )");
}

TEST(SmartRecord, mergesWhatItReads)
{
    Record record = parsed("(a = 1 b = \"x\" c = (d = 1))");
    std::istringstream stream("(b = 2 c = (e = 1)) [(x=1)] [(x=2)");
    record.readFrom(stream);
    EXPECT_EQ(dump(record), "(a:1 b:2 c:(e:1 ) )");
    EXPECT_TRUE(stream.good());
    Sequence sequence;
    sequence.readFrom(stream);
    IstreamTokenIterator tokens(stream);
    sequence.readFrom(tokens);
    EXPECT_EQ(dump(sequence), "[(x:1 )(x:2 )]");
    EXPECT_TRUE(tokens.end());
    EXPECT_TRUE(stream.eof());
    EXPECT_THROW(sequence.readFrom(tokens), WrongToken);
    EXPECT_EQ(messageOf<std::out_of_range>([&] { sequence[2]; }),
              "Sequence::operator[](size_t index)");
}

// The grammar as it is told in the header, token by token into ordered maps.
class LiteralReader {
public:
    explicit LiteralReader(IstreamTokenIterator& tokens) : m_tokens(tokens) {}

    using Entries = std::map<std::string, std::string>;

    static std::string textOf(const Entries& entries)
    {
        std::string text = "(";
        for (const auto& [name, value] : entries)
            text += name + ":" + value + " ";
        return text + ")";
    }

    void readRecord(Entries& entries)
    {
        expect(Token::OpenParenthesis);
        if (advance())
            return;
        while (m_tokens->getType() != Token::CloseParenthesis) {
            expect(Token::Identifier);
            const std::string name = m_tokens->getValText();
            if (advance())
                return;
            expect(Token::Equals);
            if (advance())
                return;
            entries[name] = readValue();
            if (advance())
                return;
        }
    }

private:
    bool advance() { return (++m_tokens).end(); }

    void expect(Token::Type type)
    {
        if (m_tokens->getType() != type)
            throw WrongToken(type, *m_tokens);
    }

    std::string readValue()
    {
        std::ostringstream text;
        switch (m_tokens->getType()) {
        case Token::Text:
            return "'" + m_tokens->getValText() + "'";
        case Token::Decimal:
            return std::to_string(m_tokens->getValDecimal());
        case Token::Real:
            text << "r" << std::setprecision(17) << m_tokens->getValReal();
            return text.str();
        case Token::OpenParenthesis: {
            Entries nested;
            readRecord(nested);
            return textOf(nested);
        }
        case Token::OpenBracket:
            return readSequence();
        default:
            throw WrongToken(Token::Text, *m_tokens);
        }
    }

    std::string readSequence()
    {
        std::string text = "[";
        if (advance())
            return text + "]";
        while (m_tokens->getType() != Token::CloseBracket) {
            expect(Token::OpenParenthesis);
            Entries nested;
            readRecord(nested);
            text += textOf(nested);
            if (advance())
                break;
        }
        return text + "]";
    }

    IstreamTokenIterator& m_tokens;
};

// Records of one structure in a sequence, with some characters changed, inserted or cut off.
std::string randomInput(std::mt19937& random, int round)
{
    static const std::string characters = "()[]=\"#\\ \n\t1.-e9nab";
    std::string input = randomText(random, 3, round % 2 == 0 ? 3 : 40);
    if (round % 3 != 0) {
        std::string sequence = "(list = [";
        for (auto n = random() % 6; n > 0; --n)
            sequence += "\n  " + input;
        input = sequence + "\n])";
    }
    for (auto n = random() % 3; n > 0; --n)
        input[random() % input.size()] = characters[random() % characters.size()];
    if (random() % 4 == 0)
        input.insert(random() % input.size(), 1, characters[random() % characters.size()]);
    if (random() % 8 == 0)
        input.resize(random() % input.size());
    return input + "rest";
}

void expectSameToken(const IstreamTokenIterator& a, const IstreamTokenIterator& b)
{
    EXPECT_EQ(a.end(), b.end());
    EXPECT_EQ(a->getType(), b->getType());
    if (a->getType() == Token::Text || a->getType() == Token::Identifier) {
        EXPECT_EQ(a->getValText(), b->getValText());
    } else if (a->getType() == Token::Decimal || a->getType() == Token::Real) {
        EXPECT_EQ(a->getValDecimal(), b->getValDecimal());
        EXPECT_EQ(a->getValReal(), b->getValReal());
    }
}

TEST(SmartRecord, readsLikeTheLiteralReader)
{
    std::mt19937 random(11);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        const std::string input = randomInput(random, round);
        const TextSource::Kind kind = TextSource::Kinds[random() % std::size(TextSource::Kinds)];
        SCOPED_TRACE(input + " (" + std::to_string(kind.area) + ", " +
                     std::to_string(kind.canPutBack) + ")");
        TextSource source(input, kind);
        TextSource literalSource(input, kind);
        std::istream stream(&source);
        std::istream literalStream(&literalSource);
        IstreamTokenIterator tokens(stream);
        IstreamTokenIterator literalTokens(literalStream);
        Record record;
        LiteralReader::Entries entries;
        const std::string error = messageOf<WrongToken>([&] { record.readFrom(tokens); });
        EXPECT_EQ(error,
                  messageOf<WrongToken>([&] { LiteralReader(literalTokens).readRecord(entries); }));
        EXPECT_EQ(dump(record), LiteralReader::textOf(entries));
        EXPECT_EQ(stream.rdstate(), literalStream.rdstate());
        EXPECT_EQ(source.position(), literalSource.position());
        expectSameToken(tokens, literalTokens);
        EXPECT_EQ(dump(Record(record)), dump(record));
    }
}

// What the exception of a stream leaves behind, however it comes about: the token that stepping by
// hand would stop at, so that nobody goes on within the record as if nothing had happened.
TEST(SmartRecord, letsTheStreamThrow)
{
    const std::string word(40, 'w');
    const std::string input = "(a = \"" + word + "\" # c\n \"b\" " + word + " = 12.5 " +
                              "l = [(x = 1) (x = 2) (x = \"\\\"\")] n = (" + word + " = (b = 3)))";
    for (std::size_t size = 1; size < input.size(); ++size) {
        for (const TextSource::Kind kind : TextSource::Kinds) {
            // Without an area and putting back not even the first token can be read.
            if (kind.area == 0 && !kind.canPutBack)
                continue;
            for (const bool bufferThrows : {false, true}) {
                SCOPED_TRACE(input.substr(0, size) + " (" + std::to_string(kind.area) + ", " +
                             std::to_string(bufferThrows) + ")");
                TextSource source(input.substr(0, size), kind, bufferThrows);
                TextSource literalSource(input.substr(0, size), kind, bufferThrows);
                std::istream stream(&source);
                std::istream literalStream(&literalSource);
                IstreamTokenIterator tokens(stream);
                IstreamTokenIterator literalTokens(literalStream);
                for (std::istream* const each : {&stream, &literalStream})
                    each->exceptions(bufferThrows ? std::ios_base::badbit : std::ios_base::eofbit);
                Record record;
                LiteralReader::Entries entries;
                const auto read = [&] { record.readFrom(tokens); };
                const auto readLiterally = [&] {
                    LiteralReader(literalTokens).readRecord(entries);
                };
                const char* const message = "nothing thrown";
                EXPECT_NE(messageOf<std::exception>(read), message);
                EXPECT_NE(messageOf<std::exception>(readLiterally), message);
                expectSameToken(tokens, literalTokens);
                EXPECT_EQ(stream.rdstate(), literalStream.rdstate());
                EXPECT_EQ(source.position(), literalSource.position());
            }
        }
        if (HasFailure())
            return;
    }
}

// Numbers are those of the format, whatever setlocale() was told.
TEST(SmartRecord, localeDoesNotMatter)
{
    const std::string text = "(\na = 1.5\nb = -2.25e+20\nc = 1000000\nd = \"1,5\"\n)\n";
    for (const char* locale : MdToolsTest::CommaLocales) {
        SCOPED_TRACE(locale);
        const MdToolsTest::LocaleScope scope(locale);
        const Record record = parsed(text);
        EXPECT_EQ(record.getReal("a"), 1.5);
        EXPECT_EQ(written(record, ""), text);
        EXPECT_FALSE(parsed("(a = 1,5)").exists("a")); // no number: the input ends here
    }
}

// A number that goes on after the end of the stream's area.
TEST(SmartRecord, readsNumbersAcrossAreas)
{
    const std::string record = "(a = 9007199254740993." + std::string(44, '0') + "1 b = 7)\n";
    const std::string input = "[" + record + record + record + "]";
    for (std::size_t area = 40; area < 3 * record.size(); ++area) {
        SCOPED_TRACE(area);
        TextSource source(input, {area, true});
        std::istream stream(&source);
        Sequence sequence;
        sequence.readFrom(stream);
        EXPECT_EQ(dump(sequence), "[(a:r9007199254740994 b:7 )(a:r9007199254740994 b:7 )"
                                  "(a:r9007199254740994 b:7 )]");
    }
}

// The token itself, as well where the reader knows the records' structure already.
TEST(SmartRecord, saysWhichTokenIsWrong)
{
    struct Case {
        const char* text;
        Token::Type wanted;
        Token token;
    };
    static const Case cases[] = {
        {"word", Token::OpenParenthesis, Token(Token::Identifier, "word")},
        {"[", Token::OpenParenthesis, Token(Token::OpenBracket)},
        {"(5", Token::Identifier, Token(5)},
        {"(a \"t\"", Token::Equals, Token(Token::Text, "t")},
        {"(a = b", Token::Text, Token(Token::Identifier, "b")},
        {"(l = [(a = 1 b = 1.5) (a = 1 2.5", Token::Identifier, Token(2.5)},
        {"(l = [(a = 1 b = 2) (a = 1 b = c", Token::Text, Token(Token::Identifier, "c")},
        {"(l = [(a = 1 b = 2) 7", Token::OpenParenthesis, Token(7)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        for (const bool isRecord : {true, false}) {
            std::istringstream stream(isRecord ? c.text : "[" + std::string(c.text));
            Record record;
            Sequence sequence;
            try {
                isRecord ? record.readFrom(stream) : sequence.readFrom(stream);
                ADD_FAILURE() << "nothing thrown";
            } catch (const WrongToken& e) {
                EXPECT_EQ(e.getWanted(), c.wanted);
                EXPECT_EQ(e.getActual(), c.token.getType());
                EXPECT_EQ(e.getToken().getType(), c.token.getType());
                EXPECT_EQ(e.getToken().getValText(), c.token.getValText());
                EXPECT_EQ(e.getToken().getValDecimal(), c.token.getValDecimal());
                EXPECT_EQ(e.getToken().getValReal(), c.token.getValReal());
            }
        }
    }
}

}
