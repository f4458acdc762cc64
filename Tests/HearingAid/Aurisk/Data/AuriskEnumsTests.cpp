#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16DspParameterLabels.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4DspParameterLabels.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fmt/format.h>

namespace aurisk::tests {
namespace {

using A4 = AuriskA4DspParameterLabels;
using A16 = AuriskA16DspParameterLabels;
namespace E4 = AuriskA4DspEnum;
namespace E16 = AuriskA16DspEnum;

/// "40 dB", "45 dB" ...
std::vector<std::string> steps(int first, int step, int count, const char* unit)
{
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i)
        texts.push_back(fmt::format("{} {}", first + i * step, unit));
    return texts;
}

std::vector<std::string> after(const char* first, std::vector<std::string> rest)
{
    rest.insert(rest.begin(), first);
    return rest;
}

TEST(Labels, ThatCountFollowTheirRule)
{
    EXPECT_EQ(A4::preampGainValues(), after("0 dB", steps(12, 3, 7, "dB")));
    EXPECT_EQ(A4::matrixGainValues(), steps(0, -1, 48, "dB"));
    EXPECT_EQ(A4::compressionThresholdsValues(), steps(40, 5, 7, "dB"));
    EXPECT_EQ(A4::maximumPowerOutputThresholdValues(), after("Max Undistorted Output (MUO)", steps(-4, -4, 6, "dB")));
    EXPECT_EQ(A4::compressionBandEQsValues(), steps(-30, 2, 16, "dB"));
    EXPECT_EQ(A16::analogPreAmpGainValues(), steps(0, 3, 13, "dB"));
    EXPECT_EQ(A16::digitalPreAmpGainValues(), steps(0, 6, 4, "dB"));
    EXPECT_EQ(A16::matrixGainValues(), steps(0, -1, 48, "dB"));
    EXPECT_EQ(A16::remoteMixValues(), steps(0, -3, 5, "dB"));
    EXPECT_EQ(A16::mpoAttackConstantsValues(), steps(10, 10, 4, "ms"));
    EXPECT_EQ(A16::compressionThresholdsValues(), steps(20, 2, 32, "dB"));
    EXPECT_EQ(A16::compressionBandEQsValues(), steps(-40, 2, 21, "dB"));
    EXPECT_EQ(A16::maximumPowerOutputThresholdValues(),
        after("Off", after("Max Undistorted Output (MUO)", steps(-2, -2, 14, "dB"))));
}

TEST(CompressionRatio, LeavesFortiethsOfTheLevelAboveTheThreshold)
{
    const auto& texts = A16::compressionRatiosValues();
    ASSERT_EQ(texts.size(), 36U);
    for (int raw = 0; raw < 36; ++raw) {
        const double expected = std::round(100 * 40.0 / (40 - raw)) / 100;
        const auto ratio = fromRawValue<E16::CompressionRatio>(raw).value();
        EXPECT_DOUBLE_EQ(ratioValue(ratio), expected);
        EXPECT_EQ(texts[static_cast<std::size_t>(raw)], fmt::format("{:.2f} : 1", expected));
    }
    EXPECT_DOUBLE_EQ(ratioValue(E16::CompressionRatio::ratio2_86), 2.86);
}

// That a name stands beside its own case, and that the number is the name's.
TEST(Values, HaveTheNumberOfTheirCase)
{
    EXPECT_EQ(valueInDB(E16::AnalogPreGain::db33), 33);
    EXPECT_EQ(valueInDB(E16::DigitalPreGain::db12), 12);
    EXPECT_EQ(valueInDB(E16::MatrixGain::dbMinus31), -31);
    EXPECT_EQ(valueInDB(E16::RemoteMixRatio::dbMinus9), -9);
    EXPECT_EQ(valueInDB(E16::EqualizerGain::dbMinus38), -38);
    EXPECT_EQ(frequency(E16::LowCutFilter::off), std::nullopt);
    EXPECT_EQ(frequency(E16::LowCutFilter::hz1250), 1250);
    EXPECT_EQ(frequency(E16::FrequencyBand::hz5500), 5500);
    EXPECT_EQ(timeInMS(E16::MPOAttackTime::ms30), 30);
    EXPECT_EQ(timeInMS(E16::MPOReleaseTime::ms150), 150);
    EXPECT_EQ(thresholdInDB(E16::CompressionThreshold::db64), 64);
    EXPECT_EQ(displayName(E16::MaximumPowerOutput::dbMinus14), "-14 dB");
    EXPECT_EQ(displayName(E16::MaximumPowerOutput::muo), "Max Undistorted Output (MUO)");
    EXPECT_EQ(displayName(E4::PreampGain::db21), "21 dB");
    EXPECT_EQ(displayName(E4::HighCutFilter::hz8000), "8000(off)");
    EXPECT_EQ(displayName(E16::InputMode::mic1DAI), "Mic1 + (DAI or Streaming)");
    EXPECT_EQ(displayName(E4::InputMode::ai1Ai2), "AI1+AI2(Mic1+DAI)");
    EXPECT_EQ(displayName(E16::NoiseReduction::medium), "Medium");
}

TEST(RawValues, NameACaseOrNone)
{
    EXPECT_EQ(fromRawValue<E4::InputMode>(6), E4::InputMode::ai0Ai3);
    for (const long long outside : { -1LL, 7LL, 1LL << 40 })
        EXPECT_EQ(fromRawValue<E4::InputMode>(outside), std::nullopt);
}

} // namespace
} // namespace aurisk::tests
