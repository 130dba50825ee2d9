// ScanMark series and Scantron 8000/8400: form download, reading and control.
#pragma once

#include <cstdint>
#include <string>

namespace zebreader81 {
class clsZEBReader;

namespace basScantron {
/// Subtracted from every mark-data character: 0 for the 8000/8400, 48 ("0") for the other
/// models. Set by DownloadFormST; one copy per thread.
extern thread_local int16_t ScanMarkCharBase;

/// Sends the form definition (threshold, form start, fields, end of form for every sheet).
bool DownloadFormST(clsZEBReader& reader);
/// Sends one framed command (ESC text CR, as given); True when the scanner answers with CR first.
bool SendCommandST(clsZEBReader& reader, const std::string& command);
bool InitReaderST(clsZEBReader& reader);
bool CloseReaderST(clsZEBReader& reader);
bool ResetReaderST(clsZEBReader& reader);
/// 1 sheet ready, 0 no sheet, -1 error or no usable answer.
int16_t CheckStatusST(clsZEBReader& reader);
bool ReadPageST(clsZEBReader& reader);
bool ReadWindowsST(clsZEBReader& reader);
/// True after a reject; False after an accept, even a successful one.
bool RejectPageST(clsZEBReader& reader, bool& reject);
bool PrintST(clsZEBReader& reader);
} // namespace basScantron
} // namespace zebreader81
