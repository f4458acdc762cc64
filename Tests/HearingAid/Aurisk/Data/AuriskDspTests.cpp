#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"

#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using testing::HasSubstr;
using testing::Optional;

/// Prints what `work` writes to standard output.
template <typename Work> std::string printedBy(Work&& work)
{
    testing::internal::CaptureStdout();
    work();
    return testing::internal::GetCapturedStdout();
}

TEST(AuriskA4Dsp, TakesTheFallbackOfEachFieldThatHoldsSeven)
{
    const struct {
        Data bytes, encodedAgain;
    } cases[] = {
        { "07 00 00 00 00 00 00 00 00 00 00 00"_bytes, "01 00 00 00 00 00 00 00 00 00 00 00"_bytes }, // input mode
        { "00 00 00 00 00 00 00 00 07 00 00 00"_bytes, Data(12) }, // the ratios
        { "00 00 00 00 00 00 00 00 38 00 00 00"_bytes, Data(12) },
        { "00 00 00 00 00 00 00 00 C0 01 00 00"_bytes, Data(12) },
        { "00 00 00 00 00 00 00 00 00 0E 00 00"_bytes, Data(12) },
        { "00 00 00 00 00 00 00 00 00 70 00 00"_bytes, Data(12) }, // threshold
        { "00 00 00 00 00 00 00 00 00 00 07 00"_bytes, Data(12) }, // low cut
        { "00 00 00 00 00 00 00 00 00 00 38 00"_bytes, Data(12) }, // high cut
        { "00 00 00 00 00 00 00 00 00 00 C0 01"_bytes, Data(12) }, // maximum power output
        // Eight cases in three bits, and plain numbers: nothing to fall back from.
        { "F8 FF 00 00 00 00 00 00 00 80 00 FE"_bytes, "F8 FF 00 00 00 00 00 00 00 80 00 FE"_bytes },
    };
    for (const auto& [bytes, encodedAgain] : cases)
        EXPECT_EQ(AuriskA4Dsp(bytes).toBytes(), encodedAgain) << testing::PrintToString(bytes);
}

TEST(AuriskA4Dsp, TellsWhatDoesNotSurviveItsCodec)
{
    // Byte 0 with 7 in its low three bits, 32 values; bytes 8, 9 and 10 with two such fields each, 32 + 32 - 4.
    const auto printed = printedBy([] { AuriskA4Dsp::testDataConsistency(); });
    EXPECT_THAT(printed, testing::StartsWith("different at index 0, original: 7, parsed: 1\n"));
    EXPECT_THAT(printed, HasSubstr("different at index 10, original: 255, parsed: 192\n"));
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 32 + 3 * 60);
}

TEST(AuriskA16Dsp, StopsForBitsThatNameNoCaseAndNamesTheirField)
{
    const struct {
        const char* field;
        std::size_t byte;
        std::uint8_t value;
    } cases[] = { { "analogPreGainP0", 0, 0xD0 }, { "analogPreGainP1", 1, 0x0D }, { "feedbackCanceler", 2, 0xC0 },
        { "noiseReduction", 3, 0x05 }, { "equalizerArray", 4, 21 }, { "compressionRatioArray", 24, 36 },
        { "compressionConstantArray", 27, 9 }, { "mpoAttackTime", 54, 0x04 }, { "mpoReleaseTime", 54, 0x20 },
        { "remoteMixRatio", 55, 0x04 }, { "lowCutInputFilter", 55, 0xA0 } };
    for (const auto& [field, byte, value] : cases) {
        Data bytes(56);
        bytes[byte] = value;
        EXPECT_THAT(stopOf([&] { AuriskA16Dsp block(bytes); }), Optional(HasSubstr(field)));
        EXPECT_EQ(AuriskA16Dsp::decode(bytes), std::nullopt) << field;
        bytes[byte] = static_cast<std::uint8_t>(value - (value & -value)); // the largest case, or less
        EXPECT_NE(AuriskA16Dsp::decode(bytes), std::nullopt) << field;
    }
}

