#include "drivers/basRead.h"

#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/apperson/basApperson.h"
#include "drivers/chatsworth/basChatsworth.h"
#include "drivers/ezdata/basNCSEZData.h"
#include "drivers/ncs/basNCS.h"
#include "drivers/pdi/basPeripheralDynamics.h"
#include "drivers/scantron/basScantron.h"
#include "drivers/sekonic/basScanningSystems.h"
#include "drivers/sekonic/basSekonicSR.h"

#include <array>
#include <charconv>

namespace zebreader81 {

namespace {

// A family without an imprinter.
bool noPrint(clsZEBReader&, bool, bool&) { return false; }

FamilyDriver apperson()
{
    using namespace basApperson;
    return {.init = InitReaderAP,
            .close = CloseReaderAP,
            .read = ReadPageAP,
            .print = noPrint,
            .reject = [](clsZEBReader& r) { RejectPageAP(r); },
            .eject = [](clsZEBReader& r, bool&) { EjectPageAP(r); }};
}

FamilyDriver opScan()
{
    using namespace basNCS;
    return {.init = InitReaderNCS,
            .close = CloseReaderNCS,
            .read = ReadPageNCS,
            .print = [](clsZEBReader& r, bool skip, bool&) { return !skip && PrintNCS(r); },
            .reject =
                [](clsZEBReader& r) {
                    if (r.Rejecter())
                        RejectPageNCS(r);
                },
            .eject = [](clsZEBReader& r, bool&) { EjectPageNCS(r); }};
}

FamilyDriver sekonicSerial()
{
    using namespace basScanningSystems;
    return {.init = InitReaderSS,
            .close = [](clsZEBReader&) { return CloseReaderSS(); },
            .read = ReadPageSS,
            // Called even when skipped, on the models with an imprinter.
            .print =
                [](clsZEBReader& r, bool skip, bool& disposed) {
                    if (imprinterOf(r.ReaderType()).lines == 0)
                        return false;
                    const bool printed = PrintSS(r, skip);
                    disposed = skip;
                    return printed;
                },
            .reject = [](clsZEBReader& r) { RejectPageSS(r, r.Rejecter()); },
            .eject = [](clsZEBReader& r, bool&) { RejectPageSS(r, false); }};
}

FamilyDriver scanMark()
{
    using namespace basScantron;
    return {.init = InitReaderST,
            .close = CloseReaderST,
            .read =
                [](clsZEBReader& r) {
                    return r.RecognitionMode() == zebRecognitionTypePage ? ReadPageST(r) : ReadWindowsST(r);
                },
            .print = [](clsZEBReader& r, bool skip, bool&) { return !skip && PrintST(r); },
            .reject =
                [](clsZEBReader& r) {
                    bool reject = r.Rejecter();
                    RejectPageST(r, reject);
                },
            .eject =
                [](clsZEBReader& r, bool&) {
                    bool reject = false;
                    RejectPageST(r, reject);
                }};
}

FamilyDriver chatsworth()
{
    using namespace basChatsworth;
    return {.init = InitReaderCT,
            .close = [](clsZEBReader&) { return true; }, // nothing to tell the scanner
            .read = ReadPageCT,
            .print = noPrint,
            .reject =
                [](clsZEBReader& r) {
                    bool reject = r.Rejecter();
                    RejectPageCT(r, reject);
                },
            .eject =
                [](clsZEBReader& r, bool& disposed) {
                    bool reject = false;
                    disposed = RejectPageCT(r, reject);
                }};
}

FamilyDriver ezData()
{
    using namespace basNCSEZData;
    return {.init = InitReaderNCSEZ,
            .close = CloseReaderNCSEZ,
            .read = ReadPageNCSEZ,
            .print = noPrint,
            .reject = [](clsZEBReader& r) { RejectPageNCSEZ(r, r.Rejecter()); },
            .eject = [](clsZEBReader& r, bool& disposed) { disposed = RejectPageNCSEZ(r, false); }};
}

FamilyDriver pdi()
{
    using namespace basPeripheralDynamics;
    return {.init = InitReaderPD,
            .close =
                [](clsZEBReader& r) {
                    CloseReaderPD(r); // returns nothing, so the close result stays False
                    return false;
                },
            .read = ReadPagePD,
            .print = noPrint,
            .reject = [](clsZEBReader& r) { RejectPagePD(r); },
            .eject = [](clsZEBReader& r, bool&) { EjectPagePD(r); }};
}

FamilyDriver sekonicUsb()
{
    using namespace basSekonicSR;
    return {.init = InitReaderSR,
            .close = [](clsZEBReader&) { return CloseReaderSR(); },
            .read = [](clsZEBReader& r) { return ReadPageSR(r, r.RecognitionThreshold()); },
            .print = [](clsZEBReader& r, bool skip, bool&) { return !skip && PrintSR(*r.Printer()); },
            .reject = [](clsZEBReader& r) { RejectPageSR(r); },
            .eject =
                [](clsZEBReader& r, bool& disposed) {
                    // Handled only when a cancel was pending: a later RejectPage still reaches the scanner.
                    disposed = EjectPageSR(r) && r.CancelScan();
                }};
}

// Type 0 and values outside the table: every call fails without a word.
FamilyDriver none()
{
    return {.init = [](clsZEBReader&) { return false; },
            .close = [](clsZEBReader&) { return false; },
            .read = [](clsZEBReader&) { return false; },
            .print = noPrint,
            .reject = [](clsZEBReader&) {},
            .eject = [](clsZEBReader&, bool&) {}};
}

constexpr std::size_t familyCount = static_cast<std::size_t>(Family::SekonicUSB) + 1;

std::array<FamilyDriver, familyCount> builtInDrivers()
{
    std::array<FamilyDriver, familyCount> d;
    d[static_cast<std::size_t>(Family::None)] = none();
    d[static_cast<std::size_t>(Family::Apperson)] = apperson();
    d[static_cast<std::size_t>(Family::OpScan)] = opScan();
    d[static_cast<std::size_t>(Family::SekonicSerial)] = sekonicSerial();
    d[static_cast<std::size_t>(Family::ScanMark)] = scanMark();
    d[static_cast<std::size_t>(Family::Chatsworth)] = chatsworth();
    d[static_cast<std::size_t>(Family::EZData)] = ezData();
    d[static_cast<std::size_t>(Family::PDI)] = pdi();
    d[static_cast<std::size_t>(Family::SekonicUSB)] = sekonicUsb();
    return d;
}

std::array<FamilyDriver, familyCount>& drivers()
{
    thread_local std::array<FamilyDriver, familyCount> table = builtInDrivers();
    return table;
}

std::string floatText(float value)
{
    char buf[32];
    auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
    return ec == std::errc() ? std::string(buf, end) : std::string("0");
}

} // namespace

namespace FamilyRegistry {

const FamilyDriver& driver(Family family) { return drivers()[static_cast<std::size_t>(family)]; }

FamilyDriver replace(Family family, FamilyDriver driver)
{
    auto& slot = drivers()[static_cast<std::size_t>(family)];
    FamilyDriver previous = std::move(slot);
    slot = std::move(driver);
    return previous;
}

} // namespace FamilyRegistry

namespace basRead {

std::string ReaderTypeName(int32_t readerType)
{
    const auto* model = modelInfo(readerType);
    return model ? model->displayName : "";
}

std::string SettingsText(const clsZEBReader& reader)
{
    return std::to_string(reader.BaudRate()) + "," + reader.Parity() + "," +
           std::to_string(reader.DataBits()) + "," + floatText(reader.StopBits());
}

bool ReaderInit(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basRead.ReaderInit", false, [&] {
        bool result = false;
        const auto profiles = reader.Profiles();
        const std::string key = std::to_string(reader.ReaderType());
        if (profiles && profiles->Exists(key)) {
            if (profiles->Item(key)->InterfaceType() == zebReaderInterfaceTypeSerial) {
                const int16_t port = reader.Port();
                if (port < 1 || port > 16) {
                    std::string message =
                        "An error has occurred attempting to initialize the selected COM port: %1. "
                        "Please verify the COM port number and settings and then retry the operation.";
                    const std::string number = std::to_string(port);
                    for (auto pos = message.find("%1"); pos != std::string::npos;
                         pos = message.find("%1", pos + number.size()))
                        message.replace(pos, 2, number);
                    basError::ReportError(0, err::InvalidPortNumber, basError::KindDevice, message,
                                          "ZEBReader81 - basRead.ReaderInit", "Invalid Port Number");
                    return false;
                }
                auto& com = Reader::fComm(reader).mscComm;
                com.Handshaking(static_cast<int16_t>(reader.FlowControl()));
                com.CommPort(port);
                com.Settings(SettingsText(reader));
                com.PortOpen(true);
            }
            if (reader.TimeOut() < 1 || reader.TimeOut() > 600)
                reader.TimeOut(10);
            Reader::fComm(reader).tmrScan.Interval(reader.TimeOut() * 1000);
            result = FamilyRegistry::driver(familyOf(reader.ReaderType())).init(reader);
        }
        if (!result)
            reader.CancelScan(true);
        return result;
    });
}

