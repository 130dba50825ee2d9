// The reader's settings: defaults from the profile, load and save through the store.
#include "StoreFixture.h"
#include "registry/SettingsStore.h"
#include "registry/SettingsValues.h"
#include "support/TestHost.h"

#include <clocale>

namespace zebreader81::test {
namespace {

constexpr auto HKCU = zebReaderRegistryKeyCurrentUser;
const std::string site = "Software\\Site\\Scanner";

using Settings = StoreFixture;

void putValue(const std::string& name, const registry::Value& v, const std::string& key = site)
{
    std::unique_ptr<registry::SettingsKey> k;
    ASSERT_EQ(registry::settingsStore().create(registry::Root::CurrentUser, key, k), registry::Status::Ok);
    ASSERT_EQ(k->set(name, v), registry::Status::Ok);
}

TEST_F(Settings, MissingSubKeyGivesEveryDefault)
{
    HostScope scope;
    clsZEBReader r;
    r.ReaderType(zebReaderTypeNCSOpScan3);
    r.BaudRate(zebReaderBaudRate38400);
    r.DataBits(zebReaderDataBits8);
    r.Parity("O");
    r.Port(4);
    r.StopBits(2);
    r.SleepTime(5);
    r.TimeOut(1);
    r.MarkCutOff(9);
    r.Duplex(true);
    r.Windowing(true);
    r.Rejecter(true);
    r.Printer()->Enabled(true);

    ASSERT_TRUE(r.LoadSettings(HKCU, "Software\\Nowhere"));
    EXPECT_EQ(r.ReaderType(), zebReaderTypeNone);
    EXPECT_EQ(r.BaudRate(), 9600);
    EXPECT_EQ(r.DataBits(), 7);
    EXPECT_EQ(r.Parity(), "N");
    EXPECT_EQ(r.Port(), 1);
    EXPECT_EQ(r.StopBits(), 1.0f);
    EXPECT_EQ(r.SleepTime(), 50);
    EXPECT_EQ(r.TimeOut(), 10);
    EXPECT_EQ(r.MarkCutOff(), 0);
    EXPECT_EQ(r.FlowControl(), zebReaderFlowControlNone);
    EXPECT_FALSE(r.Duplex() || r.Windowing() || r.Rejecter() || r.Barcode() || r.Feeder() || r.ReaderGrade());
    EXPECT_TRUE(scope.host->reports.empty());
    EXPECT_FALSE(anythingWritten()); // reading creates nothing
}

TEST_F(Settings, SaveThenLoadRoundTripsEveryValue)
{
    clsZEBReader a;
    a.ReaderType(zebReaderTypeNCSOpScan3);
    a.ReaderGrade(true);
    a.Barcode(true);
    a.Duplex(false);
    a.Feeder(true);
    a.FlowControl(zebReaderFlowControlHardware);
    a.MarkCutOff(-12);
    a.MarkDiscrimination(3);
    a.Printer()->Enabled(true);
    a.RecognitionThreshold(7);
    a.Rejecter(true);
    a.BaudRate(zebReaderBaudRate38400);
    a.DataBits(zebReaderDataBits8);
    a.Parity("O");
    a.Port(16);
    a.StopBits(1.5f);
    a.SleepTime(2);
    a.TimeOut(600);
    a.Windowing(true);
    ASSERT_TRUE(a.SaveSettings(HKCU, site));

    EXPECT_EQ(registry::LoadValue(HKCU, site, "ScannerStopBits", "?"), "1.5");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Reject", "?"), "True");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Duplex", "?"), "False");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "MarkCutOff", "?"), "-12");

    clsZEBReader b;
    ASSERT_TRUE(b.LoadSettings(HKCU, "SOFTWARE\\site\\SCANNER")); // key paths ignore case
    EXPECT_EQ(b.ReaderType(), zebReaderTypeNCSOpScan3);
    EXPECT_TRUE(b.ReaderGrade());
    EXPECT_TRUE(b.Barcode());
    EXPECT_FALSE(b.Duplex());
    EXPECT_TRUE(b.Feeder());
    EXPECT_EQ(b.FlowControl(), zebReaderFlowControlHardware);
    EXPECT_EQ(b.MarkCutOff(), -12);
    EXPECT_EQ(b.MarkDiscrimination(), 3);
    EXPECT_TRUE(b.Printer()->Enabled());
    EXPECT_EQ(b.RecognitionThreshold(), 7);
    EXPECT_TRUE(b.Rejecter());
    EXPECT_EQ(b.BaudRate(), zebReaderBaudRate38400);
    EXPECT_EQ(b.DataBits(), zebReaderDataBits8);
    EXPECT_EQ(b.Parity(), "O");
    EXPECT_EQ(b.Port(), 16);
    EXPECT_EQ(b.StopBits(), 1.5f);
    EXPECT_EQ(b.SleepTime(), 2);
    EXPECT_EQ(b.TimeOut(), 600);
    EXPECT_TRUE(b.Windowing());

