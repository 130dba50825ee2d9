// The reader's settings: defaults from the profile, load and save through the store, and how
// stored texts read.
#include "StoreFixture.h"
#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"
#include "support/TestHost.h"

#include <clocale>
#include <sstream>
#include <tuple>

namespace zebreader81::test {
namespace {

constexpr auto HKCU = zebReaderRegistryKeyCurrentUser;
const std::string site = "Software\\Site\\Scanner";
using Settings = StoreFixture;

// The values SaveSettings writes, in its order, with texts none of which is a default.
const std::pair<const char*, const char*> everyValue[] = {
    {"ScannerType", "3"},     {"ReaderGrade", "True"},
    {"Barcode", "True"},      {"Duplex", "True"},
    {"Feeder", "True"},       {"FlowControl", "2"},
    {"MarkCutOff", "-12"},    {"MarkDiscrimination", "3"},
    {"Printer", "True"},      {"RecognitionThreshold", "7"},
    {"Reject", "True"},       {"ScannerBaud", "38400"},
    {"ScannerDataBits", "8"}, {"ScannerParity", "O"},
    {"ScannerPort", "16"},    {"ScannerStopBits", "1.5"},
    {"SleepTime", "2"},       {"TimeOut", "600"},
    {"Windowing", "True"}};

// A reader's settings as SaveSettings stores them, in the order above, "-" for a missing one.
std::string settingsOf(clsZEBReader& r)
{
    EXPECT_TRUE(r.SaveSettings(HKCU, "Software\\Saved"));
    std::string out;
    for (const auto& [name, text] : everyValue)
        out += (out.empty() ? "" : "|") + registry::LoadValue(HKCU, "Software\\Saved", name, "-");
    return out;
}

TEST_F(Settings, EveryValueRoundTripsAndAMissingKeyOrRootGivesEveryDefault)
{
    const auto bogus = static_cast<zebReaderRegistryKey>(7); // an unknown root: nothing written
    EXPECT_EQ(registry::LoadValue(bogus, site, "TimeOut", "10"), "10");
    EXPECT_FALSE(registry::SaveValue(bogus, site, "TimeOut", "3"));
    EXPECT_TRUE(clsZEBReader().SaveSettings(bogus, site)); // SaveSettings ignores the helpers' results
    EXPECT_FALSE(anythingWritten());
    for (const auto& [name, text] : everyValue)
        ASSERT_TRUE(registry::SaveValue(HKCU, site, name, text));
    HostScope scope;
    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(HKCU, "SOFTWARE\\site\\SCANNER")); // key paths ignore case
    EXPECT_EQ(settingsOf(r), "3|True|True|True|True|2|-12|3|True|7|True|38400|8|O|16|1.5|2|600|True");
#ifndef _WIN32
    // The file is the registry editor's format, readable as text.
    const std::string text = readFile(fileOf(registry::Root::CurrentUser));
    EXPECT_EQ(text.rfind("Windows Registry Editor Version 5.00\n", 0), 0u);
    EXPECT_NE(text.find("[HKEY_CURRENT_USER\\Software\\Saved]\n\"ScannerType\"=\"3\"\n"), std::string::npos);
#endif

