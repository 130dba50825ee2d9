#include "drivers/ezdata/EZDataProbes.h"

#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ChatsworthCommandSet.h"
#include "drivers/ReaderAccess.h"
#include "drivers/basRead.h"

#include <chrono>

namespace zebreader81 {

namespace {

using chatsworth::CR;

// The probe opens the port itself; a port that was already open (against the rules) is not
// the probe's to close.
class ProbePort {
public:
    ProbePort(clsZEBReader& reader, int16_t port) : com_(Reader::fComm(reader).mscComm)
    {
        if (com_.PortOpen())
            err::raise(err::PortAlreadyOpen);
        com_.Handshaking(static_cast<int16_t>(reader.FlowControl()));
        com_.CommPort(port);
        com_.Settings(basRead::SettingsText(reader));
        opened_ = true;
        com_.PortOpen(true);
    }
    ~ProbePort()
    {
        try {
            if (opened_ && com_.PortOpen())
                com_.PortOpen(false);
        } catch (...) {
        }
    }
    ProbePort(const ProbePort&) = delete;
    ProbePort& operator=(const ProbePort&) = delete;
    SerialControl& com() { return com_; }

private:
    SerialControl& com_;
    bool opened_ = false;
};

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
    try {
        ProbePort probe(reader, port);
        auto& com = probe.com();
        com.Output(chatsworth::binaryDownload());
        if (wait::waitingAfter(com, 100) != 2)
            return false;
        com.InputLen(0);
        return com.Input() == std::string{'G', CR};
    } catch (...) {
        return false;
    }
}

bool FirmwareNCSEZ(clsZEBReader& reader, std::string& text)
{
    try {
        ProbePort probe(reader, reader.Port());
        auto& com = probe.com();
        com.Output(chatsworth::frame("V"));
        if (wait::waitingAfter(com, 100) <= 0)
            return false;
        com.InputLen(0);
        const std::string reply = com.Input();
        const auto pos = reply.find(std::string{'G', CR});
        if (pos == std::string::npos)
            return false;
        text = trimBlanks(reply.substr(0, pos));
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace zebreader81
