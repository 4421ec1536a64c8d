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

TEST(SmartRecord, letsTheStreamThrow)
{
    const std::string word(100, 'w');
    for (const std::string& input : {"(a = \"" + word + "\" " + word, "(" + word + " \"" + word}) {
        TextSource source(input, {7, true});
        std::istream stream(&source);
        stream.exceptions(std::ios_base::failbit);
        IstreamTokenIterator tokens(stream);
        Record record;
        EXPECT_THROW(record.readFrom(tokens), std::ios_base::failure);
        EXPECT_EQ(record.existsText("a"), input[1] == 'a');
        EXPECT_EQ(tokens->getType(), Token::OpenParenthesis);
        EXPECT_EQ(tokens->getValText(), "");
    }
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
        EXPECT_EQ(tokens.end(), literalTokens.end());
        EXPECT_EQ(tokens->getType(), literalTokens->getType());
        if (tokens->getType() == Token::Text || tokens->getType() == Token::Identifier) {
            EXPECT_EQ(tokens->getValText(), literalTokens->getValText());
        }
        EXPECT_EQ(dump(Record(record)), dump(record));
    }
}

}
