#include "dialog/OptionsForm.h"

#include "core/basError.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace zebreader81::options {

namespace {

using Profile = clsZEBReaderProfile;
using Flag = bool (Profile::*)() const;

struct Range {
    int64_t minimum;
    int64_t maximum;
};

constexpr Range int16Range{std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max()};
constexpr Range int32Range{std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};

// One row per field, in the order of Field. A text box is held to `userRange` while the user
// may change it, and only to its type's range otherwise (a value the host set stays).
struct FieldRule {
    Kind kind;
    Flag enabled; // nullptr: always
    Flag visible;
    const char* name;
    const char* unit;
    Range userRange;
    Range typeRange;
};

// The profile has no flags of its own for the mark cut-off: it goes with the discrimination.
constexpr std::array<FieldRule, fieldCount> rules = {{
    {Kind::List, nullptr, nullptr, "scanner model", "", {}, {}},
    {Kind::List, &Profile::PortEnabled, &Profile::PortVisible, "port", "", {1, 16}, {}},
    {Kind::List, &Profile::BaudRateEnabled, &Profile::BaudRateVisible, "baud rate", "", {}, {}},
    {Kind::List, &Profile::ParityEnabled, &Profile::ParityVisible, "parity", "", {}, {}},
    {Kind::List, &Profile::DataBitsEnabled, &Profile::DataBitsVisible, "data bits", "", {}, {}},
    {Kind::List, &Profile::StopBitsEnabled, &Profile::StopBitsVisible, "stop bits", "", {}, {}},
    {Kind::List, &Profile::FlowControlEnabled, &Profile::FlowControlVisible, "flow control", "", {}, {}},
    {Kind::Edit,
     &Profile::TimeOutEnabled,
     &Profile::TimeOutVisible,
     "time-out",
     " of seconds",
     {1, 600},
     int32Range},
    {Kind::Edit,
     &Profile::SleepTimeEnabled,
     &Profile::SleepTimeVisible,
     "sleep time",
     " of milliseconds",
     {0, 60000},
     int32Range},
    {Kind::Edit,
     &Profile::MarkDiscriminationEnabled,
     &Profile::MarkDiscriminationVisible,
     "mark cut-off",
     "",
     {0, 32767},
     int16Range},
    {Kind::Edit,
     &Profile::MarkDiscriminationEnabled,
     &Profile::MarkDiscriminationVisible,
     "mark discrimination",
     "",
     {0, 32767},
     int16Range},
    {Kind::Edit,
     &Profile::RecognitionThresholdEnabled,
     &Profile::RecognitionThresholdVisible,
     "recognition threshold",
     "",
     {},
     int16Range},
    {Kind::Check, &Profile::DuplexEnabled, &Profile::DuplexVisible, "", "", {}, {}},
    {Kind::Check, &Profile::FeederEnabled, &Profile::FeederVisible, "", "", {}, {}},
    {Kind::Check, &Profile::RejecterEnabled, &Profile::RejecterVisible, "", "", {}, {}},
    {Kind::Check, &Profile::BarcodeEnabled, &Profile::BarcodeVisible, "", "", {}, {}},
    {Kind::Check, &Profile::PrinterEnabled, &Profile::PrinterVisible, "", "", {}, {}},
    {Kind::Check, &Profile::ReaderGradeEnabled, &Profile::ReaderGradeVisible, "", "", {}, {}},
    {Kind::Check, &Profile::WindowingEnabled, &Profile::WindowingVisible, "", "", {}, {}},
    {Kind::Button, &Profile::LocateEnabled, &Profile::LocateEnabled, "", "", {}, {}},
    {Kind::Button, &Profile::FirmwareEnabled, &Profile::FirmwareEnabled, "", "", {}, {}},
}};

const FieldRule& ruleOf(Field field) { return rules[static_cast<size_t>(field)]; }

std::string number(int64_t value) { return std::to_string(value); }

std::string decimalText(float value)
{
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, value);
    return std::string(text, written.ptr);
}

