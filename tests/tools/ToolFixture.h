// Runs the built zebreader tool with a private settings store.
#pragma once

#include "tools/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace zebreader81::test {

class ZebreaderTool : public ::testing::Test {
protected:
    /// The tool with `args`; ZEBREADER_REGISTRY points into this test's folder.
    ToolRun tool(std::vector<std::string> args) const
    {
        ToolRun run;
        run.binary = ZEBREADER_TOOL;
        run.args = std::move(args);
        run.env["ZEBREADER_REGISTRY"] = dir.file("registry");
        return run;
    }
    ToolResult run(std::vector<std::string> args) const { return tool(std::move(args)).run(); }

    /// The json lines of stdout (a line that is not json fails the test).
    static std::vector<nlohmann::json> jsonLines(const std::string& text)
    {
        std::vector<nlohmann::json> out;
        for (const auto& line : ToolResult{0, text, {}}.outLines()) {
            auto j = nlohmann::json::parse(line, nullptr, false);
            EXPECT_FALSE(j.is_discarded()) << line;
            out.push_back(std::move(j));
        }
        return out;
    }

    TempDir dir;
};

} // namespace zebreader81::test
