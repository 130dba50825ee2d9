#include "core/basError.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>
#include <thread>
#include <tuple>

namespace zebreader81::test {
namespace {

using namespace std::string_literals;

TEST(ReportError, WithoutAHostAMessageBoxShowsTheTextWithoutTheComponentNameAndWithTheLine)
{
    struct {
        std::string text, title;
        int32_t style = 0;
    } box;
    SetMessageBoxHook([&](const std::string& text, const std::string& title, int32_t style) {
        box = {text, title, style};
    });
    clsZEBReader reader;
    EXPECT_TRUE(reader.SetError(std::make_shared<RecordingHost>()));
    EXPECT_FALSE(reader.SetError(nullptr)); // Nothing brings the message box back
    basError::ReportError(0, 5, 0, "Invalid procedure call or argument",
                          "ZEBReader81 - clsZEBReader.ReadPage", "ignored title");
    EXPECT_EQ(box.text, "Error# 5: Invalid procedure call or argument, Location: clsZEBReader.ReadPage");
    EXPECT_EQ(box.title, "Application Error");
    EXPECT_EQ(box.style, 48);
    basError::ReportError(12, 9, 0, "Subscript out of range", "ZEBReader81 - basNCS.ReadPageNCS");
    EXPECT_EQ(box.text, "Error# 9: Subscript out of range, Location: basNCS.ReadPageNCS; Line: 12");
    SetMessageBoxHook(nullptr);
}

TEST(ReportError, ForwardsToTheHostAndRestoresSilentEvenWhenTheHostThrows)
{
    HostScope scope;
    scope.host->answer = 7;
    EXPECT_EQ(basError::ReportError(0, 8002, 2, "msg", "ZEBReader81 - basRead.ReaderInit",
                                    "Invalid Port Number", true),
              7);
    const auto& r = scope.host->only();
    EXPECT_EQ(std::tie(r.number, r.kind, r.location, r.title, r.silentDuringCall),
              std::tuple(8002, 2, "basRead.ReaderInit"s, "Invalid Port Number"s, true));
    EXPECT_FALSE(scope.host->silent) << "Silent passed for one report must not stay";

    // A host that throws never reaches the caller.
    struct Throwing : RecordingHost {
        int16_t RaiseError(int32_t&, int32_t&, std::string&, std::string&, std::string&, std::string&,
                           std::string&, std::string&, int32_t&, std::string&, std::string&, std::string&,
                           bool&) override
        {
            throw std::runtime_error("host failure");
        }
    };
    auto host = std::make_shared<Throwing>();
    clsZEBReader().SetError(host);
    EXPECT_EQ(basError::ReportError(0, 1, 0, "d", "l", "", true), 0);
    EXPECT_FALSE(host->silent);
}

TEST(ReportError, EachThreadKeepsItsOwnErrorObject)
{
    HostScope mine;
    auto other = std::make_shared<RecordingHost>();
    std::thread t([&] {
        clsZEBReader reader;
        reader.SetError(other);
        basError::ReportDevice("from the other thread", "ZEBReader81 - x.y", "T");
        reader.SetError(nullptr);
    });
    t.join();
    basError::ReportDevice("from this thread", "ZEBReader81 - x.y", "T");
    ASSERT_EQ(other->reports.size(), 1u);
    EXPECT_EQ(other->reports[0].description, "from the other thread");
    EXPECT_EQ(mine.host->only().description, "from this thread");
}

TEST(ReportError, TrappedExceptionsBecomeRunTimeErrors)
{
    HostScope scope;
    EXPECT_FALSE(trap("ZEBReader81 - m.p", false, []() -> bool { throw std::out_of_range("x"); }));
    EXPECT_EQ(trap("ZEBReader81 - m.q", int16_t{-1}, []() -> int16_t { err::raise(err::Overflow); }), -1);
    const auto& r = scope.host->reports;
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(std::tie(r[0].number, r[0].description, r[1].number, r[1].kind),
              std::tuple(9, "Subscript out of range"s, 6, 0));
}

} // namespace
} // namespace zebreader81::test
