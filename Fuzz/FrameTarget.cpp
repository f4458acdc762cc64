#include "Fuzz/FuzzTargets.h"
#include "Fuzz/InputReader.h"
#include "Tests/Support/SecondDecoder.h"

#include <algorithm>

namespace aurisk::fuzz {

using tests::decodeAgain;
using tests::frameAround;
using tests::SecondDecoding;

void frame(DataView input)
{
    const auto expected = decodeAgain(input);
    const auto parsed = contained([&] { return AuriskRawData::parse(input); });
    if (!parsed) {
        require(expected.kind == SecondDecoding::Kind::stop && !expected.frame, "a value broke a precondition");
        return;
    }
    require(*parsed == expected.frame, "a value was parsed into another frame, or into none");
    if (!*parsed)
        return;

    const auto& one = **parsed;
    if (one.di0)
        require(std::ranges::equal(one.toData(), input.subspan(1)), "a frame did not become its bytes again");
    const auto result = contained([&] { return one.toResult(); });
    require(result == expected.result, "a frame was decoded into another result");
    if (result)
        require(!description(*result).empty(), "a result has no text");
}

/// A valid frame reaches what a checksum keeps nearly every raw value from.
void payload(DataView input)
{
    constexpr std::size_t mostBody = 249;
    InputReader reader(input);
    const auto command = reader.byte();
    frame(frameAround(command, reader.take(mostBody)));
}

} // namespace aurisk::fuzz
