#include "channel/Probes.h"

#include "channel/basRead.h"
#include "channel/frmComm.h"
#include "engine/ReaderAccess.h"

namespace zebreader81 {

namespace {

constexpr char DC2 = 18;
constexpr char ESC = 27;
constexpr char CR = 13;

void openProbePort(clsZEBReader& reader, int16_t port)
{
    auto& com = Reader::fComm(reader).mscComm;
    com.Handshaking(static_cast<int16_t>(reader.FlowControl()));
    com.CommPort(port);
    com.Settings(basRead::SettingsText(reader));
    com.PortOpen(true);
}

void closeQuietly(clsZEBReader& reader)
{
    try {
        auto& com = Reader::fComm(reader).mscComm;
        if (com.PortOpen())
            com.PortOpen(false);
    } catch (...) {
    }
}

std::string trimBlanks(const std::string& s)
{
    const auto first = s.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

} // namespace

bool LocateNCSEZ(clsZEBReader& reader, int16_t& port)
{
    bool found = false;
    try {
        openProbePort(reader, port);
        auto& com = Reader::fComm(reader).mscComm;
        com.Output(std::string{DC2} + "R7777" + DC2 + "I00" + DC2 + "E");
        frmComm::Sleep(100);
        if (com.InBufferCount() == 2) {
            com.InputLen(0);
            found = com.Input() == std::string{'G', CR};
        }
    } catch (...) {
        found = false;
    }
    closeQuietly(reader);
    return found;
}

bool FirmwareNCSEZ(clsZEBReader& reader, std::string& text)
{
    bool ok = false;
    try {
        openProbePort(reader, reader.Port());
        auto& com = Reader::fComm(reader).mscComm;
        com.Output(std::string{DC2, ESC} + "V" + DC2 + "E");
        frmComm::Sleep(100);
        if (com.InBufferCount() > 0) {
            com.InputLen(0);
            const std::string reply = com.Input();
            if (const auto pos = reply.find(std::string{'G', CR}); pos != std::string::npos) {
                text = trimBlanks(reply.substr(0, pos));
                ok = true;
            }
        }
    } catch (...) {
        ok = false;
    }
    closeQuietly(reader);
    return ok;
}

void FlushInputST(clsZEBReader& reader)
{
    try {
        auto& com = Reader::fComm(reader).mscComm;
        while (com.InBufferCount() > 0)
            com.Input();
    } catch (...) {
    }
}

} // namespace zebreader81