// A whole number, blanks around it allowed.
std::optional<int64_t> wholeNumber(const std::string& text)
{
    const auto first = text.find_first_not_of(' ');
    const auto last = text.find_last_not_of(' ');
    if (first == std::string::npos)
        return std::nullopt;
    const char* begin = text.data() + first;
    const char* end = text.data() + last + 1;
    if (*begin == '+')
        ++begin;
    int64_t value = 0;
    const auto parsed = std::from_chars(begin, end, value);
    if (parsed.ec != std::errc() || parsed.ptr != end)
        return std::nullopt;
    return value;
}

std::optional<float> decimalNumber(const std::string& text)
{
    float value = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
        return std::nullopt;
    return value;
}

template <class T> T wholeOf(const FormValues& values, Field field)
{
    const auto value = wholeNumber(values[field]);
    if (!value || *value < std::numeric_limits<T>::min() || *value > std::numeric_limits<T>::max())
        err::raise(err::TypeMismatch);
    return static_cast<T>(*value);
}

float decimalOf(const FormValues& values, Field field)
{
    const auto value = decimalNumber(values[field]);
    if (!value)
        err::raise(err::TypeMismatch);
    return *value;
}

// The settings a profile gives a value for, as the form shows them.
FormValues valuesOf(const Profile& p)
{
    FormValues v;
    v[Field::BaudRate] = number(p.BaudRate());
    v[Field::Parity] = p.Parity();
    v[Field::DataBits] = number(p.DataBits());
    v[Field::StopBits] = decimalText(p.StopBits());
    v[Field::FlowControl] = number(p.FlowControl());
    v[Field::TimeOut] = number(p.TimeOut());
    v[Field::SleepTime] = number(p.SleepTime());
    v[Field::MarkCutOff] = number(p.MarkCutOff());
    v[Field::MarkDiscrimination] = number(p.MarkDiscrimination());
    v[Field::RecognitionThreshold] = number(p.RecognitionThreshold());
    v.check(Field::Duplex, p.Duplex());
    v.check(Field::Feeder, p.Feeder());
    v.check(Field::Rejecter, p.Rejecter());
    v.check(Field::Barcode, p.Barcode());
    v.check(Field::Printer, p.Printer());
    v.check(Field::ReaderGrade, p.ReaderGrade());
    v.check(Field::Windowing, p.Windowing());
    return v;
}

std::string modelName(const FormValues& values)
{
    Profile named;
    named.ReaderType(static_cast<zebReaderType>(wholeNumber(values[Field::ReaderType]).value_or(0)));
    return named.ReaderName();
}

std::vector<Choice> fixedChoices(Field field)
{
    switch (field) {
    case Field::Port: {
        std::vector<Choice> ports;
        for (int port = 1; port <= 16; ++port)
            ports.push_back({"COM" + number(port), number(port)});
        return ports;
    }
    case Field::BaudRate: {
        std::vector<Choice> rates;
        for (int rate : {110, 300, 600, 1200, 2400, 4800, 9600, 14400, 19200, 28800, 38400, 56000, 57600,
                         115200, 128000, 256000})
            rates.push_back({number(rate), number(rate)});
        return rates;
    }
    case Field::Parity: return {{"None", "N"}, {"Even", "E"}, {"Odd", "O"}, {"Mark", "M"}, {"Space", "S"}};
    case Field::DataBits: return {{"4", "4"}, {"5", "5"}, {"6", "6"}, {"7", "7"}, {"8", "8"}};
    case Field::StopBits: return {{"1", "1"}, {"1.5", "1.5"}, {"2", "2"}};
    case Field::FlowControl:
        return {{"None", "0"}, {"XON/XOFF", "1"}, {"RTS/CTS", "2"}, {"XON/XOFF and RTS/CTS", "3"}};
    default: return {};
    }
}

// A list holds what its entries stand for, or the reader's own value; the port, while the
// user may change it, must be one the list offers.
std::optional<Refusal> listRefusal(const FormValues& values, Field field, bool userMayChange)
{
    const FieldRule& rule = ruleOf(field);
    if (field == Field::Parity)
        return std::nullopt;
    bool ok = field == Field::StopBits ? decimalNumber(values[field]).has_value()
                                       : wholeNumber(values[field]).has_value();
    if (ok && userMayChange && rule.userRange.maximum != 0) {
        const int64_t value = *wholeNumber(values[field]);
        ok = value >= rule.userRange.minimum && value <= rule.userRange.maximum;
    }
    if (ok)
        return std::nullopt;
    return Refusal{field, "Choose the " + std::string(rule.name) + " from the list."};
}

