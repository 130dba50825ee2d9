// The reading cycle of the reader object: start, read, batch, end, reject and eject.
#include "core/basError.h"
#include "drivers/basRead.h"
#include "engine/PrinterAccess.h"
#include "engine/ReaderImpl.h"
#include "zebreader81/clsZEBReader.h"

#include <cstdint>

namespace zebreader81 {

ReaderEvents::~ReaderEvents() = default;
void ReaderEvents::BeforeSheet(bool&) {}
void ReaderEvents::ReadSheet(SafeArray<int16_t>&, SafeArray<int16_t>&, SafeArray<std::string>&, bool&) {}
void ReaderEvents::AfterSheet(bool&) {}
void ReaderEvents::BeforePrint(bool&) {}
void ReaderEvents::AfterPrint() {}
void ReaderEvents::TranslateData(std::shared_ptr<HostObject>&, SafeArray<int16_t>&, SafeArray<int16_t>&,
                                 SafeArray<std::string>&, bool&)
{
}
void ReaderEvents::GetQuestionsOnPage(int16_t&, int16_t&) {}

bool clsZEBReader::StartReader()
{
    return trap("ZEBReader81 - clsZEBReader.StartReader", false, [&] {
        impl_->fresh = false;
        return basRead::ReaderInit(*this);
    });
}

bool clsZEBReader::EndReader()
{
    return trap("ZEBReader81 - clsZEBReader.EndReader", false, [&] {
        const bool result = basRead::ReaderClose(*this);
        // A closed reader has no sheet left to reject or eject.
        impl_->sheetHandled = true;
        impl_->answerKey.reset();
        return result;
    });
}

bool clsZEBReader::ReadPage(bool InitializePrinter)
{
    return trap("ZEBReader81 - clsZEBReader.ReadPage", false, [&] {
        auto& printer = *impl_->printer;
        PrinterAccess::Initialized(printer, InitializePrinter);
        // The handler's value is not read back: only the imprinter's own state counts.
        bool initializePrinter = printer.Initialized();
        for (const auto& sink : impl_->sinkList())
            sink->BeforeSheet(initializePrinter);

        if (CancelScan())
            return false;

        impl_->barcodeArray = SafeArray<std::string>::vector(0, 0);
        if (!basRead::ReaderRead(*this))
            return false;

        impl_->sheetHandled = false;
        {
            auto side1 = Side1Array();
            auto side2 = Side2Array();
            auto barcodes = impl_->barcodeArray;
            bool reject = false;
            for (const auto& sink : impl_->sinkList())
                sink->ReadSheet(side1, side2, barcodes, reject);

            if (printer.Initialized() && printer.Active()) {
                bool cancel = reject;
                for (const auto& sink : impl_->sinkList())
                    sink->BeforePrint(cancel);
                if (basRead::ReaderPrint(*this, !printer.Active() || cancel, impl_->sheetHandled))
                    for (const auto& sink : impl_->sinkList())
                        sink->AfterPrint();
            }
        }

        bool cancelScan = CancelScan();
        for (const auto& sink : impl_->sinkList())
            sink->AfterSheet(cancelScan);
        CancelScan(cancelScan);
        return true;
    });
}

bool clsZEBReader::ReadBatch(bool InitializePrinter, int32_t lMaxSheets)
{
    int32_t lSheetCount = 0;
    return ReadBatch(InitializePrinter, lMaxSheets, lSheetCount);
}

bool clsZEBReader::ReadBatch(bool InitializePrinter, int32_t lMaxSheets, int32_t& lSheetCount)
{
    return trap("ZEBReader81 - clsZEBReader.ReadBatch", false, [&] {
        if (!StartReader()) {
            EndReader();
            return false;
        }
        bool lastRead = false;
        for (;;) {
            if (CancelScan())
                break;
            if (lMaxSheets >= 0 && lSheetCount >= lMaxSheets)
                break;
            lastRead = ReadPage(InitializePrinter);
            if (lSheetCount == INT32_MAX)
                err::raise(err::Overflow);
            ++lSheetCount; // a failed read counts too
        }
        if (CancelScan() || (lMaxSheets > 0 && lSheetCount == lMaxSheets)) {
            CancelScan(true);
            if (lastRead && !impl_->sheetHandled)
                EjectPage();
        }
        EndReader();
        return true;
    });
}

void clsZEBReader::RejectPage()
{
    trapVoid("ZEBReader81 - clsZEBReader.RejectPage", [&] {
        if (!impl_->sheetHandled)
            basRead::RejectRouted(*this);
        impl_->sheetHandled = true;
    });
}

void clsZEBReader::EjectPage()
{
    trapVoid("ZEBReader81 - clsZEBReader.EjectPage", [&] {
        if (impl_->sheetHandled)
            return;
        impl_->sheetHandled = true;
        basRead::EjectRouted(*this, impl_->sheetHandled);
    });
}

} // namespace zebreader81