#ifndef _WIN32
    // The file is the registry editor's format, readable as text.
    const std::string text = readFile(fileOf(registry::Root::CurrentUser));
    EXPECT_EQ(text.rfind("Windows Registry Editor Version 5.00\n", 0), 0u);
    EXPECT_NE(text.find("[HKEY_CURRENT_USER\\Software\\Site\\Scanner]\n"), std::string::npos);
    EXPECT_NE(text.find("\"ScannerBaud\"=\"38400\"\n"), std::string::npos);
#endif
}

TEST_F(Settings, EmptyParityIsStoredAsOneBlankAndReadBackSo)
{
    clsZEBReader a;
    a.Parity("");
    ASSERT_TRUE(a.SaveSettings(HKCU, site));
    EXPECT_EQ(registry::LoadValue(HKCU, site, "ScannerParity", "N"), " ");
    clsZEBReader b;
    ASSERT_TRUE(b.LoadSettings(HKCU, site));
    EXPECT_EQ(b.Parity(), " ");
}

TEST_F(Settings, BadBooleanStopsLoadingWithTypeMismatchKeepingEarlierValues)
{
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerType", "2"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ReaderGrade", "true"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "Barcode", "Yes"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "Duplex", "True"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerBaud", "38400"));

    HostScope scope;
    clsZEBReader r;
    r.BaudRate(zebReaderBaudRate1200);
    EXPECT_FALSE(r.LoadSettings(HKCU, site));
    const Report& rep = scope.host->only();
    EXPECT_EQ(rep.number, 13);
    EXPECT_EQ(rep.kind, 0);
    EXPECT_EQ(rep.description, "Type mismatch");
    EXPECT_EQ(rep.location, "clsZEBReader.LoadSettings");
    EXPECT_EQ(r.ReaderType(), zebReaderTypeNCSOpScan2);
    EXPECT_TRUE(r.ReaderGrade());
    EXPECT_FALSE(r.Duplex());                       // after the bad value: not loaded
    EXPECT_EQ(r.BaudRate(), zebReaderBaudRate1200); // nor this
}

TEST_F(Settings, BooleanTextsAreTrueFalseOrNumbers)
{
    HostScope scope;
    const std::pair<const char*, bool> accepted[] = {{"TRUE", true}, {"false", false}, {"-1", true},
                                                     {"0", false},   {" 2.5 ", true},  {"0.0", false}};
    for (const auto& [text, expected] : accepted) {
        ASSERT_TRUE(registry::SaveValue(HKCU, site, "Windowing", text));
        clsZEBReader r;
        r.Windowing(!expected);
        EXPECT_TRUE(r.LoadSettings(HKCU, site)) << text;
        EXPECT_EQ(r.Windowing(), expected) << text;
    }
    for (const char* text : {"Yes", "1x", ""}) {
        ASSERT_TRUE(registry::SaveValue(HKCU, site, "Windowing", text)); // "" is stored as " "
        clsZEBReader r;
        EXPECT_FALSE(r.LoadSettings(HKCU, site)) << text;
    }
    EXPECT_EQ(scope.host->reports.size(), 3u);
}

TEST_F(Settings, NumbersAreReadLeniently)
{
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "MarkCutOff", "12abc"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "MarkDiscrimination", "abc"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerPort", "  +3"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerStopBits", "1.5 bits"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "TimeOut", "2.5")); // rounds half to even
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "SleepTime", "1e1"));
    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(HKCU, site));
    EXPECT_EQ(r.MarkCutOff(), 12);
    EXPECT_EQ(r.MarkDiscrimination(), 0);
    EXPECT_EQ(r.Port(), 3);
    EXPECT_EQ(r.StopBits(), 1.5f);
    EXPECT_EQ(r.TimeOut(), 2);
    EXPECT_EQ(r.SleepTime(), 10);
}

