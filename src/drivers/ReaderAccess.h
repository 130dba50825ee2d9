// The reader's members that only the component sees: drivers store a sheet's results and
// reach the serial form through here.
#pragma once

#include "zebreader81/clsZEBReader.h"

#include <memory>
#include <string>

namespace zebreader81 {

class frmComm;

namespace detail {

struct ReaderAccess {
    /// The hidden serial form with mscComm and tmrScan.
    static frmComm& fComm(clsZEBReader& reader);

    static void Side1Array(clsZEBReader& reader, const SafeArray<int16_t>& value);
    static void Side2Array(clsZEBReader& reader, const SafeArray<int16_t>& value);
    static SafeArray<std::string> BarcodeArray(const clsZEBReader& reader);
    static void BarcodeArray(clsZEBReader& reader, const SafeArray<std::string>& value);
    static void Side1TimingMarks(clsZEBReader& reader, int16_t value);
    static void Side2TimingMarks(clsZEBReader& reader, int16_t value);

    /// Running maxima of the form geometry arrays.
    static int16_t Side1RowsMax(const clsZEBReader& reader);
    static int16_t Side1ColsMax(const clsZEBReader& reader);
    static int16_t Side2RowsMax(const clsZEBReader& reader);
    static int16_t Side2ColsMax(const clsZEBReader& reader);

    /// True once the current sheet was rejected or ejected.
    static bool SheetHandled(const clsZEBReader& reader);

    /// Raise TranslateData / GetQuestionsOnPage with the driver's variables by reference.
    static void TranslateDataEvent(clsZEBReader& reader, std::shared_ptr<HostObject>& oData,
                                   SafeArray<int16_t>& iSide1Array, SafeArray<int16_t>& iSide2Array,
                                   SafeArray<std::string>& sBarcodeArray, bool& bNeedsMoreData);
    static void GetQuestionsOnSideEvent(clsZEBReader& reader, int16_t& iPage, int16_t& iNumberQuestions);
};

} // namespace detail

/// Short spelling for driver code.
using Reader = detail::ReaderAccess;

} // namespace zebreader81