bool ReaderClose(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basRead.ReaderClose", false, [&] {
        const bool result = FamilyRegistry::driver(familyOf(reader.ReaderType())).close(reader);
        auto& com = Reader::fComm(reader).mscComm;
        if (com.PortOpen())
            com.PortOpen(false);
        return result;
    });
}

bool ReaderRead(clsZEBReader& reader)
{
    return trap("ZEBReader81 - basRead.ReaderRead", false, [&] {
        Reader::Side1TimingMarks(reader, -1);
        Reader::Side2TimingMarks(reader, -1);
        const bool result = FamilyRegistry::driver(familyOf(reader.ReaderType())).read(reader);
        if (!result)
            reader.CancelScan(true);
        return result;
    });
}

bool ReaderPrint(clsZEBReader& reader, bool skip, bool& disposed)
{
    return trap("ZEBReader81 - basRead.ReaderPrint", false, [&] {
        const int32_t type = reader.ReaderType();
        if (!hasCapability(type, RoutesPrint))
            return false;
        return FamilyRegistry::driver(familyOf(type)).print(reader, skip, disposed);
    });
}

void RejectRouted(clsZEBReader& reader)
{
    if (hasCapability(reader.ReaderType(), RoutesRejectEject))
        FamilyRegistry::driver(familyOf(reader.ReaderType())).reject(reader);
}

void EjectRouted(clsZEBReader& reader, bool& disposed)
{
    if (hasCapability(reader.ReaderType(), RoutesRejectEject))
        FamilyRegistry::driver(familyOf(reader.ReaderType())).eject(reader, disposed);
}

} // namespace basRead
} // namespace zebreader81