TEST_F(Settings, NumbersSkipInnerBlanksAndReadRadixLiterals)
{
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerBaud", "19 200"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "MarkCutOff", "&H1F"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "MarkDiscrimination", "&HFFFF")); // a 16-bit -1
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "RecognitionThreshold", "&o17"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "SleepTime", "2D1"));
    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(HKCU, site));
    EXPECT_EQ(r.BaudRate(), 19200);
    EXPECT_EQ(r.MarkCutOff(), 31);
    EXPECT_EQ(r.MarkDiscrimination(), -1);
    EXPECT_EQ(r.RecognitionThreshold(), 15);
    EXPECT_EQ(r.SleepTime(), 20);
}

TEST_F(Settings, NumbersIgnoreTheHostsLocale)
{
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    const std::string kept = previous ? previous : "C";
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma installed";
    clsZEBReader a;
    a.StopBits(1.5f);
    ASSERT_TRUE(a.SaveSettings(HKCU, site));
    clsZEBReader b;
    const bool loaded = b.LoadSettings(HKCU, site);
    const std::string stored = registry::LoadValue(HKCU, site, "ScannerStopBits", "?");
    std::setlocale(LC_NUMERIC, kept.c_str());
    ASSERT_TRUE(loaded);
    EXPECT_EQ(stored, "1.5");
    EXPECT_EQ(b.StopBits(), 1.5f);
}

TEST_F(Settings, NumberTooLargeForItsPropertyIsAnOverflow)
{
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "FlowControl", "2"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "MarkCutOff", "40000"));
    HostScope scope;
    clsZEBReader r;
    r.MarkCutOff(5);
    EXPECT_FALSE(r.LoadSettings(HKCU, site));
    EXPECT_EQ(scope.host->only().number, 6);
    EXPECT_EQ(r.FlowControl(), zebReaderFlowControlHardware);
    EXPECT_EQ(r.MarkCutOff(), 5);
}

TEST_F(Settings, PrinterFollowsTheLoadedScannerTypesRule)
{
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerType", "1"));
    ASSERT_TRUE(registry::SaveValue(HKCU, site, "Printer", "True"));
    clsZEBReader r;
    r.ReaderType(zebReaderTypeNCSOpScan2); // a model with an imprinter before loading
    ASSERT_TRUE(r.LoadSettings(HKCU, site));
    EXPECT_FALSE(r.Printer()->Enabled());

    ASSERT_TRUE(registry::SaveValue(HKCU, site, "ScannerType", "2"));
    ASSERT_TRUE(r.LoadSettings(HKCU, site));
    EXPECT_TRUE(r.Printer()->Enabled());
}

TEST_F(Settings, DwordIsReadAsItsDecimalText)
{
    putValue("TimeOut", registry::Value::dword(0x0000000a));
    putValue("Big", registry::Value::dword(0x12345678));
    putValue("Word", registry::Value::dword(0x0000ffff));
    EXPECT_EQ(registry::LoadValue(HKCU, site, "TimeOut", "?"), "10");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Big", "?"), "305419896");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Word", "?"), "-1"); // four digits read as an Integer
    clsZEBReader r;
    ASSERT_TRUE(r.LoadSettings(HKCU, site));
    EXPECT_EQ(r.TimeOut(), 10);
}

TEST_F(Settings, DwordBytesAreCutAtTheFirstZeroAndNotPadded)
{
    EXPECT_EQ(registry::dwordText(""), "0");
    EXPECT_EQ(registry::dwordText("\x0a"), "10");
    EXPECT_EQ(registry::dwordText("\x02\x01"), "18"); // "1" then "2": no padding
    putValue("Hundred", registry::Value::dword(0x100));
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Hundred", "?"), "0");
}

TEST_F(Settings, OtherTypesGiveAnEmptyTextAndOversizedValuesTheDefault)
{
    putValue("Binary", registry::Value{registry::REG_BINARY, {'4', '2'}});
    putValue("None", registry::Value{registry::REG_NONE, {}});
    putValue("Expand", registry::Value::text("%HOME%", registry::REG_EXPAND_SZ));
    putValue("Embedded", registry::Value::text(std::string("ab\0cd", 5)));
    putValue("Long", registry::Value::text(std::string(1025, 'x')));
    putValue("Fits", registry::Value::text(std::string(1024, 'x')));
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Binary", "d"), "");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "None", "d"), "");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Expand", "d"), "%HOME%");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Embedded", "d"), "ab");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Long", "d"), "d");
    EXPECT_EQ(registry::LoadValue(HKCU, site, "Fits", "d").size(), 1024u);
    EXPECT_EQ(registry::LoadValue(HKCU, site, "binary", "d"), ""); // value names ignore case
}

