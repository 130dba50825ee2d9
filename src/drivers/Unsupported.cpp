#include "drivers/Unsupported.h"

#include "core/basError.h"
#include "profiles/ModelTable.h"
#include "zebreader81/clsZEBReader.h"

namespace zebreader81 {

bool reportUnsupported(int32_t readerType, const char* location)
{
    // A close before any open on this thread has no model to name.
    const auto* model = readerType == zebReaderTypeNone ? nullptr : modelInfo(readerType);
    const std::string name = model ? model->displayName : "selected";
    basError::ReportDevice("The " + name + " scanner is not supported by this version of ZEBReader81.",
                           location, "Unsupported Scanner");
    return false;
}

bool reportUnsupported(const clsZEBReader& reader, const char* location)
{
    return reportUnsupported(reader.ReaderType(), location);
}

} // namespace zebreader81