template <typename Block> class EitherDsp : public testing::Test {
};
using Dsps = testing::Types<AuriskA4Dsp, AuriskA16Dsp>;
TYPED_TEST_SUITE(EitherDsp, Dsps);

TYPED_TEST(EitherDsp, KeepsTheMatrixGainAsMantissaAndExponent)
{
    const struct {
        int gain, mantissa, exponent;
        const char* text;
    } cases[] = { { 47, 5, 0, "-47 dB" }, { 42, 0, 0, "-42 dB" }, { 41, 5, 1, "-41 dB" }, { 6, 0, 6, "-6 dB" },
        { 1, 1, 7, "-1 dB" } };
    TypeParam block;
    for (const auto& [gain, mantissa, exponent, text] : cases) {
        block.setMatrixGain(gain);
        EXPECT_EQ(block.matrixGainMantissa, mantissa);
        EXPECT_EQ(block.matrixGainExponent, exponent);
        EXPECT_EQ(block.getMatrixGain(), gain);
        EXPECT_EQ(block.matrixGainDisplayValue(), text);
    }
    for (int gain = 1; gain <= 47; ++gain) {
        block.setMatrixGain(gain);
        EXPECT_EQ(block.getMatrixGain(), gain);
        EXPECT_TRUE(block.matrixGainMantissa >= 0 && block.matrixGainMantissa <= 5) << gain;
    }
    for (const int gain : { 0, 48, -1 })
        EXPECT_EQ(stopOf([&] { block.setMatrixGain(gain); }), "Invalid matrix gain value: " + std::to_string(gain));
    EXPECT_EQ(block.getMatrixGain(), 47);

    block.matrixGainMantissa = 0;
    block.matrixGainExponent = 7;
    EXPECT_EQ(block.matrixGainDisplayValue(), "0 dB");
    block.matrixGainMantissa = 6; // 48 dB
    block.matrixGainExponent = 0;
    EXPECT_EQ(block.matrixGainDisplayValue(), "Unknown");
}

TYPED_TEST(EitherDsp, HasItsBandsByFrequency)
{
    TypeParam block;
    const auto untouched = block;
    block.setEq(3, 260);
    EXPECT_EQ(block, untouched);
    EXPECT_EQ(block.getEq(260), std::nullopt);

    const auto centres = block.frequences();
    for (std::size_t i = 0; i < centres.size(); ++i) {
        block.setEq(static_cast<int>(i), centres[i]);
        EXPECT_EQ(block.getEq(centres[i]), static_cast<int>(i));
        EXPECT_EQ(rawValue(block.equalizerArray[i]), i);
    }
    block.setEq(block.maxEQValue() - 1, 500);
    EXPECT_EQ(block.getEq(500), block.maxEQValue() - 1);
    for (const int outside : { 99, -1, block.maxEQValue() }) {
        block.setEq(5, 500);
        block.setEq(outside, 500);
        EXPECT_EQ(block.getEq(500), 0); // the lowest gain
    }
}

TEST(AuriskA4Dsp, KeepsADirectionInTheGainsAndTheTwoLowestBands)
{
    const struct {
        AuriskDirection direction;
        Data bytes; // of a block of zeros: the gains lie in bits 3 to 8, the bands in the third byte
    } cases[] = {
        { AuriskDirection::normal, "70 00 61 00 00 00 00 00 00 00 00 00"_bytes },
        { AuriskDirection::tv, "70 00 94 00 00 00 00 00 00 00 00 00"_bytes },
        { AuriskDirection::meeting, "70 01 81 00 00 00 00 00 00 00 00 00"_bytes },
        { AuriskDirection::face, "B0 01 91 00 00 00 00 00 00 00 00 00"_bytes },
    };
    for (const auto& [direction, bytes] : cases) {
        AuriskA4Dsp block(Data(12));
        EXPECT_EQ(block.direction(), AuriskDirection::unknown);
        block.setDirection(direction);
        EXPECT_EQ(block.toBytes(), bytes) << caseName(direction);
        EXPECT_EQ(block.direction(), direction);
        block.setDirection(AuriskDirection::unknown);
        EXPECT_EQ(block.direction(), direction);
        for (const std::size_t byte : { 1U, 2U }) { // one of the four is not enough to be another
            auto spoilt = bytes;
            spoilt[byte] ^= 0x01;
            EXPECT_NE(AuriskA4Dsp(spoilt).direction(), direction);
        }
    }
}