std::optional<Refusal> editRefusal(const FormValues& values, Field field, bool userMayChange,
                                   const Profile* profile)
{
    const FieldRule& rule = ruleOf(field);
    Range range = userMayChange ? rule.userRange : rule.typeRange;
    std::string whose;
    if (field == Field::RecognitionThreshold && profile) {
        whose = " of the " + profile->ReaderName();
        if (userMayChange)
            range = {profile->RecognitionThresholdMinimum(), profile->RecognitionThresholdMaximum()};
    }
    const auto value = wholeNumber(values[field]);
    if (value && *value >= range.minimum && *value <= range.maximum)
        return std::nullopt;
    std::string message = "The " + std::string(rule.name) + whose + " must be a whole number" + rule.unit;
    if (userMayChange)
        message += " from " + number(range.minimum) + " to " + number(range.maximum);
    return Refusal{field, message + "."};
}

// A reader to try things on, with the host's profile of the form's model.
std::unique_ptr<clsZEBReader> scratchReader(const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    auto reader = std::make_unique<clsZEBReader>();
    const auto hosts = profileOf(values, profiles);
    const auto own = reader->Profiles()->Item(values[Field::ReaderType]);
    if (hosts && own)
        *own = *hosts;
    return reader;
}

} // namespace

Kind kindOf(Field field) { return ruleOf(field).kind; }

std::shared_ptr<clsZEBReaderProfile> profileOf(const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    return profiles.Item(values[Field::ReaderType]);
}

ControlState controlState(const clsZEBReaderProfile* profile, Field field)
{
    const FieldRule& rule = ruleOf(field);
    if (!rule.enabled)
        return {true, true};
    if (!profile)
        return {false, true};
    return {(profile->*rule.enabled)(), (profile->*rule.visible)()};
}

std::vector<Choice> choices(Field field, const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    std::vector<Choice> list;
    if (field == Field::ReaderType) {
        for (int32_t i = 1; i <= profiles.Count(); ++i)
            if (const auto p = profiles.Item(i))
                list.push_back({p->ReaderName(), number(p->ReaderType())});
    } else {
        list = fixedChoices(field);
    }
    const std::string& current = values[field];
    const bool listed =
        std::any_of(list.begin(), list.end(), [&](const Choice& c) { return c.value == current; });
    if (!listed && ruleOf(field).kind == Kind::List)
        list.push_back({field == Field::ReaderType ? modelName(values) : current, current});
    return list;
}

FormValues valuesOf(const clsZEBReader& reader)
{
    FormValues v;
    v[Field::ReaderType] = number(reader.ReaderType());
    v[Field::Port] = number(reader.Port());
    v[Field::BaudRate] = number(reader.BaudRate());
    v[Field::Parity] = reader.Parity();
    v[Field::DataBits] = number(reader.DataBits());
    v[Field::StopBits] = decimalText(reader.StopBits());
    v[Field::FlowControl] = number(reader.FlowControl());
    v[Field::TimeOut] = number(reader.TimeOut());
    v[Field::SleepTime] = number(reader.SleepTime());
    v[Field::MarkCutOff] = number(reader.MarkCutOff());
    v[Field::MarkDiscrimination] = number(reader.MarkDiscrimination());
    v[Field::RecognitionThreshold] = number(reader.RecognitionThreshold());
    v.check(Field::Duplex, reader.Duplex());
    v.check(Field::Feeder, reader.Feeder());
    v.check(Field::Rejecter, reader.Rejecter());
    v.check(Field::Barcode, reader.Barcode());
    v.check(Field::Printer, reader.Printer()->Enabled());
    v.check(Field::ReaderGrade, reader.ReaderGrade());
    v.check(Field::Windowing, reader.Windowing());
    return v;
}

void changeModel(FormValues& values, const clsZEBReaderProfiles& profiles, zebReaderType type)
{
    values[Field::ReaderType] = number(type);
    const auto profile = profileOf(values, profiles);
    if (!profile)
        return;
    const FormValues fixed = valuesOf(*profile);
    for (size_t i = 0; i < fieldCount; ++i) {
        const auto field = static_cast<Field>(i);
        const bool hasValue = !fixed[field].empty() || field == Field::Parity;
        if (hasValue && field != Field::ReaderType && !controlState(profile.get(), field).enabled)
            values[field] = fixed[field];
    }
}