    ASSERT_TRUE(r.LoadSettings(HKCU, "Software\\Nowhere")); // type 0 ignores the imprinter's "False"
    EXPECT_EQ(settingsOf(r), "0|False|False|False|False|0|0|0|True|0|False|9600|7|N|1|1|50|10|False");
    EXPECT_TRUE(scope.host->reports.empty());
    std::unique_ptr<registry::SettingsKey> k; // reading created nothing
    EXPECT_NE(registry::settingsStore().open(registry::Root::CurrentUser, "Software\\Nowhere",
                                             registry::Access::Read, k),
              registry::Status::Ok);
}

TEST_F(Settings, StoredTextsAreReadLeniently)
{
    struct Case {
        const char* name;
        const char* text;
        const char* read; // as SaveSettings stores it; nullptr: LoadSettings fails
        int error = 0;
    };
    const Case cases[] = {
        {"Windowing", "TRUE", "True"},
        {"Windowing", "false", "False"},
        {"Windowing", "-1", "True"},
        {"Windowing", "0", "False"},
        {"Windowing", " 2.5 ", "True"},
        {"Windowing", "0.0", "False"},
        {"Windowing", "Yes", nullptr, 13},
        {"Windowing", "1x", nullptr, 13},
        {"Windowing", "", nullptr, 13}, // stored as " "
        {"ScannerParity", "", " "},     // an empty text is stored as one blank
        {"MarkCutOff", "12abc", "12"},
        {"MarkDiscrimination", "abc", "0"},
        {"ScannerPort", "  +3", "3"},
        {"ScannerStopBits", "1.5 bits", "1.5"},
        {"TimeOut", "2.5", "2"}, // half to even
        {"SleepTime", "1e1", "10"},
        {"ScannerBaud", "19 200", "19200"},
        {"MarkCutOff", "&H1F", "31"},
        {"MarkDiscrimination", "&HFFFF", "-1"}, // a 16-bit -1
        {"RecognitionThreshold", "&o17", "15"},
        {"SleepTime", "2D1", "20"},
        {"MarkCutOff", "40000", nullptr, 6},
    };
    int n = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.name) + "=" + c.text);
        const std::string key = site + std::to_string(++n);
        ASSERT_TRUE(registry::SaveValue(HKCU, key, c.name, c.text));
        HostScope scope;
        clsZEBReader r;
        EXPECT_EQ(r.LoadSettings(HKCU, key), c.read != nullptr);
        if (!c.read) {
            const Report& rep = scope.host->only();
            EXPECT_EQ(std::tie(rep.number, rep.kind, rep.location),
                      std::tuple(c.error, 0, std::string("clsZEBReader.LoadSettings")));
            EXPECT_EQ(rep.description, c.error == 13 ? "Type mismatch" : "Overflow");
            continue;
        }
        settingsOf(r);
        EXPECT_EQ(registry::LoadValue(HKCU, "Software\\Saved", c.name, "?"), c.read);
        EXPECT_TRUE(scope.host->reports.empty());
    }
}

TEST_F(Settings, BadValueStopsLoadingKeepingEarlierValues)
{
    for (auto [name, value] : {std::pair{"ScannerType", "2"},
                               {"ReaderGrade", "true"},
                               {"Barcode", "Yes"},
                               {"Duplex", "True"},
                               {"ScannerBaud", "38400"}})
        ASSERT_TRUE(registry::SaveValue(HKCU, site, name, value));
    HostScope scope;
    clsZEBReader r;
    r.BaudRate(zebReaderBaudRate1200);
    EXPECT_FALSE(r.LoadSettings(HKCU, site));
    EXPECT_EQ(scope.host->only().number, 13);
    // ScannerType and ReaderGrade came before the bad Barcode; Duplex and ScannerBaud not.
    EXPECT_EQ(settingsOf(r), "2|True|False|False|False|0|0|0|False|0|False|1200|7|N|1|1|50|10|False");
}

TEST_F(Settings, NumbersIgnoreTheHostsLocale)
{
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    const std::string kept = previous ? previous : "C";
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma installed";
    clsZEBReader a, b;
    a.StopBits(1.5f);
    ASSERT_TRUE(a.SaveSettings(HKCU, site));
    const bool loaded = b.LoadSettings(HKCU, site);
    const std::string stored = registry::LoadValue(HKCU, site, "ScannerStopBits", "?");
    std::setlocale(LC_NUMERIC, kept.c_str());
    ASSERT_TRUE(loaded);
    EXPECT_EQ(stored, "1.5");
    EXPECT_EQ(b.StopBits(), 1.5f);
}

