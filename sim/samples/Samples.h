// The sample sheet files, compiled in so that tools find them wherever they run.
#pragma once

namespace zebreader81::sim::samples {

/// answer-sheets.txt: answer sheets of 40 columns (name, ID, 50 questions; one duplex).
extern const char* const answerSheets;
/// answer-cards.txt: single-sided cards of 12 columns for the narrow scanners.
extern const char* const answerCards;

} // namespace zebreader81::sim::samples
