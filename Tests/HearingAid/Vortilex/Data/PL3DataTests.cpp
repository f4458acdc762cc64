#include "AuriskSDK/HearingAid/Vortilex/Data/PL3DeviceSettings.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using testing::HasSubstr;
using testing::Optional;

const auto counting = "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10"_bytes;

Data channels(const PL3Channels& b)
{
    return { b.ch1, b.ch2, b.ch3, b.ch4, b.ch5, b.ch6, b.ch7, b.ch8, b.ch9, b.ch10, b.ch11, b.ch12, b.ch13, b.ch14,
        b.ch15, b.ch16 };
}
Data frequencies(const PL3BandEQ& b)
{
    return { b.dc, b.eq500, b.eq1000, b.eq1500, b.eq2000, b.eq2500, b.eq3000, b.eq3500, b.eq4000, b.eq4500, b.eq5000,
        b.eq5500, b.eq6000, b.eq6500, b.eq7000, b.eq7500 };
}
Data inputs(const PL3InputSettings& b)
{
    return { b.inputMux, b.preampGainCh1, b.preampGainCh2, b.preampGainDigitalCh1, b.preampGainDigitalCh2, b.matrixGain,
        b.matrixGainMantissa, b.matrixGainExponent, b.feedbackCanceller, b.noiseReduction, b.lowLevelExpansion,
        b.windSuppression, b.lowCutFilter, b.remoteMixRatio, b.mpoAttack, b.mpoRelease };
}

/// Holds a block against the bytes it is made of; `fields` lists what it holds.
template <typename Block, typename Fields> void expectBytesInOrder(Fields fields)
{
    EXPECT_EQ(fields(Block(counting)), counting);
    EXPECT_EQ(Block(counting).toData(), counting);
    EXPECT_EQ(fields(Block("01 02 03 04 05"_bytes)), "01 02 03 04 05 00 00 00 00 00 00 00 00 00 00 00"_bytes);
    EXPECT_EQ(Block(Data()).toData(), Data(16));
    auto longer = counting;
    longer.push_back(0x11);
    EXPECT_EQ(Block(longer), Block(counting));
    EXPECT_NE(Block(counting), Block());
}

TEST(PL3Blocks, AreSixteenBytesInTheOrderOfTheirFields)
{
    expectBytesInOrder<PL3BandEQ>(frequencies);
    expectBytesInOrder<PL3InputSettings>(inputs);
    expectBytesInOrder<PL3CompRatio>(channels);
    expectBytesInOrder<PL3CompTime>(channels);
    expectBytesInOrder<PL3CompThreshold>(channels);
    expectBytesInOrder<PL3MpoConfig>(channels);
}

TEST(PL3Blocks, ShowTheirValuesAsFittersKnowThem)
{
    using Show = std::string_view (*)(std::uint8_t);
    for (std::uint8_t n = 0; n < 32; ++n)
        EXPECT_EQ(PL3CompThreshold::description(n), std::to_string(20 + 2 * n) + " dB SPL");
    for (std::uint8_t n = 2; n < 16; ++n)
        EXPECT_EQ(PL3MpoConfig::description(n), std::to_string(-2 * (n - 1)) + " dB");

    const std::pair<Show, std::uint8_t> sizes[] = { { PL3CompTime::description, 9 }, { PL3CompRatio::description, 36 },
        { PL3CompThreshold::description, 32 }, { PL3MpoConfig::description, 16 } };
    for (const auto& table : sizes)
        for (const std::uint8_t beyond : { table.second, std::uint8_t{ 255 } })
            EXPECT_THAT(stopOf([&] { return table.first(beyond); }), Optional(HasSubstr(std::to_string(beyond))));
}

} // namespace
} // namespace aurisk::tests
