// The profile catalogue: order of addition, family filter, refills, collection semantics.
#include "zebreader81/zebreader81.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zebreader81::test {
namespace {

std::vector<int32_t> typesOf(const clsZEBReaderProfiles& c)
{
    std::vector<int32_t> out;
    for (int32_t i = 1; i <= c.Count(); ++i)
        out.push_back(c.Item(i)->ReaderType());
    return out;
}

TEST(ProfileCatalogue, NewCatalogueHoldsEveryModelInTheOrderOfAddition)
{
    clsZEBReaderProfiles c;
    EXPECT_EQ(c.ProfileType(), zebProfileTypeAll);
    ASSERT_EQ(c.Count(), 42);
    EXPECT_EQ(typesOf(c), (std::vector<int32_t>{0,  40, 1,  39, 18, 37, 35, 41, 22, 20, 21, 24, 16, 17,
                                                23, 2,  32, 3,  4,  31, 5,  25, 6,  26, 11, 12, 13, 14,
                                                15, 27, 28, 29, 19, 38, 7,  8,  9,  10, 36, 30, 33, 34}));
    // Keyed by the decimal text of the type: position and key find the same profile.
    for (int32_t i = 1; i <= c.Count(); ++i) {
        const auto p = c.Item(i);
        EXPECT_EQ(c.Item(std::to_string(p->ReaderType())), p);
    }
    EXPECT_EQ(c.Item("0"), c.Item(1));
}

TEST(ProfileCatalogue, FilterKeepsTypeNoneFirstAndTheFamiliesInTableOrder)
{
    clsZEBReaderProfiles c;
    c.ProfileType(zebProfileTypeNone);
    EXPECT_EQ(typesOf(c), (std::vector<int32_t>{0}));
    c.ProfileType(zebProfileTypePDI);
    EXPECT_EQ(typesOf(c), (std::vector<int32_t>{0, 24}));
    c.ProfileType(zebProfileTypeSekonic);
    EXPECT_EQ(typesOf(c), (std::vector<int32_t>{0, 19, 38, 7, 8, 9, 10, 36, 30, 33, 34}));
    // Families are added in their fixed order whatever the order of the bits.
    c.ProfileType(static_cast<zebProfileType>(zebProfileTypeSekonic | zebProfileTypeAP | zebProfileTypeCT));
    EXPECT_EQ(typesOf(c), (std::vector<int32_t>{0,  40, 1, 39, 18, 37, 35, 41, 22, 20, 21,
                                                19, 38, 7, 8,  9,  10, 36, 30, 33, 34}));
    // EZData is filtered with Scantron, the ACP-100 with Chatsworth.
    c.ProfileType(zebProfileTypeScantron);
    EXPECT_TRUE(c.Exists("23"));
    EXPECT_FALSE(c.Exists("37"));
}

TEST(ProfileCatalogue, SameMaskRefillsOnlyAnEmptiedCatalogue)
{
    clsZEBReaderProfiles c;
    c.Remove("24");
    c.ProfileType(zebProfileTypeAll);
    EXPECT_EQ(c.Count(), 41) << "same mask on a catalogue with profiles left: no refill";
    EXPECT_FALSE(c.Exists("24"));

    c.Item("2")->BaudRate(zebReaderBaudRate1200);
    c.ProfileType(zebProfileTypeAll);
    EXPECT_EQ(c.Item("2")->BaudRate(), zebReaderBaudRate1200) << "profiles are values kept until a refill";

    c.RemoveAll();
    EXPECT_EQ(c.ProfileType(), zebProfileTypeAll) << "RemoveAll keeps the mask";
    c.ProfileType(zebProfileTypeAll);
    EXPECT_EQ(c.Count(), 42);
    EXPECT_EQ(c.Item("2")->BaudRate(), zebReaderBaudRate38400);
}

TEST(ProfileCatalogue, UnknownIndexGivesNothingButRemoveRaises)
{
    clsZEBReaderProfiles c;
    EXPECT_EQ(c.Item("42"), nullptr);
    EXPECT_EQ(c.Item(0), nullptr);
    EXPECT_EQ(c.Item(43), nullptr);
    EXPECT_FALSE(c.Exists("42"));
    EXPECT_FALSE(c.Exists("02")) << "keys are plain decimal text";
    EXPECT_TRUE(c.Exists(42));

    EXPECT_THROW(c.Remove("42"), AutomationError);
    EXPECT_THROW(c.Remove(43), AutomationError);
    EXPECT_EQ(c.Count(), 42);
    c.Remove(1);
    EXPECT_FALSE(c.Exists("0"));
    EXPECT_EQ(c.Item(1)->ReaderType(), zebReaderTypeAppersonAdvantage1200);
}

TEST(ProfileTable, TypeNoneKeepsEveryInitialValue)
{
    clsZEBReaderProfiles c;
    const auto p = c.Item("0");
    const clsZEBReaderProfile fresh;
    EXPECT_EQ(p->ReaderName(), "None");
    EXPECT_EQ(p->InterfaceType(), fresh.InterfaceType());
    EXPECT_EQ(p->BaudRate(), zebReaderBaudRate9600);
    EXPECT_EQ(p->Parity(), "");
    EXPECT_EQ(p->DataBits(), 0);
    EXPECT_EQ(p->StopBits(), 0.0f);
    EXPECT_EQ(p->SleepTime(), 50);
    EXPECT_EQ(p->TimeOut(), 10);
    EXPECT_EQ(p->MaxCols(), 0);
    EXPECT_TRUE(p->PortEnabled());
    EXPECT_FALSE(p->ReaderGradeEnabled());
    EXPECT_TRUE(p->WindowingVisible());
}

TEST(ProfileTable, UsbModelsHaveNoSerialLine)
{
    clsZEBReaderProfiles c;
    for (const char* key : {"30", "33", "34", "36"}) {
        SCOPED_TRACE(key);
        const auto p = c.Item(key);
        ASSERT_NE(p, nullptr);
        EXPECT_FALSE(p->PortEnabled());
        EXPECT_TRUE(p->PortVisible());
        EXPECT_EQ(p->InterfaceType(), zebReaderInterfaceTypeUSB);
        EXPECT_EQ(p->Parity(), "");
        EXPECT_EQ(p->DataBits(), 0);
        EXPECT_EQ(p->StopBits(), 0.0f);
        EXPECT_FALSE(p->BaudRateEnabled());
        EXPECT_FALSE(p->ParityEnabled());
        EXPECT_EQ(p->MaxCols(), 48);
    }
    // The SR1800 alone has no duplex and no rejecter enabled.
    EXPECT_FALSE(c.Item("36")->Duplex());
    EXPECT_FALSE(c.Item("36")->RejecterEnabled());
    EXPECT_TRUE(c.Item("30")->Duplex());
    EXPECT_TRUE(c.Item("30")->RejecterEnabled());
}

// One row per column layout, with values chosen so that a shifted column shows.
struct Row {
    const char* key;
    const char* name;
    zebReaderBaudRate baud;
    const char* parity;
    int32_t data;
    float stop;
    int32_t flow;
    int16_t cutOff, discr, recThr, recMin, recMax, maxCols;
};

TEST(ProfileTable, ColumnsOfARowPerFamilyAndTheOddOnes)
{
    const Row rows[] = {
        {"1", "Apperson Advantage Link", zebReaderBaudRate19200, "N", 8, 1, 0, 20, 10, 15, 0, 31, 12},
        {"37", "Chatsworth Data ACP-100", zebReaderBaudRate9600, "E", 7, 1, 0, 4, 9, 8, 0, 9, 12},
        {"22", "Chatsworth Data ALS AccelScan OMR", zebReaderBaudRate9600, "E", 7, 1, 0, 1, 1, 1, 0, 0, 12},
        {"24", "Peripheral Dynamics Inc. VMR138", zebReaderBaudRate9600, "N", 8, 1, 0, 250, 5, 240, 192, 254,
         14},
        {"16", "Scantron 8000", zebReaderBaudRate9600, "N", 8, 2, 0, 65, 10, 35, 0, 99, 48},
        {"23", "Scantron EZData", zebReaderBaudRate9600, "E", 7, 1, 0, 4, 9, 4, 0, 9, 12},
        {"6", "Scantron OpScan 7", zebReaderBaudRate38400, "O", 7, 2, 2, 10, 3, 7, 0, 15, 48},
        {"11", "Scantron Scanmark 2000", zebReaderBaudRate19200, "N", 8, 2, 0, 10, 3, 7, 0, 15, 48},
        {"29", "Scantron Scanmark ES 2800", zebReaderBaudRate9600, "N", 8, 2, 0, 10, 3, 7, 0, 15, 48},
        {"38", "Sekonic SR-430", zebReaderBaudRate38400, "N", 7, 2, 2, 6, 3, 1, 1, 16, 12},
        {"8", "Sekonic SR-607", zebReaderBaudRate9600, "N", 7, 2, 2, 10, 2, 5, 0, 15, 48},
        {"33", "Sekonic SR3500 (USB)", zebReaderBaudRate9600, "", 0, 0, 0, 10, 2, 5, 0, 15, 48},
    };
    clsZEBReaderProfiles c;
    for (const auto& r : rows) {
        SCOPED_TRACE(r.key);
        const auto p = c.Item(r.key);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->ReaderName(), r.name);
        EXPECT_EQ(p->BaudRate(), r.baud);
        EXPECT_EQ(p->Parity(), r.parity);
        EXPECT_EQ(p->DataBits(), r.data);
        EXPECT_EQ(p->StopBits(), r.stop);
        EXPECT_EQ(p->FlowControl(), r.flow);
        EXPECT_EQ(p->MarkCutOff(), r.cutOff);
        EXPECT_EQ(p->MarkDiscrimination(), r.discr);
        EXPECT_EQ(p->RecognitionThreshold(), r.recThr);
        EXPECT_EQ(p->RecognitionThresholdMinimum(), r.recMin);
        EXPECT_EQ(p->RecognitionThresholdMaximum(), r.recMax);
        EXPECT_EQ(p->MaxCols(), r.maxCols);
        EXPECT_EQ(p->SleepTime(), 50);
        EXPECT_EQ(p->TimeOut(), 10);
    }
}

