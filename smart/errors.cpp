#include <mdtools/smart_record.h>

namespace Tools::Smart {

std::string typeName(Type type)
{
    switch (type) {
    case Type::None:
        return "none";
    case Type::Text:
        return "text";
    case Type::Decimal:
        return "decimal";
    case Type::Real:
        return "real";
    case Type::Sequence:
        return "Sequence";
    case Type::Record:
        return "Record";
    }
    return "error - not specified...";
}

// Callers log these messages and compare them: they are part of the interface.
NotAvailable::NotAvailable(const std::string& name)
    : NotAvailable(name, "Tools::Smart::NotAvailable: " + name)
{}

NotAvailable::NotAvailable(const std::string& name, const std::string& message)
    : std::logic_error(message), m_name(name)
{}

WrongType::WrongType(const std::string& name, Type wanted, Type actual)
    : NotAvailable(name, "Tools::Smart::WrongType: " + name + ", want [" + typeName(wanted) +
                             "], get [" + typeName(actual) + "]"),
      m_wanted(wanted),
      m_actual(actual)
{}

WrongToken::WrongToken(Token::Type wanted, const Token& token)
    : std::runtime_error("Tools::Smart::WrongToken: want [" + tokenTypeName(wanted) + "], get [" +
                         tokenTypeName(token.getType()) + "]"),
      m_wanted(wanted),
      m_token(token)
{}

}
