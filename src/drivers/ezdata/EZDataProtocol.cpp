#include "drivers/ezdata/EZDataProtocol.h"

namespace zebreader81::ezdata {

std::optional<int16_t> thresholdOfCode(std::string_view code)
{
    if (code.size() != 2 || code[0] < '6' || code[0] > '7' || code[1] < '0' || code[1] > '9')
        return std::nullopt;
    const int value = (code[0] - '0') * 10 + (code[1] - '0');
    if (value % 2 != 0 || value > 78)
        return std::nullopt;
    return static_cast<int16_t>((value - 60) / 2);
}

AnswerFault checkAnswer(std::string_view answer, std::size_t expectedLength)
{
    if (answer.empty())
        return AnswerFault::NotAccepted;
    if (answer[0] == '?')
        return AnswerFault::Refused;
    if (answer[0] != 'G')
        return AnswerFault::NotAccepted;
    if (answer.size() != expectedLength || answer.find(CR) != expectedLength - 1)
        return AnswerFault::BrokenOff;
    return AnswerFault::None;
}

std::string unexpectedData(std::string_view step)
{
    return "EZData Scanner - Unexpected data returned from scanner (" + std::string(step) + ").";
}

std::string answerMessage(std::string_view step, AnswerFault fault)
{
    std::string s(step);
    switch (fault) {
    case AnswerFault::Refused: return unexpectedData(s + "?");
    case AnswerFault::NotAccepted: return unexpectedData(s + "1");
    case AnswerFault::BrokenOff: return unexpectedData(s + "2");
    case AnswerFault::None: break;
    }
    return {};
}

SetValuesFault checkSetValuesAnswer(std::string_view answer)
{
    if (answer.size() != 2)
        return SetValuesFault::ByteCount;
    if (answer[0] == '?')
        return SetValuesFault::Refused;
    if (answer[0] != 'G')
        return SetValuesFault::ReturnValue;
    if (answer[1] != CR)
        return SetValuesFault::NoCR;
    return SetValuesFault::None;
}

std::string setValuesMessage(SetValuesFault fault, std::string_view commandWord)
{
    std::string what;
    switch (fault) {
    case SetValuesFault::ByteCount: what = "(#bytes) "; break;
    case SetValuesFault::Refused: what = "(?) "; break;
    case SetValuesFault::ReturnValue: what = "(return_value) "; break;
    case SetValuesFault::NoCR: break;
    case SetValuesFault::None: return {};
    }
    return "EZData Scanner - Unexpected data " + what +
           "returned from scanner in response to: " + std::string(commandWord);
}

StatusAnswer checkStatusAnswer(std::string_view answer)
{
    if (answer.size() != StatusAnswerLength)
        return {StatusFault::Incomplete, 0};
    if (answer[0] == '?')
        return {StatusFault::Refused, 0};
    if (answer[0] != 'G')
        return {StatusFault::NotAccepted, 0};
    if (answer[2] != CR)
        return {StatusFault::Incomplete, 0};
    return {StatusFault::None, static_cast<uint8_t>(answer[1])};
}

} // namespace zebreader81::ezdata
