// Chatsworth Data card readers (OMR1100, OMR2000, ALS AccelScan, ACF-200, ACP-200), driven by
// the maker's card reader command set (drivers/ChatsworthCommandSet.h).
//
// The reader runs with feed control (one enable admits one card) and exit control (a card
// waits after its data until it is sent out): the ALS AccelScan's card waits for RejectPageCT,
// every other model's card leaves to the rear as soon as its data is in.
#pragma once

namespace zebreader81 {
class clsZEBReader;

namespace basChatsworth {
/// Sets feed and exit control, downloads binary conversion, checks the status byte.
bool InitReaderCT(clsZEBReader& reader);
/// Reads one card into Side1Array (rows 1 to 126 by columns 1 to 12).
bool ReadPageCT(clsZEBReader& reader);
/// Sends the card out of the front (reject True) or the rear.
bool RejectPageCT(clsZEBReader& reader, bool& reject);
} // namespace basChatsworth
} // namespace zebreader81
