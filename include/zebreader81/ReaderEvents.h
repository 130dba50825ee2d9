// The reader's outgoing events. Every argument is by reference: the reader reads some of
// them back after the handler returns (bCancelScan, bReject, bCancel, bNeedsMoreData...).
#pragma once

#include "zebreader81/SafeArray.h"
#include "zebreader81/export.h"

#include <cstdint>
#include <memory>
#include <string>

namespace zebreader81 {

/// An object of a companion library (the answer key, the translated data) that the reader
/// only holds and passes on.
class ZEBREADER81_API HostObject {
public:
    virtual ~HostObject();
};

/// Event sink; override the events you want. Register with clsZEBReader::Advise.
/// Events run on the thread that called the reader's method.
class ZEBREADER81_API ReaderEvents {
public:
    virtual ~ReaderEvents();
    /// 1: a sheet is about to be read. The value left in bInitializePrinter is not read back.
    virtual void BeforeSheet(bool& bInitializePrinter);
    /// 2: a sheet was read. bReject (False on entry) becomes the default of BeforePrint's bCancel;
    /// call RejectPage here to reject the sheet.
    virtual void ReadSheet(SafeArray<int16_t>& iSide1Array, SafeArray<int16_t>& iSide2Array,
                           SafeArray<std::string>& sBarcodeArray, bool& bReject);
    /// 3: the sheet is done; the value left in bCancelScan is stored into CancelScan.
    virtual void AfterSheet(bool& bCancelScan);
    /// 4: the imprinter is about to print; set bCancel to skip this sheet.
    virtual void BeforePrint(bool& bCancel);
    /// 5: the imprinter printed.
    virtual void AfterPrint();
    /// 6: a driver asks the host to translate a sheet's data.
    virtual void TranslateData(std::shared_ptr<HostObject>& oData, SafeArray<int16_t>& iSide1Array,
                               SafeArray<int16_t>& iSide2Array, SafeArray<std::string>& sBarcodeArray,
                               bool& bNeedsMoreData);
    /// 7: a driver asks how many questions side iPage holds.
    virtual void GetQuestionsOnPage(int16_t& iPage, int16_t& iNumberQuestions);
};

} // namespace zebreader81