TEST(AuriskA16Dsp, KeepsADirectionInItsInputModeAlone)
{
    const std::map<int, AuriskDirection> known = { { 0, AuriskDirection::normal }, { 4, AuriskDirection::tv },
        { 8, AuriskDirection::meeting }, { 9, AuriskDirection::face } };
    for (int mode = 0; mode < 16; ++mode) {
        AuriskA16Dsp block;
        block.inputMode = static_cast<AuriskA16DspEnum::InputMode>(mode);
        const auto expected = known.contains(mode) ? known.at(mode) : AuriskDirection::unknown;
        EXPECT_EQ(block.direction(), expected) << mode;
        block.setDirection(AuriskDirection::unknown);
        EXPECT_EQ(rawValue(block.inputMode), mode);
        AuriskA16Dsp other;
        other.setDirection(expected);
        EXPECT_EQ(rawValue(other.inputMode), known.contains(mode) ? mode : 0);
    }
}

TEST(AuriskA16Dsp, HasFiveStepsOfNoiseReductionForFour)
{
    using enum AuriskNoise;
    const AuriskNoise read[] = { off, weak, off, medium, strong };
    for (int step = 0; step < 5; ++step) {
        AuriskA16Dsp block;
        block.noiseReduction = static_cast<AuriskA16DspEnum::NoiseReduction>(step);
        EXPECT_EQ(block.noise(), read[step]) << step;
    }
    const int written[] = { 0, 1, 3, 4 };
    for (const auto noise : { off, weak, medium, strong }) {
        AuriskA16Dsp a16;
        a16.setNoise(noise);
        EXPECT_EQ(rawValue(a16.noiseReduction), written[static_cast<int>(noise)]);
        EXPECT_EQ(a16.noise(), noise);
        AuriskA4Dsp a4; // here the steps are the same
        a4.setNoise(noise);
        EXPECT_EQ(rawValue(a4.noiseReduction), static_cast<int>(noise));
        EXPECT_EQ(a4.noise(), noise);
    }
}