TEST_F(Settings, UnknownRootReadsDefaultsAndWritesNothing)
{
    const auto bogus = static_cast<zebReaderRegistryKey>(7);
    EXPECT_EQ(registry::LoadValue(bogus, site, "TimeOut", "10"), "10");
    EXPECT_FALSE(registry::SaveValue(bogus, site, "TimeOut", "3"));
    clsZEBReader r;
    EXPECT_TRUE(r.SaveSettings(bogus, site)); // SaveSettings ignores the helpers' results
    EXPECT_FALSE(anythingWritten());
}

TEST_F(Settings, LoadDefaultsCopiesTheProfileButNotPortOrWindowing)
{
    clsZEBReader r;
    auto p = r.Profiles()->Item("24");
    ASSERT_NE(p, nullptr);
    p->ReaderGrade(true);
    p->Barcode(true);
    p->Feeder(true);
    p->Rejecter(true);
    p->FlowControl(zebReaderFlowControlXonXoff);
    p->MarkCutOff(250);
    p->MarkDiscrimination(5);
    p->RecognitionThreshold(240);
    p->BaudRate(zebReaderBaudRate19200);
    p->DataBits(zebReaderDataBits8);
    p->Parity("E");
    p->StopBits(2);
    p->SleepTime(3);
    p->TimeOut(30);
    p->Windowing(true);
    r.Port(9);
    r.Duplex(true);

    ASSERT_TRUE(r.LoadDefaults(zebReaderTypePDIVMR138));
    EXPECT_EQ(r.ReaderType(), zebReaderTypePDIVMR138);
    EXPECT_TRUE(r.ReaderGrade() && r.Barcode() && r.Feeder() && r.Rejecter());
    EXPECT_FALSE(r.Duplex());
    EXPECT_EQ(r.FlowControl(), zebReaderFlowControlXonXoff);
    EXPECT_EQ(r.MarkCutOff(), 250);
    EXPECT_EQ(r.MarkDiscrimination(), 5);
    EXPECT_EQ(r.RecognitionThreshold(), 240);
    EXPECT_EQ(r.BaudRate(), zebReaderBaudRate19200);
    EXPECT_EQ(r.DataBits(), zebReaderDataBits8);
    EXPECT_EQ(r.Parity(), "E");
    EXPECT_EQ(r.StopBits(), 2.0f);
    EXPECT_EQ(r.SleepTime(), 3);
    EXPECT_EQ(r.TimeOut(), 30);
    EXPECT_EQ(r.Port(), 9);
    EXPECT_FALSE(r.Windowing());
}

TEST_F(Settings, LoadDefaultsCopiesPrinterThroughTheImprinterRule)
{
    clsZEBReader r;
    r.Profiles()->Item("2")->Printer(true);
    r.Profiles()->Item("1")->Printer(true);
    ASSERT_TRUE(r.LoadDefaults(zebReaderTypeNCSOpScan2));
    EXPECT_TRUE(r.Printer()->Enabled());
    ASSERT_TRUE(r.LoadDefaults(zebReaderTypeAppersonAdvantageLink));
    EXPECT_FALSE(r.Printer()->Enabled());
}

TEST_F(Settings, LoadDefaultsWithoutAProfileFailsWithAReport)
{
    HostScope scope;
    clsZEBReader r;
    r.Profiles()->Remove("5");
    r.BaudRate(zebReaderBaudRate1200);
    EXPECT_FALSE(r.LoadDefaults(zebReaderTypeNCSOpScan5));
    EXPECT_FALSE(r.LoadDefaults(static_cast<zebReaderType>(99)));
    ASSERT_EQ(scope.host->reports.size(), 2u);
    EXPECT_EQ(scope.host->reports[0].number, 91);
    EXPECT_EQ(scope.host->reports[0].location, "clsZEBReader.LoadDefaults");
    EXPECT_EQ(r.BaudRate(), zebReaderBaudRate1200);
}

} // namespace
} // namespace zebreader81::test
