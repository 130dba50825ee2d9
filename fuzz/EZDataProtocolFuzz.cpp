// EZData answers: the GETCONFIG text, the "G" CR answers to actions and settings, the status.
#include "FuzzSupport.h"
#include "drivers/ezdata/EZDataProtocol.h"

using namespace zebreader81;
using namespace zebreader81::ezdata;

ZEBREADER_FUZZ(in)
{
    const std::size_t expected = in.byte() % 32;
    const auto answer = in.rest();

    const auto config = parseConfigText(answer.size() > 1 ? answer.substr(1) : answer);
    FUZZ_CHECK(config.lineCode.size() <= 2 && config.flags.size() <= 2 && config.timing.size() <= 2);
    FUZZ_CHECK(config.state.size() <= 3 && config.thresholdCode.size() <= 2 && config.decay.size() <= 3);
    if (const auto t = thresholdOfCode(config.thresholdCode))
        FUZZ_CHECK(*t >= 0 && *t <= 9);

    const auto fault = checkAnswer(answer, expected);
    if (fault == AnswerFault::None)
        FUZZ_CHECK(answer.size() == expected && answer.front() == 'G' && answer.back() == CR);
    else
        FUZZ_CHECK(!answerMessage("GETCONFIG", fault).empty());

    const auto setFault = checkSetValuesAnswer(answer);
    FUZZ_CHECK((setFault == SetValuesFault::None) == (answer == std::string_view("G\r")));
    FUZZ_CHECK(setValuesMessage(setFault, "SETFLAGS03").empty() == (setFault == SetValuesFault::None));

    const auto status = checkStatusAnswer(answer);
    if (status.fault == StatusFault::None)
        FUZZ_CHECK(answer.size() == StatusAnswerLength && static_cast<uint8_t>(answer[1]) == status.status);
}