TEST_F(Settings, ValuesOfOtherTypesReadAsTextsAndOversizedOnesAsTheDefault)
{
    using registry::Value;
#ifdef _WIN32
    const std::size_t fits = 1023; // Wine's ANSI query wants room for a terminator the value lacks
#else
    const std::size_t fits = 1024;
#endif
    const std::tuple<const char*, Value, std::string> cases[] = {
        {"TimeOut", Value::dword(0x0000000a), "10"},
        {"Big", Value::dword(0x12345678), "305419896"},
        {"Word", Value::dword(0x0000ffff), "-1"}, // four digits read as an Integer
        {"Hundred", Value::dword(0x100), "0"},    // the bytes cut at the first zero
        {"Binary", Value{registry::REG_BINARY, {'4', '2'}}, ""},
        {"None", Value{registry::REG_NONE, {}}, ""},
        {"Expand", Value::text("%HOME%", registry::REG_EXPAND_SZ), "%HOME%"},
        {"Embedded", Value::text(std::string("ab\0cd", 5)), "ab"},
        {"Long", Value::text(std::string(1025, 'x')), "d"},
        {"Fits", Value::text(std::string(fits, 'x')), std::string(fits, 'x')},
    };
    for (const auto& [name, value, read] : cases) {
        std::unique_ptr<registry::SettingsKey> k;
        ASSERT_EQ(registry::settingsStore().create(registry::Root::CurrentUser, site, k),
                  registry::Status::Ok);
        ASSERT_EQ(k->set(name, value), registry::Status::Ok);
    }
    for (const auto& [name, value, read] : cases)
        EXPECT_EQ(registry::LoadValue(HKCU, site, name, "d"), read) << name;
    EXPECT_EQ(registry::LoadValue(HKCU, site, "binary", "d"), ""); // value names ignore case
    EXPECT_EQ(registry::dwordText(""), "0");
    EXPECT_EQ(registry::dwordText("\x0a"), "10");
    EXPECT_EQ(registry::dwordText("\x02\x01"), "18"); // "1" then "2": no padding
    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(HKCU, site));
    EXPECT_EQ(r.TimeOut(), 10);
}

TEST_F(Settings, LoadDefaultsCopiesTheProfileButNotPortOrWindowing)
{
    HostScope scope;
    clsZEBReader r;
    auto p = r.Profiles()->Item("24"); // the host's changes count; the rest is the table's
    p->ReaderGrade(true);
    p->Barcode(true);
    p->Feeder(true);
    p->Rejecter(true);
    p->FlowControl(zebReaderFlowControlXonXoff);
    p->BaudRate(zebReaderBaudRate19200);
    p->Parity("E");
    p->StopBits(2);
    p->SleepTime(3);
    p->TimeOut(30);
    p->Windowing(true);
    r.Port(9);
    r.Duplex(true);
    ASSERT_TRUE(r.LoadDefaults(zebReaderTypePDIVMR138));
    EXPECT_EQ(settingsOf(r), "24|True|True|False|True|1|250|5|False|240|True|19200|8|E|9|2|3|30|False");

    // The imprinter through the model's rule.
    r.Profiles()->Item("2")->Printer(true);
    r.Profiles()->Item("1")->Printer(true);
    ASSERT_TRUE(r.LoadDefaults(zebReaderTypeNCSOpScan2));
    EXPECT_TRUE(r.Printer()->Enabled());
    ASSERT_TRUE(r.LoadDefaults(zebReaderTypeAppersonAdvantageLink));
    EXPECT_FALSE(r.Printer()->Enabled());

    // Without a profile: a report, nothing changed.
    r.Profiles()->Remove("5");
    EXPECT_FALSE(r.LoadDefaults(zebReaderTypeNCSOpScan5));
    EXPECT_FALSE(r.LoadDefaults(static_cast<zebReaderType>(99)));
    ASSERT_EQ(scope.host->reports.size(), 2u);
    EXPECT_EQ(scope.host->reports[0].number, 91);
    EXPECT_EQ(scope.host->reports[0].location, "clsZEBReader.LoadDefaults");
    EXPECT_EQ(r.BaudRate(), zebReaderBaudRate19200);
}

} // namespace
} // namespace zebreader81::test
