#include "ScanChecks.h"

#include "CommandLine.h"

#include "profiles/ModelTable.h"
#include "zebreader81/clsZEBReader.h"
#include "zebreader81/clsZEBReaderWindows.h"

#include <algorithm>

namespace zebreader::cli {

using namespace zebreader81;

namespace {

int largest(const SafeArray<int16_t>& a)
{
    int most = 0;
    if (!a.empty() && a.dims() == 1)
        for (int32_t i = std::max<int32_t>(1, a.LBound()); i <= a.UBound(); ++i)
            most = std::max<int>(most, a(i));
    return most;
}

} // namespace

void checkScanSetup(const clsZEBReader& reader)
{
    // A ScanMark reads only the form it is sent; a form of 0 x 0 makes every sheet empty.
    if (familyOf(reader.ReaderType()) != Family::ScanMark)
        return;
    const std::string name = reader.ReaderName();
    if (largest(reader.Side1Rows()) < 1 || largest(reader.Side1Cols()) < 1)
        throw UsageError("the " + name + " reads only the form it is sent, and this form is " +
                         std::to_string(largest(reader.Side1Rows())) + " x " +
                         std::to_string(largest(reader.Side1Cols())) +
                         ": give its size with --side1 ROWS:COLS (e.g. --side1 53:40), or save it with "
                         "`zebreader settings save --side1 ROWS:COLS` and scan with --settings");
    if (reader.RecognitionMode() != zebRecognitionTypePage && reader.Windows()->Count() == 0)
        throw UsageError("--mode window reads the read areas only, and there are none: give them with "
                         "--window P,SR,NR,RG,SC,NC,CG,O");
}

} // namespace zebreader::cli