TEST(AuriskA16Dsp, HasAValueOfEachKindForEachBand)
{
    using namespace AuriskA16DspEnum;
    AuriskA16Dsp block;
    EXPECT_EQ(block.getEqualizerGain(FrequencyBand::hz7500), EqualizerGain::db0);
    EXPECT_EQ(block.getCompressionThreshold(FrequencyBand::hz250), CompressionThreshold::db40);
    EXPECT_EQ(block.getMaximumPowerOutput(FrequencyBand::hz250), MaximumPowerOutput::muo);
    block.setEqualizerGain(EqualizerGain::dbMinus2, FrequencyBand::hz500);
    block.setCompressionRatio(CompressionRatio::ratio8_00, FrequencyBand::hz1000);
    block.setCompressionConstant(CompressionConstant::constant8, FrequencyBand::hz1500);
    block.setCompressionThreshold(CompressionThreshold::db82, FrequencyBand::hz7000);
    block.setMaximumPowerOutput(MaximumPowerOutput::dbMinus28, FrequencyBand::hz7500);
    EXPECT_EQ(rawValue(block.equalizerArray[1]), 19);
    EXPECT_EQ(rawValue(block.compressionRatioArray[2]), 35);
    EXPECT_EQ(rawValue(block.compressionConstantArray[3]), 8);
    EXPECT_EQ(rawValue(block.compressionThresholdArray[14]), 31);
    EXPECT_EQ(rawValue(block.maximumPowerOutputArray[15]), 15);
    EXPECT_EQ(block.getCompressionRatio(FrequencyBand::hz1000), CompressionRatio::ratio8_00);
    EXPECT_EQ(block.getCompressionConstant(FrequencyBand::hz1500), CompressionConstant::constant8);

    constexpr auto noBand = static_cast<FrequencyBand>(16);
    const auto untouched = block;
    block.setMaximumPowerOutput(MaximumPowerOutput::off, noBand);
    block.setEqualizerGain(EqualizerGain::dbMinus40, noBand);
    EXPECT_EQ(block, untouched);
    EXPECT_EQ(block.getMaximumPowerOutput(noBand), MaximumPowerOutput::muo);
    EXPECT_EQ(block.getCompressionThreshold(noBand), CompressionThreshold::db40);
    EXPECT_EQ(block.getEqualizerGain(noBand), EqualizerGain::db0);
    AuriskA4Dsp a4;
    constexpr auto noBandOfA4 = static_cast<AuriskA4DspEnum::FrequencyBand>(12);
    a4.setEqualizerGain(AuriskA4DspEnum::EqualizerGain::dbMinus30, noBandOfA4);
    EXPECT_EQ(a4, AuriskA4Dsp());
    EXPECT_EQ(a4.getEqualizerGain(noBandOfA4), AuriskA4DspEnum::EqualizerGain::db0);
}

TEST(AuriskDsp, IsDescribedByItsLabels)
{
    AuriskA4Dsp a4("4E 81 00 00 00 00 00 00 00 60 0E 04"_bytes);
    a4.setMatrixGain(6);
    EXPECT_EQ(description(AuriskDsp(a4)),
        "AuriskA4Dsp:\n- Input Mode: AI0+AI3(TC+MIC2)\n- PreGain Mic1: 12 dB\n- PreGain Mic2: 24 dB\n- Matrix Gain: -6 "
        "dB\n- Feedback Canceler: On\n- Noise Reduction: Medium(-10dB)\n- Low Cut: 3000 Hz\n- High Cut: 4000 Hz\n- "
        "Compression Threshold: 70 dB\n- Maximum Power Output: Max Undistorted Output (MUO)");

    AuriskA16Dsp a16;
    a16.setDirection(AuriskDirection::tv);
    a16.analogPreGainP0 = AuriskA16DspEnum::AnalogPreGain::db36;
    a16.digitalPreGainP2 = AuriskA16DspEnum::DigitalPreGain::db18;
    a16.lowLevelExpansion = AuriskA16DspEnum::SwitchState::on;
    a16.remoteMixRatio = AuriskA16DspEnum::RemoteMixRatio::dbMinus12;
    a16.mpoReleaseTime = AuriskA16DspEnum::MPOReleaseTime::ms350;
    EXPECT_EQ(description(AuriskDsp(a16)),
        "AuriskA16Dsp:\n- Input Mode: Fixed Cardioid (AI1-AI3)\n- Analog PreGain P0: 36 dB\n- Analog PreGain P1: 0 "
        "dB\n- "
        "Digital PreGain P1: 0 dB\n- Digital PreGain P2: 18 dB\n- Matrix Gain: -42 dB\n- Feedback Canceler: OFF\n- "
        "Noise "
        "Reduction: Off\n- Low Level Expansion: On\n- Wind Noise Reduction: Off\n- Low Cut Filter: Off\n- Remote Mix "
        "Ratio: -12 dB\n- MPO Attack Time: 10 ms\n- MPO Release Time: 350 ms");
}

} // namespace
} // namespace aurisk::tests
