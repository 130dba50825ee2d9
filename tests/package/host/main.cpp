// Runs one reading cycle through the installed public interface and checks that the
// failure of a model without a driver arrives, in order, through the host's error object.
#include <zebreader81/zebreader81.h>

#include <iostream>
#include <memory>
#include <vector>

using namespace zebreader81;

namespace {

class Errors : public ErrorHost {
public:
    bool Silent() const override { return silent_; }
    void Silent(bool value) override { silent_ = value; }
    int16_t RaiseError(int32_t& number, int32_t& kind, std::string& description, std::string& location,
                       std::string& title, std::string&, std::string&, std::string&, int32_t&, std::string&,
                       std::string&, std::string&, bool&) override
    {
        std::cout << "error " << number << " kind " << kind << " [" << title << "] " << location << ": "
                  << description << "\n";
        locations.push_back(location);
        return 0;
    }
    std::vector<std::string> locations;

private:
    bool silent_ = false;
};

class Events : public ReaderEvents {
public:
    void BeforeSheet(bool&) override { ++sheets; }
    int sheets = 0;
};

} // namespace

int main()
{
    clsZEBReader reader;
    auto errors = std::make_shared<Errors>();
    auto events = std::make_shared<Events>();
    reader.SetError(errors);
    reader.Advise(events);
    reader.ReaderType(zebReaderTypeSekonicSR2300);
    std::cout << "model: " << reader.ReaderName() << ", profiles: " << reader.Profiles()->Count() << "\n";

    int32_t count = 0;
    const bool result = reader.ReadBatch(false, 3, count);
    std::cout << "ReadBatch: " << result << ", sheets: " << count << ", CancelScan: " << reader.CancelScan()
              << "\n";
    const bool ok = !result && count == 0 && events->sheets == 0 && !errors->locations.empty() &&
                    errors->locations.front() == "basSekonicSR.InitReaderSR";
    std::cout << (ok ? "host: ok" : "host: FAILED") << "\n";
    return ok ? 0 : 1;
}
