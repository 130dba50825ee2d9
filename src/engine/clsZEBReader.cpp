#include "zebreader81/clsZEBReader.h"

#include "core/basError.h"
#include "drivers/ReaderAccess.h"
#include "drivers/basRead.h"
#include "engine/ReaderImpl.h"

namespace zebreader81 {

HostObject::~HostObject() = default;

clsZEBReader::clsZEBReader() : impl_(std::make_unique<Impl>())
{
    impl_->fComm->setCancelFlag(&impl_->cancelScan);
}

clsZEBReader::~clsZEBReader()
{
    // Children go in this order, then the serial form is unloaded.
    impl_->barcodes.reset();
    impl_->windows.reset();
    impl_->profiles.reset();
    impl_->printer.reset();
    impl_->answerKey.reset();
    trapVoid("ZEBReader81 - clsZEBReader.Class_Terminate", [&] { impl_->fComm->Unload(); });
}

zebReaderType clsZEBReader::ReaderType() const { return impl_->readerType; }
void clsZEBReader::ReaderType(zebReaderType value)
{
    impl_->readerType = value;
    impl_->printer->SetType(value);
}
std::string clsZEBReader::ReaderName() const { return basRead::ReaderTypeName(impl_->readerType); }

int16_t clsZEBReader::Port() const { return impl_->port; }
void clsZEBReader::Port(int16_t value) { impl_->port = value; }
zebReaderBaudRate clsZEBReader::BaudRate() const { return impl_->baudRate; }
void clsZEBReader::BaudRate(zebReaderBaudRate value) { impl_->baudRate = value; }
zebReaderDataBits clsZEBReader::DataBits() const { return impl_->dataBits; }
void clsZEBReader::DataBits(zebReaderDataBits value) { impl_->dataBits = value; }
std::string clsZEBReader::Parity() const { return impl_->parity; }
void clsZEBReader::Parity(const std::string& value) { impl_->parity = value; }
float clsZEBReader::StopBits() const { return impl_->stopBits; }
void clsZEBReader::StopBits(float value) { impl_->stopBits = value; }
zebReaderFlowControl clsZEBReader::FlowControl() const { return impl_->flowControl; }
void clsZEBReader::FlowControl(zebReaderFlowControl value) { impl_->flowControl = value; }
int32_t clsZEBReader::TimeOut() const { return impl_->timeOut; }
void clsZEBReader::TimeOut(int32_t value) { impl_->timeOut = value; }
int32_t clsZEBReader::SleepTime() const { return impl_->sleepTime; }
void clsZEBReader::SleepTime(int32_t value) { impl_->sleepTime = value; }

int16_t clsZEBReader::MarkCutOff() const { return impl_->markCutOff; }
void clsZEBReader::MarkCutOff(int16_t value) { impl_->markCutOff = value; }
int16_t clsZEBReader::MarkDiscrimination() const { return impl_->markDiscrimination; }
void clsZEBReader::MarkDiscrimination(int16_t value) { impl_->markDiscrimination = value; }
int16_t clsZEBReader::RecognitionThreshold() const { return impl_->recognitionThreshold; }
void clsZEBReader::RecognitionThreshold(int16_t value) { impl_->recognitionThreshold = value; }
zebRecognitionType clsZEBReader::RecognitionMode() const { return impl_->recognitionMode; }
void clsZEBReader::RecognitionMode(zebRecognitionType value) { impl_->recognitionMode = value; }
bool clsZEBReader::Windowing() const { return impl_->windowing; }
void clsZEBReader::Windowing(bool value) { impl_->windowing = value; }
bool clsZEBReader::ReaderGrade() const { return impl_->readerGrade; }
void clsZEBReader::ReaderGrade(bool value) { impl_->readerGrade = value; }

bool clsZEBReader::Duplex() const { return impl_->duplex; }
void clsZEBReader::Duplex(bool value) { impl_->duplex = value; }
bool clsZEBReader::DuplexForm() const { return impl_->duplexForm; }
void clsZEBReader::DuplexForm(bool value) { impl_->duplexForm = value; }
bool clsZEBReader::Barcode() const { return impl_->barcode; }
void clsZEBReader::Barcode(bool value) { impl_->barcode = value; }
bool clsZEBReader::Feeder() const { return impl_->feeder; }
void clsZEBReader::Feeder(bool value) { impl_->feeder = value; }
bool clsZEBReader::Rejecter() const { return impl_->rejecter; }
void clsZEBReader::Rejecter(bool value) { impl_->rejecter = value; }

SafeArray<int16_t> clsZEBReader::Side1Array() const { return impl_->side1Array; }
SafeArray<int16_t> clsZEBReader::Side2Array() const { return impl_->side2Array; }
int16_t clsZEBReader::Side1TimingMarks() const { return impl_->side1TimingMarks; }
int16_t clsZEBReader::Side2TimingMarks() const { return impl_->side2TimingMarks; }

namespace {

void assignGeometry(GeometryArray& target, const SafeArray<int16_t>& value, const char* location)
{
    trapVoid(location, [&] {
        target.values = value;
        target.maximum = 0;
        if (value.empty())
            return;
        for (int32_t i = 1; i <= value.UBound(); ++i)
            if (value(i) > target.maximum)
                target.maximum = value(i);
    });
}

} // namespace

SafeArray<int16_t> clsZEBReader::Side1Rows() const { return impl_->side1Rows.values; }
void clsZEBReader::Side1Rows(const SafeArray<int16_t>& value)
{
    assignGeometry(impl_->side1Rows, value, "ZEBReader81 - clsZEBReader.Side1Rows");
}
SafeArray<int16_t> clsZEBReader::Side1Cols() const { return impl_->side1Cols.values; }
void clsZEBReader::Side1Cols(const SafeArray<int16_t>& value)
{
    assignGeometry(impl_->side1Cols, value, "ZEBReader81 - clsZEBReader.Side1Cols");
}
SafeArray<int16_t> clsZEBReader::Side2Rows() const { return impl_->side2Rows.values; }
void clsZEBReader::Side2Rows(const SafeArray<int16_t>& value)
{
    assignGeometry(impl_->side2Rows, value, "ZEBReader81 - clsZEBReader.Side2Rows");
}
SafeArray<int16_t> clsZEBReader::Side2Cols() const { return impl_->side2Cols.values; }
void clsZEBReader::Side2Cols(const SafeArray<int16_t>& value)
{
    assignGeometry(impl_->side2Cols, value, "ZEBReader81 - clsZEBReader.Side2Cols");
}

bool clsZEBReader::CancelScan() const { return impl_->cancelScan.load(); }
void clsZEBReader::CancelScan(bool value)
{
    impl_->cancelScan.store(value);
    if (value)
        impl_->fComm->Wake();
}

std::shared_ptr<clsZEBReaderBarcodes> clsZEBReader::Barcodes() const { return impl_->barcodes; }
std::shared_ptr<clsZEBReaderWindows> clsZEBReader::Windows() const { return impl_->windows; }
std::shared_ptr<clsZEBReaderProfiles> clsZEBReader::Profiles() const { return impl_->profiles; }
std::shared_ptr<clsZEBReaderPrinter> clsZEBReader::Printer() const { return impl_->printer; }
std::shared_ptr<HostObject> clsZEBReader::AnswerKey() const { return impl_->answerKey; }
void clsZEBReader::AnswerKey(std::shared_ptr<HostObject> value) { impl_->answerKey = std::move(value); }
std::string clsZEBReader::HelpFile() const { return impl_->helpFile; }
void clsZEBReader::HelpFile(const std::string& value) { impl_->helpFile = value; }
int32_t clsZEBReader::HelpID(zebReaderHelpID eHelpIDType) const
{
    auto it = impl_->helpIds.find(eHelpIDType);
    return it == impl_->helpIds.end() ? 0 : it->second;
}
void clsZEBReader::HelpID(zebReaderHelpID eHelpIDType, int32_t value) { impl_->helpIds[eHelpIDType] = value; }

bool clsZEBReader::SetError(std::shared_ptr<ErrorHost> oErr)
{
    const bool registered = oErr != nullptr;
    basError::RegisterHost(std::move(oErr));
    return registered;
}

int32_t clsZEBReader::Advise(std::shared_ptr<ReaderEvents> sink)
{
    if (!sink)
        return 0;
    const int32_t cookie = impl_->nextCookie++;
    impl_->sinks.emplace_back(cookie, std::move(sink));
    return cookie;
}

void clsZEBReader::Unadvise(int32_t cookie)
{
    std::erase_if(impl_->sinks, [cookie](const auto& entry) { return entry.first == cookie; });
}

void clsZEBReader::SetYieldCallback(std::function<void()> callback)
{
    impl_->fComm->setYield(std::move(callback));
}

// --- members only the component sees ------------------------------------------------------

namespace detail {

frmComm& ReaderAccess::fComm(clsZEBReader& r) { return *r.impl_->fComm; }
void ReaderAccess::Side1Array(clsZEBReader& r, const SafeArray<int16_t>& v) { r.impl_->side1Array = v; }
void ReaderAccess::Side2Array(clsZEBReader& r, const SafeArray<int16_t>& v) { r.impl_->side2Array = v; }
SafeArray<std::string> ReaderAccess::BarcodeArray(const clsZEBReader& r) { return r.impl_->barcodeArray; }
void ReaderAccess::BarcodeArray(clsZEBReader& r, const SafeArray<std::string>& v)
{
    r.impl_->barcodeArray = v;
}
void ReaderAccess::Side1TimingMarks(clsZEBReader& r, int16_t v) { r.impl_->side1TimingMarks = v; }
void ReaderAccess::Side2TimingMarks(clsZEBReader& r, int16_t v) { r.impl_->side2TimingMarks = v; }
int16_t ReaderAccess::Side1RowsMax(const clsZEBReader& r) { return r.impl_->side1Rows.maximum; }
int16_t ReaderAccess::Side1ColsMax(const clsZEBReader& r) { return r.impl_->side1Cols.maximum; }
int16_t ReaderAccess::Side2RowsMax(const clsZEBReader& r) { return r.impl_->side2Rows.maximum; }
int16_t ReaderAccess::Side2ColsMax(const clsZEBReader& r) { return r.impl_->side2Cols.maximum; }
bool ReaderAccess::SheetHandled(const clsZEBReader& r) { return r.impl_->sheetHandled; }

void ReaderAccess::TranslateDataEvent(clsZEBReader& r, std::shared_ptr<HostObject>& oData,
                                      SafeArray<int16_t>& iSide1Array, SafeArray<int16_t>& iSide2Array,
                                      SafeArray<std::string>& sBarcodeArray, bool& bNeedsMoreData)
{
    for (const auto& sink : r.impl_->sinkList())
        sink->TranslateData(oData, iSide1Array, iSide2Array, sBarcodeArray, bNeedsMoreData);
}

void ReaderAccess::GetQuestionsOnSideEvent(clsZEBReader& r, int16_t& iPage, int16_t& iNumberQuestions)
{
    for (const auto& sink : r.impl_->sinkList())
        sink->GetQuestionsOnPage(iPage, iNumberQuestions);
}

} // namespace detail
} // namespace zebreader81
