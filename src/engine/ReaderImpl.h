// State of a reader object.
#pragma once

#include "channel/frmComm.h"
#include "zebreader81/clsZEBReader.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zebreader81 {

/// One form geometry array with its running maximum (element 0 ignored).
struct GeometryArray {
    SafeArray<int16_t> values;
    int16_t maximum = 0;
};

struct clsZEBReader::Impl {
    zebReaderType readerType = zebReaderTypeNone;
    int16_t port = 1;
    zebReaderBaudRate baudRate = zebReaderBaudRate9600;
    zebReaderDataBits dataBits = zebReaderDataBits7;
    std::string parity = "N";
    float stopBits = 1.0f;
    zebReaderFlowControl flowControl = zebReaderFlowControlNone;
    int32_t timeOut = 10;
    int32_t sleepTime = 50;
    int16_t markCutOff = 0;
    int16_t markDiscrimination = 0;
    int16_t recognitionThreshold = 0;
    zebRecognitionType recognitionMode = zebRecognitionTypePage;
    bool windowing = false, readerGrade = false;
    bool duplex = false, duplexForm = false, barcode = false, feeder = false, rejecter = false;

    SafeArray<int16_t> side1Array, side2Array;
    SafeArray<std::string> barcodeArray;
    int16_t side1TimingMarks = 0, side2TimingMarks = 0;
    GeometryArray side1Rows, side1Cols, side2Rows, side2Cols;

    std::atomic<bool> cancelScan{false};
    // No sheet yet: nothing to reject or eject until a sheet has been read.
    bool sheetHandled = true;
    // Cleared by every StartReader; nothing in this component reads it.
    bool fresh = true;

    std::shared_ptr<clsZEBReaderBarcodes> barcodes = std::make_shared<clsZEBReaderBarcodes>();
    std::shared_ptr<clsZEBReaderWindows> windows = std::make_shared<clsZEBReaderWindows>();
    std::shared_ptr<clsZEBReaderProfiles> profiles = std::make_shared<clsZEBReaderProfiles>();
    std::shared_ptr<clsZEBReaderPrinter> printer = std::make_shared<clsZEBReaderPrinter>();
    std::unique_ptr<frmComm> fComm = std::make_unique<frmComm>();
    std::shared_ptr<HostObject> answerKey;
    std::string helpFile;
    std::map<int32_t, int32_t> helpIds;

    std::vector<std::pair<int32_t, std::shared_ptr<ReaderEvents>>> sinks;
    int32_t nextCookie = 1;

    /// Sinks at the moment of raising an event (a handler may unadvise).
    std::vector<std::shared_ptr<ReaderEvents>> sinkList() const
    {
        std::vector<std::shared_ptr<ReaderEvents>> list;
        for (const auto& [cookie, sink] : sinks)
            list.push_back(sink);
        return list;
    }
};

} // namespace zebreader81
