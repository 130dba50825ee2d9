// Settings of the reader object: factory defaults from the profile, and the settings store.
#include "core/basError.h"
#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"
#include "zebreader81/clsZEBReader.h"

#include <cctype>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace zebreader81 {

namespace {

constexpr int32_t objectNotSet = 91;

// Blanks that the lenient parse skips wherever they stand ("1 200" is 1200).
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string withoutBlanks(const std::string& text)
{
    std::string out;
    for (char c : text)
        if (!isBlank(c))
            out += c;
    return out;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Length of a decimal number at s[pos]: sign, digits with an optional fraction, an exponent
// written with E or D.
size_t numberLength(const std::string& s, size_t pos)
{
    const size_t start = pos;
    if (pos < s.size() && (s[pos] == '+' || s[pos] == '-'))
        ++pos;
    size_t digits = 0;
    while (pos < s.size() && isDigit(s[pos]))
        ++pos, ++digits;
    if (pos < s.size() && s[pos] == '.')
        for (++pos; pos < s.size() && isDigit(s[pos]);)
            ++pos, ++digits;
    if (digits == 0)
        return 0;
    if (pos < s.size() && (s[pos] == 'e' || s[pos] == 'E' || s[pos] == 'd' || s[pos] == 'D')) {
        size_t e = pos + 1;
        if (e < s.size() && (s[e] == '+' || s[e] == '-'))
            ++e;
        if (e < s.size() && isDigit(s[e])) {
            while (e < s.size() && isDigit(s[e]))
                ++e;
            pos = e;
        }
    }
    return pos - start;
}

// The number numberLength measured; independent of the host's locale.
double parseNumber(const std::string& s, size_t pos, size_t len)
{
    std::string text = s.substr(pos, len);
    bool negative = false;
    if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
        negative = text[0] == '-';
        text.erase(0, 1);
    }
    for (char& c : text)
        if (c == 'd' || c == 'D')
            c = 'e';
    double value = 0.0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec == std::errc::result_out_of_range) {
        // Too small to hold is 0; too large is an overflow.
        const auto e = text.find('e');
        if (e != std::string::npos && e + 1 < text.size() && text[e + 1] == '-')
            return 0.0;
        err::raise(err::Overflow);
    }
    return negative ? -value : value;
}

// "&H" and "&O" literals: four hexadecimal digits or fewer are a 16-bit Integer ("&HFFFF" is
// -1), more a 32-bit Long.
double radixNumber(const std::string& s, size_t pos)
{
    const int radix = (s[pos + 1] == 'h' || s[pos + 1] == 'H') ? 16 : 8;
    uint64_t value = 0;
    for (pos += 2; pos < s.size(); ++pos) {
        const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(s[pos])));
        const int digit = isDigit(c) ? c - '0' : (radix == 16 && c >= 'a' && c <= 'f') ? c - 'a' + 10 : radix;
        if (digit >= radix)
            break;
        value = value * static_cast<uint64_t>(radix) + static_cast<uint64_t>(digit);
        if (value > 0xFFFFFFFFu)
            err::raise(err::Overflow);
    }
    if (value <= 0xFFFFu)
        return static_cast<int16_t>(static_cast<uint16_t>(value));
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

// The lenient number parse of stored texts: blanks are skipped, the leading number counts
// ("12abc" is 12), "&H"/"&O" literals are read in their radix, a text without a number is 0.
double leadingNumber(const std::string& text)
{
    const std::string s = withoutBlanks(text);
    if (s.size() >= 2 && s[0] == '&' && std::strchr("hHoO", s[1]) != nullptr)
        return radixNumber(s, 0);
    const size_t len = numberLength(s, 0);
    return len ? parseNumber(s, 0, len) : 0.0;
}

// Boolean from a stored text: "True"/"False" in any case, or a number (0 is False);
// anything else is a type mismatch.
bool booleanFromText(const std::string& text)
{
    size_t begin = 0, end = text.size();
    while (begin < end && isBlank(text[begin]))
        ++begin;
    while (end > begin && isBlank(text[end - 1]))
        --end;
    std::string word;
    for (size_t i = begin; i < end; ++i)
        word += static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
    if (word == "true")
        return true;
    if (word == "false")
        return false;
    const size_t len = numberLength(text, begin);
    if (len == 0 || begin + len != end)
        err::raise(err::TypeMismatch);
    return parseNumber(text, begin, len) != 0.0;
}

// Conversions to the properties' types round half to even, as the automation types do.
int32_t toLong(double v)
{
    const double r = std::nearbyint(v);
    if (!(r >= -2147483648.0 && r <= 2147483647.0))
        err::raise(err::Overflow);
    return static_cast<int32_t>(r);
}

int16_t toInteger(double v)
{
    const double r = std::nearbyint(v);
    if (!(r >= -32768.0 && r <= 32767.0))
        err::raise(err::Overflow);
    return static_cast<int16_t>(r);
}

float toSingle(double v)
{
    if (!(std::fabs(v) <= FLT_MAX))
        err::raise(err::Overflow);
    return static_cast<float>(v);
}

std::string booleanText(bool v) { return v ? "True" : "False"; }

