// The profile catalogue: order of addition, family filter, refills, collection semantics. The
// rows themselves are data; the dialog and settings tests read the ones they need.
#include "zebreader81/zebreader81.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zebreader81::test {
namespace {

TEST(ProfileCatalogue, SameMaskRefillsOnlyAnEmptiedCatalogueAndAnUnknownIndexGivesNothing)
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

    // An unknown index gives nothing, but Remove raises.
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
