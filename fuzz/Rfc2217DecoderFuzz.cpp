// What a network serial server sends over telnet: data, option negotiation and COM port
// option replies, cut into chunks anywhere.
#include "FuzzSupport.h"
#include "channel/Rfc2217.h"

using namespace zebreader81;

ZEBREADER_FUZZ(in)
{
    rfc2217::Decoder decoder;
    std::string out, answer;
    std::vector<rfc2217::Reply> replies;
    std::size_t fed = 0;
    while (!in.empty()) {
        const auto chunk = in.bytes(in.byte() % 64 + 1);
        const auto repliesBefore = replies.size();
        decoder.feed(chunk, out, replies, answer);
        fed += chunk.size();
        FUZZ_CHECK(out.size() <= fed);
        for (std::size_t i = repliesBefore; i < replies.size(); ++i) {
            FUZZ_CHECK(replies[i].dataOffset <= out.size());
            FUZZ_CHECK(i == 0 || replies[i].dataOffset >= replies[i - 1].dataOffset);
        }
    }
    // Every answer is one three-byte negotiation.
    FUZZ_CHECK(answer.size() % 3 == 0);
    for (std::size_t i = 0; i < answer.size(); i += 3)
        FUZZ_CHECK(static_cast<uint8_t>(answer[i]) == rfc2217::IAC);

    // Data escaped for the wire comes back as it was.
    const std::string plain(in.all());
    rfc2217::Decoder fresh;
    std::string back;
    fresh.feed(rfc2217::escape(plain), back, replies, answer);
    FUZZ_CHECK(back == plain);
    FUZZ_CHECK(rfc2217::unescapedCount(plain, rfc2217::escape(plain).size()) == plain.size());
}
