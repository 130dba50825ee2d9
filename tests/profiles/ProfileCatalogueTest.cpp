// The profile catalogue: order of addition, family filter, refills, collection semantics. The
// rows themselves are data; the dialog and settings tests read the ones they need.
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

} // namespace
} // namespace zebreader81::test