std::optional<Refusal> validate(const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    const auto profile = profileOf(values, profiles);
    for (size_t i = 0; i < fieldCount; ++i) {
        const auto field = static_cast<Field>(i);
        const FieldRule& rule = ruleOf(field);
        const bool userMayChange = controlState(profile.get(), field).enabled;
        auto refusal = rule.kind == Kind::List   ? listRefusal(values, field, userMayChange)
                       : rule.kind == Kind::Edit ? editRefusal(values, field, userMayChange, profile.get())
                                                 : std::nullopt;
        if (refusal)
            return refusal;
    }
    return std::nullopt;
}

void applyTo(const FormValues& values, clsZEBReader& reader)
{
    reader.ReaderType(static_cast<zebReaderType>(wholeOf<int32_t>(values, Field::ReaderType)));
    reader.Port(wholeOf<int16_t>(values, Field::Port));
    reader.BaudRate(static_cast<zebReaderBaudRate>(wholeOf<int32_t>(values, Field::BaudRate)));
    reader.Parity(values[Field::Parity]);
    reader.DataBits(static_cast<zebReaderDataBits>(wholeOf<int32_t>(values, Field::DataBits)));
    reader.StopBits(decimalOf(values, Field::StopBits));
    reader.FlowControl(static_cast<zebReaderFlowControl>(wholeOf<int32_t>(values, Field::FlowControl)));
    reader.TimeOut(wholeOf<int32_t>(values, Field::TimeOut));
    reader.SleepTime(wholeOf<int32_t>(values, Field::SleepTime));
    reader.MarkCutOff(wholeOf<int16_t>(values, Field::MarkCutOff));
    reader.MarkDiscrimination(wholeOf<int16_t>(values, Field::MarkDiscrimination));
    reader.RecognitionThreshold(wholeOf<int16_t>(values, Field::RecognitionThreshold));
    reader.Duplex(values.checked(Field::Duplex));
    reader.Feeder(values.checked(Field::Feeder));
    reader.Rejecter(values.checked(Field::Rejecter));
    reader.Barcode(values.checked(Field::Barcode));
    reader.ReaderGrade(values.checked(Field::ReaderGrade));
    reader.Windowing(values.checked(Field::Windowing));
    reader.Printer()->Enabled(values.checked(Field::Printer));
}

FormValues withDefaults(const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    auto scratch = scratchReader(values, profiles);
    scratch->Port(wholeOf<int16_t>(values, Field::Port));
    scratch->Windowing(values.checked(Field::Windowing));
    if (!scratch->LoadDefaults(static_cast<zebReaderType>(wholeOf<int32_t>(values, Field::ReaderType))))
        return values;
    return valuesOf(*scratch);
}

ActionResult locate(const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    auto scratch = scratchReader(values, profiles);
    applyTo(values, *scratch);
    ActionResult result{scratch->Locate(scratch->Port()), {}, values};
    if (result.succeeded) {
        result.values[Field::Port] = number(scratch->Port());
        result.message = "The " + scratch->ReaderName() + " answered on COM" + number(scratch->Port()) + ".";
    } else {
        result.message = "No " + scratch->ReaderName() + " answered on COM1 to COM16.";
    }
    return result;
}

ActionResult firmware(const FormValues& values, const clsZEBReaderProfiles& profiles)
{
    auto scratch = scratchReader(values, profiles);
    applyTo(values, *scratch);
    std::string text;
    ActionResult result{scratch->Firmware(text), {}, values};
    const std::string where = scratch->ReaderName() + " on COM" + number(scratch->Port());
    result.message = result.succeeded ? "Firmware of the " + where + ": " + text
                                      : "The " + where + " did not report its firmware.";
    return result;
}

std::optional<HelpTopic> helpTopic(const clsZEBReader& reader)
{
    if (reader.HelpFile().empty())
        return std::nullopt;
    return HelpTopic{reader.HelpFile(), reader.HelpID(zebReaderHelpIDProperties)};
}

} // namespace zebreader81::options
