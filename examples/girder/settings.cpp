#include "settings.h"

#include "job_files.h"
#include "trace.h"
#include "value_limits.h"

#include <mdtools/application_registry.h>
#include <mdtools/folders.h>
#include <mdtools/strings.h>

#include <algorithm>
#include <stdexcept>

namespace Girder {

namespace {

constexpr const char* LastModel = "LastModel";
constexpr const char* Directory = "Directory";
constexpr const char* MailHost = "MailHost";
constexpr const char* MailReceivers = "MailReceivers";
constexpr const char* MailSender = "MailSender";
constexpr const char* Style = "NumberStyle";
constexpr const char* Trace = "Trace";
constexpr const char* DebugLabels = "DebugLabels";

struct Number {
    const char* name;
    int standard;
    int minimum;
    int maximum;
};

constexpr Number Stations = {"StationsPerSpan", DefaultStations, 1, MaximumStations};
constexpr Number Decimals = {"Decimals", DefaultDecimals, 0, MaximumDecimals};

// Says to the library where this program's settings are; one object, registered once.
class GirderRegistry : public Tools::ApplicationRegistry {
public:
    static void registerOnce()
    {
        static GirderRegistry instance;
        set(&instance);
    }

    std::string getAppRelPath() const override { return "Girder"; }
};

Tools::Registrar registrar()
{
    return Tools::ApplicationRegistry::get()->getAppSettingsFolder()->getRegistrar("");
}

// What another program or an editor has put there may be anything: what is out of range is as good
// as not set.
int read(const Number& number)
{
    const int value =
        registrar().readInt(number.name, Tools::RegistryValue::DWord).getValueOr(number.standard);
    return value >= number.minimum && value <= number.maximum ? value : number.standard;
}

// A write to the settings reports nothing, so what the user sets is read back.
void check(bool isStored)
{
    if (!isStored)
        throw std::runtime_error("the setting cannot be stored");
}

// These return what is wrong with the text, empty if the setting was stored.
std::string write(const Number& number, const std::string& text)
{
    int value = 0;
    if (!isWholeNumber(text, value) || value < number.minimum || value > number.maximum) {
        return std::string(number.name) + " must be a whole number from " +
               std::to_string(number.minimum) + " to " + std::to_string(number.maximum) +
               ", but is \"" + text + "\"";
    }
    registrar().writeInt(number.name, value, Tools::RegistryValue::DWord);
    check(read(number) == value);
    return "";
}

std::string writeText(const char* name, const std::string& text)
{
    registrar().writeString(name, text);
    check(registrar().readString(name).getValue() == text);
    return "";
}

NumberStyle readStyle()
{
    const std::string text = registrar().readString(Style).getValue();
    for (const auto& [style, name] : numberStyleNames) {
        if (text == name)
            return style;
    }
    return NumberStyle::Fixed;
}

const char* nameOf(NumberStyle style)
{
    return numberStyleNames[static_cast<std::size_t>(style)].second;
}

std::string writeStyle(const std::string& text)
{
    std::string names;
    for (const auto& [style, name] : numberStyleNames) {
        if (Tools::Strieq(text, name)) {
            registrar().writeString(Style, name);
            check(readStyle() == style);
            return "";
        }
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    return std::string(Style) + " must be one of " + names + ", but is \"" + text + "\"";
}

// The labels that are traced are a setting that all programs share.
Tools::RegistryKey sharedSettings(bool create)
{
    return Tools::Registry::find(Tools::Registry::CurrentUser,
                                 Tools::getMerodaRegistryPath("Settings"), create);
}

std::vector<std::string> tracedLabels()
{
    return sharedSettings(false)[DebugLabels].getMultiString();
}

bool isTraceLabel(const std::string& label)
{
    return Tools::Strieq(label, TraceLabel);
}

bool isTracing()
{
    const std::vector<std::string> labels = tracedLabels();
    return std::any_of(labels.begin(), labels.end(), isTraceLabel);
}

std::string writeTrace(const std::string& text)
{
    const bool turnOn = Tools::Strieq(text, "on");
    if (!turnOn && !Tools::Strieq(text, "off"))
        return std::string(Trace) + " must be \"on\" or \"off\", but is \"" + text + "\"";
    // The labels of other programs stay.
    std::vector<std::string> labels = tracedLabels();
    std::erase_if(labels, isTraceLabel);
    if (turnOn)
        labels.emplace_back(TraceLabel);
    Tools::RegistryValue value;
    value.setType(Tools::RegistryValue::MultiString).setName(DebugLabels).setData(labels);
    sharedSettings(true).add(value);
    check(isTracing() == turnOn);
    return "";
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : ",") + text;
    return result;
}

}

Settings::Settings()
{
    GirderRegistry::registerOnce();
}

int Settings::stationsPerSpan() const
{
    return read(Stations);
}

NumberFormat Settings::numberFormat() const
{
    return {readStyle(), read(Decimals)};
}

std::string Settings::directory() const
{
    return registrar().readString(Directory).getValue();
}

std::string Settings::lastModel() const
{
    return registrar().readString(LastModel).getValue();
}

void Settings::setLastModel(const std::string& file)
{
    registrar().writeString(LastModel, file);
}

std::string Settings::mailHost() const
{
    return registrar().readString(MailHost).getValue();
}

std::string Settings::mailSender() const
{
    const std::string sender = registrar().readString(MailSender).getValue();
    return sender.empty() ? Tools::getUserName() : sender;
}

std::vector<std::string> Settings::mailReceivers() const
{
    const std::string receivers = registrar().readString(MailReceivers).getValue();
    return Tools::tokenize(receivers.empty() ? Tools::getUserName() : receivers, ", ");
}

std::vector<std::string> Settings::list() const
{
    const auto line = [](const std::string& name, const std::string& value) {
        return name + " = " + value;
    };
    return {line(Decimals.name, std::to_string(read(Decimals))),
            line(Directory, directory()),
            line(LastModel, lastModel()),
            line(MailHost, mailHost()),
            line(MailReceivers, joined(mailReceivers())),
            line(MailSender, mailSender()),
            line(Style, nameOf(readStyle())),
            line(Stations.name, std::to_string(stationsPerSpan())),
            line(Trace, isTracing() ? "on" : "off")};
}

std::string Settings::set(const std::string& name, const std::string& value)
{
    for (const Number& number : {Stations, Decimals}) {
        if (Tools::Strieq(name, number.name))
            return write(number, value);
    }
    if (Tools::Strieq(name, Style))
        return writeStyle(value);
    if (Tools::Strieq(name, Trace))
        return writeTrace(value);
    for (const char* text : {LastModel, Directory}) {
        if (Tools::Strieq(name, text))
            return writeText(text, value.empty() ? "" : absolutePath(value));
    }
    for (const char* text : {MailHost, MailReceivers, MailSender}) {
        if (Tools::Strieq(name, text))
            return writeText(text, value);
    }
    return "there is no setting \"" + name + "\"";
}

}
