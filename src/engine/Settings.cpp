// Settings of the reader object: factory defaults from the profile, and the settings store.
#include "engine/basError.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81 {

bool clsZEBReader::LoadDefaults(zebReaderType)
{
    return false;
}

bool clsZEBReader::LoadSettings(zebReaderRegistryKey, const std::string&) { return false; }

bool clsZEBReader::SaveSettings(zebReaderRegistryKey, const std::string&) { return false; }

} // namespace zebreader81
