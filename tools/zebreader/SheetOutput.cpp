#include "SheetOutput.h"

#include "CommandLine.h"

#include <fstream>
#include <iostream>

namespace zebreader::cli {

namespace {

// A stream writer that owns the file it writes to.
class FileOutput : public SheetOutput {
public:
    FileOutput(const std::string& path, std::unique_ptr<SheetOutput> (*make)(std::ostream&))
        : file_(path, std::ios::binary | std::ios::trunc)
    {
        if (!file_)
            throw UsageError("--output: cannot write \"" + path + "\"");
        inner_ = make(file_);
    }
    void sheet(const SheetRecord& record) override { inner_->sheet(record); }
    void summary(const BatchSummary& summary) override
    {
        inner_->summary(summary);
        file_.flush();
    }

private:
    std::ofstream file_;
    std::unique_ptr<SheetOutput> inner_;
};

} // namespace

std::unique_ptr<SheetOutput> makeOutput(const std::string& format, const std::string& path)
{
    if (format == "svg")
        return makeSvgOutput(path == "-" ? "" : path);
    auto make = format == "json" ? makeJsonOutput : format == "csv" ? makeCsvOutput : makeGridOutput;
    if (path.empty() || path == "-")
        return make(std::cout);
    return std::make_unique<FileOutput>(path, make);
}

} // namespace zebreader::cli
