// Finding the scanner's port and asking it for its firmware.
#include "core/basError.h"
#include "drivers/ezdata/EZDataProbes.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81 {

namespace {

// The models that answer the port probe and the firmware query.
bool probeModel(int32_t type)
{
    return type == 20 || type == 21 || type == 22 || type == 23 || type == 35 || type == 37 || type == 41;
}

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
        if (!currentProfile(*this)->LocateEnabled() || !probeModel(ReaderType()))
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
        if (!currentProfile(*this)->FirmwareEnabled() || !probeModel(ReaderType()))
            return false;
        return FirmwareNCSEZ(*this, sReturn);
    });
}

} // namespace zebreader81
