// Imprinter rules, collections and form geometry of the object model.
#include "drivers/ReaderAccess.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace zebreader81::test {
namespace {

TEST(Imprinter, EnabledIsForcedOrIgnoredByModelAndActiveFollowsIt)
{
    clsZEBReaderPrinter p;
    // One imprinter retyped in turn: model, value assigned, value read back.
    for (auto [type, assigned, read] : {std::tuple{1, true, false},
                                        {2, true, true},
                                        {24, false, true}, // no rule
                                        {37, true, false},
                                        {3, true, true}}) {
        p.SetType(type);
        p.Enabled(assigned);
        p.Active(true);
        EXPECT_EQ(p.Enabled(), read) << type;
        EXPECT_EQ(p.Active(), read) << type;
    }
    p.Enabled(false);
    EXPECT_FALSE(p.Active());
}

TEST(Imprinter, OneModelPerKindOfImprinter)
{
    struct Row {
        int32_t type, distance, buffers, filled, min, max, chars;
    };
    // A three-line imprinter, a one-line one, none. Buffers 2 and 3 are filled, and 1 once typed.
    for (Row r : {Row{7, 245, 3, 3, 10, 245, 41}, Row{2, 0, 1, 1, 0, 24, 24}, Row{24, 0, 0, 0, 0, 0, 0}}) {
        clsZEBReaderPrinter p;
        p.Distance(3);
        p.Buffer2("b");
        p.Buffer3("c");
        p.SetType(r.type);
        EXPECT_EQ(p.Distance(), r.distance) << r.type;
        EXPECT_EQ(p.BufferCount(), r.buffers) << r.type;
        EXPECT_EQ(p.FilledBufferCount(), r.filled - (r.filled > 0)) << r.type;
        p.Buffer1("a");
        EXPECT_EQ(p.FilledBufferCount(), r.filled) << r.type;
        EXPECT_EQ(p.MaxPosition(), -1) << "disabled: " << r.type;
        if (r.buffers == 0)
            continue;
        p.Enabled(true);
        EXPECT_EQ(p.MinPosition(), r.min) << r.type;
        EXPECT_EQ(p.MaxPosition(), r.max) << r.type;
        EXPECT_EQ(p.MaxCharacters(), r.chars) << r.type;
    }
}

TEST(Collections, WindowsArePositionedBarcodesKeyedIgnoringCaseAndMissingItemsAreNothing)
{
    HostScope scope;
    clsZEBReaderWindows w;
    auto a = std::make_shared<clsZEBReaderWindow>(), b = std::make_shared<clsZEBReaderWindow>(),
         c = std::make_shared<clsZEBReaderWindow>();
    w.Add(a);
    w.Add(b, 1);
    w.Add(c, std::nullopt, 1);
    EXPECT_EQ(w.Count(), 3);
    EXPECT_EQ(w.Item(1), b);
    EXPECT_EQ(w.Item(2), c);
    EXPECT_EQ(w.Item(3), a);
    EXPECT_EQ(w.Item(4), nullptr);
    EXPECT_FALSE(w.Exists(0));
    w.Remove(2);
    EXPECT_EQ(w.Item(2), a);
    w.Remove(3); // reported, not thrown
    EXPECT_EQ(scope.host->only().number, 9);
    EXPECT_EQ(scope.host->only().location, "clsZEBReaderWindows.Remove");

    // Barcodes by key, ignoring case.
    scope.host->reports.clear();
    clsZEBReaderBarcodes codes;
    auto id = std::make_shared<clsZEBReaderBarcode>();
    codes.Add(id, "StudentId");
    codes.Add(std::make_shared<clsZEBReaderBarcode>(), std::nullopt, CollectionIndex("studentid"));
    EXPECT_EQ(codes.Item("STUDENTID"), id);
    EXPECT_EQ(codes.Item(2), id);
    EXPECT_FALSE(codes.Exists("nothing"));
    codes.Add(std::make_shared<clsZEBReaderBarcode>(), "studentID");
    EXPECT_EQ(scope.host->only().number, 457);
    EXPECT_EQ(codes.Count(), 2);
}

} // namespace
} // namespace zebreader81::test
