// Finding the scanner's port and asking it for its firmware.
#include "core/basError.h"
#include "drivers/ezdata/EZDataProbes.h"
#include "profiles/ModelTable.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81 {

namespace {

std::shared_ptr<clsZEBReaderProfile> currentProfile(const clsZEBReader& reader)
{
    auto profile = reader.Profiles()->Item(std::to_string(reader.ReaderType()));
    if (!profile)
        throw RuntimeError(91, "Object variable or With block variable not set");
    return profile;
}

} // namespace

bool clsZEBReader::Locate(int16_t iStartPort)
{
    return trap("ZEBReader81 - clsZEBReader.Locate", false, [&] {
        if (!currentProfile(*this)->LocateEnabled() || !hasCapability(ReaderType(), Probe))
            return false;
        if (iStartPort > 0) {
            int16_t port = iStartPort;
            if (LocateNCSEZ(*this, port)) {
                Port(port);
                return true;
            }
        }
        for (int16_t port = 1; port <= 16; ++port) {
            int16_t probe = port;
            if (LocateNCSEZ(*this, probe)) {
                Port(probe);
                return true;
            }
        }
        return false;
    });
}

bool clsZEBReader::Firmware(std::string& sReturn)
{
    return trap("ZEBReader81 - clsZEBReader.Firmware", false, [&] {
        if (!currentProfile(*this)->FirmwareEnabled() || !hasCapability(ReaderType(), Probe))
            return false;
        return FirmwareNCSEZ(*this, sReturn);
    });
}

} // namespace zebreader81
