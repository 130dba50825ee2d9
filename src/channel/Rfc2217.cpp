#include "channel/Rfc2217.h"

namespace zebreader81::rfc2217 {

namespace {

// A reply longer than this (a signature text, say) is nothing we wait for; it is skipped.
constexpr std::size_t maxSubnegotiation = 256;

constexpr char byte(uint8_t b) { return static_cast<char>(b); }

bool weOffer(uint8_t option) { return option == BINARY || option == SGA || option == COM_PORT_OPTION; }
bool weAccept(uint8_t option) { return option == BINARY || option == SGA; }

std::string negotiation(uint8_t verb, uint8_t option) { return {byte(IAC), byte(verb), byte(option)}; }

} // namespace

std::string escape(std::string_view data)
{
    std::string out;
    out.reserve(data.size());
    for (const char c : data) {
        out += c;
        if (c == byte(IAC))
            out += c;
    }
    return out;
}

std::size_t unescapedCount(std::string_view data, std::size_t sent)
{
    std::size_t count = 0, used = 0;
    for (const char c : data) {
        used += c == byte(IAC) ? 2 : 1;
        if (used > sent)
            break;
        ++count;
    }
    return count;
}

std::string command(uint8_t command, std::string_view value)
{
    std::string out{byte(IAC), byte(SB), byte(COM_PORT_OPTION), byte(command)};
    out += escape(value);
    out += byte(IAC);
    out += byte(SE);
    return out;
}

std::string greeting()
{
    return negotiation(WILL, COM_PORT_OPTION) + negotiation(WILL, BINARY) + negotiation(DO, BINARY) +
           negotiation(WILL, SGA) + negotiation(DO, SGA);
}

std::optional<std::vector<Setting>> lineCommands(const LineSettings& s, int handshaking, std::string& why)
{
    if (s.dataBits < 5 || s.dataBits > 8) {
        why = "the COM port option carries 5 to 8 data bits, not " + std::to_string(s.dataBits);
        return std::nullopt;
    }
    if (handshaking < 0 || handshaking > 2) {
        why = "the COM port option cannot set XON/XOFF and RTS/CTS handshaking together";
        return std::nullopt;
    }
    const auto baud = static_cast<uint32_t>(s.baud);
    std::string rate{byte(static_cast<uint8_t>(baud >> 24)), byte(static_cast<uint8_t>(baud >> 16)),
                     byte(static_cast<uint8_t>(baud >> 8)), byte(static_cast<uint8_t>(baud))};
    uint8_t parity = 1;
    switch (s.parity) {
    case 'O': parity = 2; break;
    case 'E': parity = 3; break;
    case 'M': parity = 4; break;
    case 'S': parity = 5; break;
    default: break;
    }
    const uint8_t stop = s.stopBits == 2.0f ? 2 : s.stopBits == 1.5f ? 3 : 1;
    // Handshaking 0, 1, 2 are the option's no flow control, XON/XOFF and hardware (1 to 3).
    const auto control = static_cast<uint8_t>(handshaking + 1);
    return std::vector<Setting>{{SetBaudRate, rate},
                                {SetDataSize, {byte(static_cast<uint8_t>(s.dataBits))}},
                                {SetParity, {byte(parity)}},
                                {SetStopSize, {byte(stop)}},
                                {SetControl, {byte(control)}}};
}

std::string describe(uint8_t command, std::string_view value)
{
    std::string name;
    switch (command) {
    case SetBaudRate: name = "SET-BAUDRATE"; break;
    case SetDataSize: name = "SET-DATASIZE"; break;
    case SetParity: name = "SET-PARITY"; break;
    case SetStopSize: name = "SET-STOPSIZE"; break;
    case SetControl: name = "SET-CONTROL"; break;
    case PurgeData: name = "PURGE-DATA"; break;
    default: name = "COM-PORT-OPTION " + std::to_string(command); break;
    }
    if (value.empty())
        return name;
    uint32_t number = 0;
    for (const char c : value.substr(0, 4))
        number = (number << 8) | static_cast<uint8_t>(c);
    return name + " " + std::to_string(number);
}

Decoder::Decoder()
{
    askedOurs_.set(BINARY).set(SGA).set(COM_PORT_OPTION);
    askedTheirs_.set(BINARY).set(SGA);
}

void Decoder::feed(std::string_view bytes, std::string& data, std::vector<Reply>& replies,
                   std::string& answer)
{
    for (const char c : bytes) {
        const auto b = static_cast<uint8_t>(c);
        switch (state_) {
        case State::Data:
            if (b == IAC)
                state_ = State::Iac;
            else
                data += c;
            break;
        case State::Iac:
            state_ = State::Data;
            if (b == IAC) {
                data += c;
            } else if (b >= WILL && b <= DONT) {
                verb_ = b;
                state_ = State::Verb;
            } else if (b == SB) {
                state_ = State::SbOption;
            } // NOP, go-ahead, data mark and the like carry nothing for us
            break;
        case State::Verb:
            negotiate(verb_, b, answer);
            state_ = State::Data;
            break;
        case State::SbOption:
            sb_.clear();
            state_ = b == COM_PORT_OPTION ? State::SbData : State::SbSkip;
            break;
        case State::SbData:
            if (b == IAC)
                state_ = State::SbIac;
            else if (sb_.size() < maxSubnegotiation)
                sb_ += c;
            else
                state_ = State::SbSkip;
            break;
        case State::SbIac:
            if (b == IAC) {
                sb_ += c;
                state_ = State::SbData;
            } else {
                // IAC SE ends it; anything else is malformed and ends it unread.
                if (b == SE)
                    endSubnegotiation(data, replies);
                state_ = State::Data;
            }
            break;
        case State::SbSkip:
            if (b == IAC)
                state_ = State::SbSkipIac;
            break;
        case State::SbSkipIac: state_ = b == SE ? State::Data : State::SbSkip; break;
        }
    }
}

void Decoder::endSubnegotiation(const std::string& data, std::vector<Reply>& replies)
{
    if (sb_.empty() || static_cast<uint8_t>(sb_[0]) < 100)
        return;
    replies.push_back({static_cast<uint8_t>(static_cast<uint8_t>(sb_[0]) - 100), sb_.substr(1), data.size()});
}

// Answers only what changes an option's state, so two sides never echo each other for ever.
void Decoder::negotiate(uint8_t verb, uint8_t option, std::string& answer)
{
    switch (verb) {
    case DO:
        if (!weOffer(option)) {
            answer += negotiation(WONT, option);
        } else if (!ours_[option]) {
            ours_.set(option);
            if (!askedOurs_[option])
                answer += negotiation(WILL, option);
            askedOurs_.reset(option);
        }
        break;
    case DONT:
        if (option == COM_PORT_OPTION)
            refused_ = true;
        if (ours_[option]) {
            ours_.reset(option);
            answer += negotiation(WONT, option);
        }
        askedOurs_.reset(option);
        break;
    case WILL:
        if (!weAccept(option)) {
            answer += negotiation(DONT, option);
        } else if (!theirs_[option]) {
            theirs_.set(option);
            if (!askedTheirs_[option])
                answer += negotiation(DO, option);
            askedTheirs_.reset(option);
        }
        break;
    case WONT:
        if (theirs_[option]) {
            theirs_.reset(option);
            answer += negotiation(DONT, option);
        }
        askedTheirs_.reset(option);
        break;
    default: break;
    }
}

} // namespace zebreader81::rfc2217
