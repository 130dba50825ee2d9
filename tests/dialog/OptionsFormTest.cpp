// The settings dialog's logic: controls per model, lists, checks of typed values, and values
// between the reader and the form; the dialog hook of ShowOptions.
#include "dialog/OptionsForm.h"
#include "core/basError.h"
#include "sim/ezdata/EZDataSimulator.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

#include <tuple>

namespace zebreader81::test {
namespace {

using options::ControlState;
using options::Field;
using options::FormValues;

struct OptionsForm : ::testing::Test {
    HostScope errors;
    clsZEBReader reader;
    std::shared_ptr<clsZEBReaderProfiles> profiles = reader.Profiles();

    FormValues formFor(zebReaderType type)
    {
        reader.LoadDefaults(type);
        return options::valuesOf(reader);
    }
    // The texts of `fields`, in their order.
    static std::vector<std::string> texts(const FormValues& values, std::initializer_list<Field> fields)
    {
        std::vector<std::string> out;
        for (const auto field : fields)
            out.push_back(values[field]);
        return out;
    }
};

TEST_F(OptionsForm, ListsHoldTheCatalogueInItsOrderAndKeepAValueTheyDoNotOffer)
{
    FormValues values = formFor(zebReaderTypeNCSOpScan2);
    values[Field::BaudRate] = "4000";
    auto models = options::choices(Field::ReaderType, values, *profiles);
    ASSERT_EQ(models.size(), 42u);
    EXPECT_EQ(models[1].value, "40");
    EXPECT_EQ(models[1].label, "Apperson Advantage 1200");
    EXPECT_EQ(models[41].value, "34");
    EXPECT_EQ(options::choices(Field::BaudRate, values, *profiles).back().value, "4000");

    profiles->ProfileType(zebProfileTypePDI);
    models = options::choices(Field::ReaderType, values, *profiles);
    ASSERT_EQ(models.size(), 3u) << "0, 24, and the reader's own model that the filter left out";
    EXPECT_EQ(models[2].label, "Scantron OpScan 2");
}

TEST_F(OptionsForm, ControlsFollowTheModelsProfile)
{
    struct Case {
        const char* model;
        Field field;
        ControlState state;
    };
    const Case cases[] = {
        {"23", Field::BaudRate, {false, false}},
        {"30", Field::Port, {false, true}}, // USB
        {"23", Field::RecognitionThreshold, {true, true}},
        {"18", Field::RecognitionThreshold, {false, true}},
        {"2", Field::MarkCutOff, {true, true}}, // goes with the discrimination
        {"23", Field::MarkCutOff, {false, false}},
        {"2", Field::Windowing, {false, false}},
        {"14", Field::Windowing, {true, true}},
        {"2", Field::Rejecter, {false, true}},
        {"23", Field::Locate, {true, true}},
        {"35", Field::Locate, {false, false}},
        {"35", Field::Firmware, {true, true}},
    };
    for (const auto& c : cases) {
        FormValues values;
        values[Field::ReaderType] = c.model;
        const auto profile = options::profileOf(values, *profiles);
        EXPECT_EQ(options::controlState(profile.get(), c.field), c.state)
            << "model " << c.model << ", field " << static_cast<int>(c.field);
    }
    EXPECT_EQ(options::controlState(nullptr, Field::BaudRate), (ControlState{false, true}));
    EXPECT_EQ(options::controlState(nullptr, Field::ReaderType), (ControlState{true, true}));

    profiles->Item("2")->BaudRateEnabled(false); // a host may change a profile
    EXPECT_FALSE(options::controlState(profiles->Item("2").get(), Field::BaudRate).enabled);
}

TEST_F(OptionsForm, ChangingModelFixesWhatTheNewModelDoesNotLetTheUserChange)
{
    FormValues values = formFor(zebReaderTypeNCSOpScan2);
    values[Field::Port] = "5";
    values[Field::TimeOut] = "30";
    values[Field::RecognitionThreshold] = "12";
    values.check(Field::Duplex, true);

    options::changeModel(values, *profiles, zebReaderTypeNCSEZData);
    // The threshold stays: the user may change it.
    EXPECT_EQ(texts(values, {Field::ReaderType, Field::BaudRate, Field::Parity, Field::StopBits,
                             Field::TimeOut, Field::RecognitionThreshold, Field::Port}),
              (std::vector<std::string>{"23", "9600", "E", "1", "10", "12", "5"}));
    EXPECT_FALSE(values.checked(Field::Duplex));

    options::changeModel(values, *profiles, zebReaderTypeSekonicSR2300);
    // A profile has no port.
    EXPECT_EQ(texts(values, {Field::Port, Field::Parity, Field::DataBits}),
              (std::vector<std::string>{"5", "", "0"}));
    EXPECT_FALSE(options::validate(values, *profiles)) << "a USB model's empty line settings are its own";
}

TEST_F(OptionsForm, TypedValuesAreCheckedAgainstTheirRange)
{
    struct Case {
        zebReaderType model;
        Field field;
        const char* text;
        const char* refusal; // nullptr: accepted
    };
    const char* opScanThreshold = "The recognition threshold of the Scantron OpScan 2 must be a whole number "
                                  "from 0 to 15.";
    const Case cases[] = {
        {zebReaderTypeNCSOpScan2, Field::RecognitionThreshold, "15", nullptr},
        {zebReaderTypeNCSOpScan2, Field::RecognitionThreshold, "16", opScanThreshold},
        {zebReaderTypeNCSOpScan2, Field::RecognitionThreshold, "7x", opScanThreshold},
        {zebReaderTypePDIVMR138, Field::RecognitionThreshold, "191",
         "The recognition threshold of the Peripheral Dynamics Inc. VMR138 must be a whole number from 192 "
         "to 254."},
        {zebReaderTypeAppersonGradeMaster, Field::RecognitionThreshold, "99", nullptr}, // not the user's
        {zebReaderTypeAppersonGradeMaster, Field::RecognitionThreshold, "99999",
         "The recognition threshold of the Apperson GradeMaster must be a whole number."},
        {zebReaderTypeNCSOpScan2, Field::TimeOut, "601",
         "The time-out must be a whole number of seconds from 1 to 600."},
        {zebReaderTypeNCSEZData, Field::TimeOut, "0", nullptr},
        {zebReaderTypeNCSOpScan2, Field::SleepTime, "-5",
         "The sleep time must be a whole number of milliseconds from 0 to 60000."},
        {zebReaderTypeNCSOpScan2, Field::MarkCutOff, "40000",
         "The mark cut-off must be a whole number from 0 to 32767."},
        {zebReaderTypeNCSOpScan2, Field::Port, "0", "Choose the port from the list."},
        {zebReaderTypeSekonicSR2300, Field::Port, "0", nullptr},
    };
    for (const auto& c : cases) {
        FormValues values = formFor(c.model);
        values[c.field] = c.text;
        const auto refusal = options::validate(values, *profiles);
        if (!c.refusal) {
            EXPECT_FALSE(refusal) << c.text << ": " << refusal->message;
            continue;
        }
        ASSERT_TRUE(refusal) << c.text;
        EXPECT_EQ(refusal->field, c.field);
        EXPECT_EQ(refusal->message, c.refusal);
    }
}

TEST_F(OptionsForm, DefaultsComeFromLoadDefaultsAndLeaveTheReaderAlone)
{
    FormValues values = formFor(zebReaderTypeNCSOpScan2);
    values[Field::ReaderType] = "23";
    values[Field::Port] = "7";
    values[Field::TimeOut] = "not a number";
    values.check(Field::Windowing, true);
    profiles->Item("23")->RecognitionThreshold(6);

    const FormValues defaults = options::withDefaults(values, *profiles);
    // The threshold is the host's profile's.
    EXPECT_EQ(texts(defaults, {Field::ReaderType, Field::Port, Field::TimeOut, Field::Parity,
                               Field::RecognitionThreshold}),
              (std::vector<std::string>{"23", "7", "10", "E", "6"}));
    EXPECT_TRUE(defaults.checked(Field::Windowing));
    EXPECT_EQ(reader.ReaderType(), zebReaderTypeNCSOpScan2);
}

TEST_F(OptionsForm, LocateAndFirmwareAskTheScannerOnAScratchReader)
{
    sim::EZDataSimulator scanner;
    scanner.setFirmware("EZData 2.04");
    sim::mapPort(4, scanner.path());
    FormValues values = formFor(zebReaderTypeNCSEZData);
    values[Field::Port] = "4";
    values[Field::TimeOut] = "1";

    const auto found = options::locate(values, *profiles);
    EXPECT_EQ(std::tie(found.succeeded, found.message, found.values[Field::Port]),
              std::tuple(true, "The Scantron EZData answered on COM4.", "4"));
    const auto firmware = options::firmware(values, *profiles);
    EXPECT_EQ(std::tie(firmware.succeeded, firmware.message),
              std::tuple(true, "Firmware of the Scantron EZData on COM4: EZData 2.04"));
    values[Field::ReaderType] = "2";
    const auto refused = options::firmware(values, *profiles);
    EXPECT_EQ(std::tie(refused.succeeded, refused.message),
              std::tuple(false, "The Scantron OpScan 2 on COM4 did not report its firmware."));
    EXPECT_EQ(reader.Port(), 1) << "the reader is not touched";
    EXPECT_TRUE(errors.host->reports.empty());
}

TEST(ShowOptions, TheInstalledDialogGetsTheReaderAndItsOwnerAndItsAnswerIsReturned)
{
    HostScope errors;
    clsZEBReader reader;
    EXPECT_FALSE(reader.ShowOptions()); // no dialog installed
    EXPECT_EQ(errors.host->only().description, "No settings dialog is available on this platform.");
    EXPECT_EQ(errors.host->only().location, "clsZEBReader.ShowOptions");
    int owner = 0;
    bool answer = true;
    SetOptionsDialogHook([&](clsZEBReader& shown, void* parent) {
        EXPECT_EQ(&shown, &reader);
        EXPECT_EQ(parent, &owner);
        return answer;
    });
    EXPECT_TRUE(reader.ShowOptions(&owner));
    answer = false;
    EXPECT_FALSE(reader.ShowOptions(&owner));

    SetOptionsDialogHook([](clsZEBReader&, void*) -> bool { throw RuntimeError(7, "Out of memory"); });
    EXPECT_FALSE(reader.ShowOptions());
    SetOptionsDialogHook(nullptr);
    ASSERT_EQ(errors.host->reports.size(), 2u);
    EXPECT_EQ(errors.host->reports[1].number, 7);
}

} // namespace
} // namespace zebreader81::test