// A Single as its decimal text: seven significant digits, exponent form when needed, a
// point whatever the host's locale.
std::string singleText(float v)
{
    if (v == 0.0f)
        return "0";
    char buf[32];
    const auto written =
        std::to_chars(buf, buf + sizeof buf, static_cast<double>(v), std::chars_format::general, 7);
    std::string text(buf, written.ptr);
    for (char& c : text)
        if (c == 'e')
            c = 'E';
    return text;
}

} // namespace

bool clsZEBReader::LoadDefaults(zebReaderType eReaderType)
{
    return trap("ZEBReader81 - clsZEBReader.LoadDefaults", false, [&] {
        ReaderType(eReaderType);
        // The catalogue is asked once per property, as a host that changed it between calls would see.
        const auto profile = [&] {
            auto p = Profiles()->Item(std::to_string(eReaderType));
            if (!p)
                throw RuntimeError(objectNotSet, "Object variable or With block variable not set");
            return p;
        };
        ReaderGrade(profile()->ReaderGrade());
        Barcode(profile()->Barcode());
        Duplex(profile()->Duplex());
        Feeder(profile()->Feeder());
        FlowControl(profile()->FlowControl());
        MarkCutOff(profile()->MarkCutOff());
        MarkDiscrimination(profile()->MarkDiscrimination());
        Printer()->Enabled(profile()->Printer());
        RecognitionThreshold(profile()->RecognitionThreshold());
        Rejecter(profile()->Rejecter());
        BaudRate(profile()->BaudRate());
        DataBits(profile()->DataBits());
        Parity(profile()->Parity());
        StopBits(profile()->StopBits());
        SleepTime(profile()->SleepTime());
        TimeOut(profile()->TimeOut());
        return true;
    });
}

bool clsZEBReader::LoadSettings(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey)
{
    return trap("ZEBReader81 - clsZEBReader.LoadSettings", false, [&] {
        registry::BadFileReportScope oneReport;
        const auto load = [&](const char* name, const char* defaultText) {
            return registry::LoadValue(lRegistryKey, sRegistrySubKey, name, defaultText);
        };
        const auto number = [&](const char* name, const char* defaultText) {
            return leadingNumber(load(name, defaultText));
        };
        const auto boolean = [&](const char* name) { return booleanFromText(load(name, "False")); };

        // ScannerType first: it re-types the imprinter before "Printer" is applied.
        ReaderType(static_cast<zebReaderType>(toLong(number("ScannerType", "0"))));
        ReaderGrade(boolean("ReaderGrade"));
        Barcode(boolean("Barcode"));
        Duplex(boolean("Duplex"));
        Feeder(boolean("Feeder"));
        FlowControl(static_cast<zebReaderFlowControl>(toLong(number("FlowControl", "0"))));
        MarkCutOff(toInteger(number("MarkCutOff", "0")));
        MarkDiscrimination(toInteger(number("MarkDiscrimination", "0")));
        Printer()->Enabled(boolean("Printer"));
        RecognitionThreshold(toInteger(number("RecognitionThreshold", "0")));
        Rejecter(boolean("Reject"));
        BaudRate(static_cast<zebReaderBaudRate>(toLong(number("ScannerBaud", "9600"))));
        DataBits(static_cast<zebReaderDataBits>(toLong(number("ScannerDataBits", "7"))));
        Parity(load("ScannerParity", "N"));
        Port(toInteger(number("ScannerPort", "1")));
        StopBits(toSingle(number("ScannerStopBits", "1")));
        SleepTime(toLong(number("SleepTime", "50")));
        TimeOut(toLong(number("TimeOut", "10")));
        Windowing(boolean("Windowing"));
        return true;
    });
}

bool clsZEBReader::SaveSettings(zebReaderRegistryKey lRegistryKey, const std::string& sRegistrySubKey)
{
    return trap("ZEBReader81 - clsZEBReader.SaveSettings", false, [&] {
        registry::BadFileReportScope oneReport;
        // Each write's result is not checked: every value is attempted.
        const auto save = [&](const char* name, const std::string& text) {
            registry::SaveValue(lRegistryKey, sRegistrySubKey, name, text);
        };
        save("ScannerType", std::to_string(ReaderType()));
        save("ReaderGrade", booleanText(ReaderGrade()));
        save("Barcode", booleanText(Barcode()));
        save("Duplex", booleanText(Duplex()));
        save("Feeder", booleanText(Feeder()));
        save("FlowControl", std::to_string(FlowControl()));
        save("MarkCutOff", std::to_string(MarkCutOff()));
        save("MarkDiscrimination", std::to_string(MarkDiscrimination()));
        save("Printer", booleanText(Printer()->Enabled()));
        save("RecognitionThreshold", std::to_string(RecognitionThreshold()));
        save("Reject", booleanText(Rejecter()));
        save("ScannerBaud", std::to_string(BaudRate()));
        save("ScannerDataBits", std::to_string(DataBits()));
        save("ScannerParity", Parity());
        save("ScannerPort", std::to_string(Port()));
        save("ScannerStopBits", singleText(StopBits()));
        save("SleepTime", std::to_string(SleepTime()));
        save("TimeOut", std::to_string(TimeOut()));
        save("Windowing", booleanText(Windowing()));
        return true;
    });
}

} // namespace zebreader81