TEST(ProfileTable, OtherSettingsLandOnTheirOwnProperties)
{
    clsZEBReaderProfiles c;
    // Apperson Advantage 1200: value, Enabled and Visible of a triple set apart.
    auto p = c.Item("40");
    EXPECT_TRUE(p->Duplex());
    EXPECT_FALSE(p->DuplexEnabled());
    EXPECT_TRUE(p->DuplexVisible());
    EXPECT_TRUE(p->ReaderGradeEnabled());
    EXPECT_FALSE(p->ReaderGrade());
    EXPECT_FALSE(p->WindowingVisible());

    // EZData hides nearly everything but can be located and asked for firmware.
    p = c.Item("23");
    EXPECT_TRUE(p->LocateEnabled());
    EXPECT_TRUE(p->FirmwareEnabled());
    EXPECT_TRUE(p->Rejecter());
    EXPECT_FALSE(p->RejecterVisible());
    EXPECT_FALSE(p->SleepTimeEnabled());
    EXPECT_FALSE(p->TimeOutVisible());
    EXPECT_TRUE(p->RecognitionThresholdEnabled());
    EXPECT_TRUE(p->RecognitionThresholdVisible());
    EXPECT_FALSE(p->MarkDiscriminationVisible());
    EXPECT_TRUE(p->PortEnabled());

    // ACF-200 and ACP-200 differ only in FeederEnabled.
    EXPECT_TRUE(c.Item("35")->FeederEnabled());
    EXPECT_FALSE(c.Item("41")->FeederEnabled());
    EXPECT_FALSE(c.Item("41")->LocateEnabled());
    EXPECT_TRUE(c.Item("20")->LocateEnabled());

    // OpScan 7 and 8 have a rejecter that the user may not switch; OpScan 3 the reverse.
    EXPECT_TRUE(c.Item("6")->Rejecter());
    EXPECT_FALSE(c.Item("6")->RejecterEnabled());
    EXPECT_FALSE(c.Item("3")->Rejecter());
    EXPECT_TRUE(c.Item("3")->RejecterEnabled());

    // ScanMark: windowing on; the ES 2260 enables only its feeder.
    p = c.Item("28");
    EXPECT_TRUE(p->Windowing());
    EXPECT_TRUE(p->WindowingEnabled());
    EXPECT_TRUE(p->FeederEnabled());
    EXPECT_FALSE(p->DuplexEnabled());
    EXPECT_TRUE(p->PrinterEnabled());
    EXPECT_FALSE(p->Printer());
}

} // namespace
} // namespace zebreader81::test
