// What every family's driver does alike, run on each family's rows (instantiated beside
// each family's own tests): a fault gives one report and leaves the scan cancelled, a sheet
// arrives mark for mark.
#include "support/SimulatedReader.h"

namespace zebreader81::test {
namespace {

using namespace std::chrono_literals;

TEST_P(FamilyFault, GivesOneReportAndNoSheet)
{
    const auto& c = GetParam();
    bool hung = false;
    SimulatedReader s(c.model);
    // Far beyond every time-out: a case still going then has hung; the hang-up ends it.
    s.peer().whenReceived(
        0, [&, p = &s.peer()] { hung = true, s.reader.CancelScan(true), p->hangUp(); }, 60s);
    if (c.arrange)
        c.arrange(s);
    if (c.step == Step::Start) {
        EXPECT_FALSE(s.reader.StartReader());
    } else {
        ASSERT_TRUE(s.reader.StartReader());
        if (c.started)
            c.started(s);
        if (c.during)
            s.atWait(c.after, [&] { c.during(s); });
        EXPECT_FALSE(c.step == Step::Read ? s.reader.ReadPage() : s.reader.EndReader());
    }
    if (c.step != Step::End) {
        EXPECT_TRUE(s.reader.CancelScan());
    }
    EXPECT_EQ(s.events->sheets, 0) << "the arrays are not handed over";
    if (c.location.empty()) {
        EXPECT_TRUE(s.quiet());
    } else {
        s.expectReport(c.kind, c.title, c.message, c.location);
    }
    const std::string wire = s.sent();
    if (c.wire.starts_with("...")) {
        EXPECT_TRUE(wire.ends_with(c.wire.substr(3))) << wire;
    } else if (!c.wire.empty()) {
        EXPECT_EQ(wire, c.wire);
    }
    if (c.check)
        c.check(s);
    EXPECT_FALSE(hung) << "the case hung";
    EXPECT_LT(s.elapsed(), 60s);
}

TEST_P(FamilyRead, DeliversTheSheetMarkForMark)
{
    const auto& c = GetParam();
    SimulatedReader s(c.model);
    if (c.arrange)
        c.arrange(s);
    s.load(c.sheet);
    ASSERT_TRUE(s.reader.StartReader());
    s.mark();
    ASSERT_TRUE(s.reader.ReadPage());
    EXPECT_TRUE(s.quiet());
    ASSERT_EQ(s.events->sheets, 1);
    EXPECT_EQ(s.events->side1[0], expectedSide(c.sheet, 1, c.rows1, c.cols1, c.mark));
    const auto side2 =
        c.rows2 > 0 ? expectedSide(c.sheet, 2, c.rows2, c.cols2, c.mark) : SafeArray<int16_t>();
    EXPECT_EQ(s.events->side2[0], side2);
    EXPECT_EQ(s.reader.Side1TimingMarks(), c.timingMarks);
    EXPECT_EQ(s.sent(), c.wire);
}

} // namespace
} // namespace zebreader81::test
