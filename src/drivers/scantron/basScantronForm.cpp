// basScantron: the form definition download and the acknowledged command.
#include "channel/Waits.h"
#include "channel/frmComm.h"
#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/scantron/ScanMarkCommands.h"
#include "drivers/scantron/ScanMarkPort.h"
#include "drivers/scantron/basScantron.h"

namespace zebreader81::basScantron {

thread_local int16_t ScanMarkCharBase = 0;

namespace {

constexpr const char* downloadLocation = "ZEBReader81 - basScantron.DownloadFormST";
constexpr const char* downloadTitle = "Initialize Error";
const std::string downloadFailed =
    "An error occurred trying to download the form definition to the Scantron scanner";

// The three field messages differ in punctuation on purpose; hosts compare them as text.
const std::string side1FieldFailed = downloadFailed + ".  Invalid sheet definition.";
const std::string side2PageFieldFailed = downloadFailed + ".  Invalid sheet definition";
const std::string side2WindowFieldFailed = downloadFailed + ". Invalid sheet definition";

bool fail(const std::string& message)
{
    basError::ReportDevice(message, downloadLocation, downloadTitle);
    return false;
}

bool failField(const std::string& message, int32_t sheet, int16_t side, int32_t field = 0)
{
    std::string text =
        message + "\r\n\r\nSheet: " + std::to_string(sheet) + "\r\nSide: " + std::to_string(side);
    if (field > 0)
        text += "\r\nField: " + std::to_string(field);
    return fail(text);
}

} // namespace

bool SendCommandST(clsZEBReader& reader, const std::string& command)
{
    return trap("ZEBReader81 - basScantron.SendCommandST", false, [&] {
        // A late byte of an earlier reply must not pass for this command's answer.
        FlushInputST(reader);
        auto& fc = Reader::fComm(reader);
        fc.mscComm.Output(command);
        if (wait::awaitBytes(fc, 1, scanmark::turns(reader)) != wait::Outcome::Arrived)
            return false;
        const std::string reply = wait::takeWaiting(fc.mscComm);
        return !reply.empty() && reply[0] == scanmark::CR;
    });
}

bool DownloadFormST(clsZEBReader& reader)
{
    return trap(downloadLocation, false, [&] {
        using namespace scanmark;
        const int32_t type = reader.ReaderType();
        const bool model8000 = isModel8000(type);
        ScanMarkCharBase = charBase(type);
        if (model8000 && !SendCommandST(reader, thresholdCommand(reader.RecognitionThreshold())))
            return fail(downloadFailed + " when issuing the scanner threshold command.");

        const auto side1Rows = reader.Side1Rows();
        const auto side1Cols = reader.Side1Cols();
        const auto side2Rows = reader.Side2Rows();
        const auto side2Cols = reader.Side2Cols();
        const int32_t sheets = side1Rows.empty() ? 0 : side1Rows.UBound();
        const auto windows = reader.Windows();

        for (int32_t s = 1; s <= sheets; ++s) {
            const bool duplex = reader.Duplex() && reader.DuplexForm();
            const int16_t rows1 = side1Rows(s);
            const int16_t cols1 = side1Cols(s);
            const int16_t start2 = duplex ? side2Rows(s) : int16_t{0};
            if (!SendCommandST(reader, formStartCommand(rows1, start2, cols1)))
                return fail(downloadFailed + " when issuing the form start command.");

            const bool pageMode = reader.RecognitionMode() == zebRecognitionTypePage;
            if (pageMode) {
                if (rows1 > 0 && !SendCommandST(reader, pageFieldCommand(model8000, 1, rows1, cols1)))
                    return failField(side1FieldFailed, s, 1);
            } else {
                for (const auto& f : fieldPlan(*windows, false))
                    if (!SendCommandST(reader, windowFieldCommand(1, *f.window)))
                        return failField(side1FieldFailed, s, 1, f.field);
            }

            if (reader.Duplex() && reader.DuplexForm()) {
                if (pageMode) {
                    const int16_t rows2 = side2Rows(s);
                    if (rows2 > 0 &&
                        !SendCommandST(reader, pageFieldCommand(model8000, 2, rows2, side2Cols(s))))
                        return failField(side2PageFieldFailed, s, 2);
                } else {
                    for (const auto& f : fieldPlan(*windows, true))
                        if (f.side == 2 && !SendCommandST(reader, windowFieldCommand(2, *f.window)))
                            return failField(side2WindowFieldFailed, s, 2, f.field);
                }
            }

            if (!SendCommandST(reader, endOfFormCommand()))
                return fail(downloadFailed + " while issuing the end of form command.");
        }
        return true;
    });
}

} // namespace zebreader81::basScantron
