#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Dsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Global.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Dsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Global.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <functional>
#include <set>
#include <string>

namespace aurisk::tests {
namespace {

/// Where a value lies in a block, as the devices' documents list it.
template <typename Block> struct Slot {
    std::string name;
    unsigned bit;
    unsigned width;
    std::function<long(const Block&)> read;
};

template <typename Block> using Slots = std::vector<Slot<Block>>;

template <typename Block, typename Member>
Slot<Block> slot(const char* name, Member member, unsigned bit, unsigned width)
{
    return { name, bit, width, [member](const Block& block) { return static_cast<long>(block.*member); } };
}
#define SLOT(Block, member, bit, width) slot<Block>(#member, &Block::member, bit, width)

/// Elements first ... last of an array, one after another from `bit`.
template <typename Block, typename Member>
void addBands(
    Slots<Block>& slots, const char* name, Member member, unsigned bit, unsigned width, unsigned first, unsigned last)
{
    for (auto i = first; i <= last; ++i)
        slots.push_back({ std::string(name) + "[" + std::to_string(i) + "]", bit + (i - first) * width, width,
            [=](const Block& block) { return static_cast<long>((block.*member)[i]); } });
}

Data withBit(std::size_t size, unsigned bit)
{
    Data bytes(size);
    bytes[bit / 8] = static_cast<std::uint8_t>(1 << bit % 8);
    return bytes;
}

Data bytesOf(const AuriskA4Dsp& block) { return block.toBytes(); }
Data bytesOf(const AuriskA16Dsp& block) { return block.toBytes(); }
Data bytesOf(const AuriskA4GlobalDsp& block) { return block.toData(); }
Data bytesOf(const AuriskA16GlobalDsp& block) { return block.toData(); }

/// Each bit of the block alone belongs to the slot that has it, with its weight there, and comes back as it was; the
/// bits of `withoutCase` decode to nothing.
template <typename Block>
void expectEachBitInItsPlace(std::size_t size, const Slots<Block>& slots, const std::set<unsigned>& withoutCase = {})
{
    std::set<unsigned> seen, refused;
    for (const auto& owner : slots)
        for (unsigned i = 0; i < owner.width; ++i) {
            const auto bytes = withBit(size, owner.bit + i);
            SCOPED_TRACE(owner.name + ", bit " + std::to_string(owner.bit + i));
            EXPECT_TRUE(seen.insert(owner.bit + i).second);
            const auto block = Block::decode(bytes);
            if (!block) {
                refused.insert(owner.bit + i);
                continue;
            }
            for (const auto& each : slots)
                EXPECT_EQ(each.read(*block), each.name == owner.name ? 1L << i : 0L) << each.name;
            bits::eachMember<Block>([&](const auto& part) { // by its name it is the same member
                if constexpr (!std::decay_t<decltype(part)>::isList) {
                    EXPECT_EQ(static_cast<long>(part.member(*block)), part.name == owner.name ? 1L << i : 0L);
                }
            });
            EXPECT_EQ(bytesOf(*block), bytes);
        }
    EXPECT_EQ(seen.size(), size * 8);
    EXPECT_EQ(refused, withoutCase);
}

TEST(AuriskA4Dsp, HasEachBitInItsPlace)
{
    using D = AuriskA4Dsp;
    Slots<D> slots = { SLOT(D, inputMode, 0, 3), SLOT(D, preGainMic1, 3, 3), SLOT(D, preGainMic2, 6, 3),
        SLOT(D, matrixGainMantissa, 9, 3), SLOT(D, matrixGainExponent, 12, 3), SLOT(D, feedbackCanceler, 15, 1),
        SLOT(D, compressionRatio1, 64, 3), SLOT(D, compressionRatio2, 67, 3), SLOT(D, compressionRatio3, 70, 3),
        SLOT(D, compressionRatio4, 73, 3), SLOT(D, compressionThreshold, 76, 3), SLOT(D, expansion, 79, 1),
        SLOT(D, lowCutFilter, 80, 3), SLOT(D, highCutFilter, 83, 3), SLOT(D, maximumPowerOutput, 86, 3),
        SLOT(D, noiseReduction, 89, 2), SLOT(D, notCare, 91, 5) };
    addBands(slots, "equalizerArray", &D::equalizerArray, 16, 4, 0, 11);
    expectEachBitInItsPlace(12, slots);
}

TEST(AuriskA16Dsp, HasEachBitInItsPlaceAndRefusesTheFourThatNameNoCase)
{
    using D = AuriskA16Dsp;
    Slots<D> slots = { SLOT(D, inputMode, 0, 4), SLOT(D, analogPreGainP0, 4, 4), SLOT(D, analogPreGainP1, 8, 4),
        SLOT(D, digitalPreGainP1, 12, 2), SLOT(D, digitalPreGainP2, 14, 2), SLOT(D, matrixGainMantissa, 16, 3),
        SLOT(D, matrixGainExponent, 19, 3), SLOT(D, feedbackCanceler, 22, 2), SLOT(D, noiseReduction, 24, 3),
        SLOT(D, lowLevelExpansion, 27, 1), SLOT(D, windNoiseReduction, 28, 1), SLOT(D, em0, 29, 3), SLOT(D, em1, 62, 2),
        SLOT(D, em2, 94, 2), SLOT(D, em3, 158, 2), SLOT(D, em4, 190, 2), SLOT(D, em5, 285, 3), SLOT(D, em6, 318, 2),
        SLOT(D, em7, 350, 2), SLOT(D, em8, 383, 1), SLOT(D, mpoAttackTime, 432, 3), SLOT(D, mpoReleaseTime, 435, 3),
        SLOT(D, em9, 438, 1), SLOT(D, remoteMixRatio, 439, 5), SLOT(D, lowCutInputFilter, 444, 4) };
    addBands(slots, "equalizer", &D::equalizerArray, 32, 5, 0, 5);
    addBands(slots, "equalizer", &D::equalizerArray, 64, 5, 6, 11);
    addBands(slots, "equalizer", &D::equalizerArray, 96, 5, 12, 15);
    addBands(slots, "ratio", &D::compressionRatioArray, 116, 6, 0, 6);
    addBands(slots, "ratio", &D::compressionRatioArray, 160, 6, 7, 11);
    addBands(slots, "ratio", &D::compressionRatioArray, 192, 6, 12, 15);
    addBands(slots, "constant", &D::compressionConstantArray, 216, 4, 0, 15);
    addBands(slots, "threshold", &D::compressionThresholdArray, 280, 5, 0, 0);
    addBands(slots, "threshold", &D::compressionThresholdArray, 288, 5, 1, 6);
    addBands(slots, "threshold", &D::compressionThresholdArray, 320, 5, 7, 12);
    addBands(slots, "threshold", &D::compressionThresholdArray, 352, 5, 13, 15);
    addBands(slots, "output", &D::maximumPowerOutputArray, 367, 4, 0, 3);
    addBands(slots, "output", &D::maximumPowerOutputArray, 384, 4, 4, 15);
    expectEachBitInItsPlace(56, slots, { 434, 437, 442, 443 });
}

TEST(AuriskA4GlobalDsp, HasEachBitInItsPlace)
{
    using G = AuriskA4GlobalDsp;
    expectEachBitInItsPlace<G>(9,
        { SLOT(G, nc1, 0, 2), SLOT(G, inputCal, 2, 6), SLOT(G, swMode, 8, 2), SLOT(G, vcMode, 10, 2),
            SLOT(G, vcNumSteps, 12, 3), SLOT(G, vcStepSize, 15, 3), SLOT(G, toneLevel, 18, 2), SLOT(G, toneFreq, 20, 2),
            SLOT(G, programNbr, 22, 2), SLOT(G, lcMap, 24, 2), SLOT(G, hcMap, 26, 2), SLOT(G, tkMap, 28, 2),
            SLOT(G, mpoMap, 30, 2), SLOT(G, t1Dir, 32, 1), SLOT(G, t2Dir, 33, 1), SLOT(G, vcEnable, 34, 1),
            SLOT(G, autoSave, 35, 1), SLOT(G, atc, 36, 1), SLOT(G, outMode, 37, 1), SLOT(G, wbEnable, 38, 1),
            SLOT(G, mbEnable, 39, 1), SLOT(G, timeConstants, 40, 4), SLOT(G, vcAnalogRange, 44, 3),
            SLOT(G, coilpgm, 47, 3), SLOT(G, calInput, 50, 1), SLOT(G, dirSpacing, 51, 3), SLOT(G, nc2, 54, 2),
            SLOT(G, pgmStartup, 56, 2), SLOT(G, vcStartup, 58, 5), SLOT(G, powerOnLevel, 63, 2),
            SLOT(G, powerOnDelay, 65, 2), SLOT(G, vcBeep, 67, 1), SLOT(G, nc3, 68, 4) });
}

TEST(AuriskA16GlobalDsp, HasEachBitInItsPlace)
{
    using G = AuriskA16GlobalDsp;
    expectEachBitInItsPlace<G>(12,
        { SLOT(G, swMode, 0, 2), SLOT(G, vcMode, 2, 2), SLOT(G, vcEnabled, 4, 1), SLOT(G, vcPromptMode, 5, 3),
            SLOT(G, pgmPrompt, 8, 2), SLOT(G, wrnPrompt, 10, 2), SLOT(G, vcStartUp, 12, 5), SLOT(G, pgmStartup, 17, 3),
            SLOT(G, vcNumSteps, 20, 3), SLOT(G, vcStepSize, 23, 3), SLOT(G, vcAnalogRange, 26, 3),
            SLOT(G, numberOfPrograms, 29, 3), SLOT(G, toneLevel, 32, 3), SLOT(G, toneFrequency, 35, 3),
            SLOT(G, tRef, 38, 1), SLOT(G, dirSpacing, 39, 3), SLOT(G, dirMicCalibration, 42, 5),
            SLOT(G, calInput, 47, 1), SLOT(G, adSens, 48, 2), SLOT(G, atc, 50, 1), SLOT(G, tapMode, 51, 2),
            SLOT(G, tapSensitivity, 53, 2), SLOT(G, powerOnLevel, 55, 2), SLOT(G, powerOnDelay, 57, 2),
            SLOT(G, noiseLevel, 59, 3), SLOT(G, hpEnabled, 62, 1), SLOT(G, autoSave, 63, 1),
            SLOT(G, noiseFlt1Preset, 64, 3), SLOT(G, noiseFlt2Preset, 67, 3), SLOT(G, outFlt2Index, 70, 3),
            SLOT(G, outFlt1Index, 73, 3), SLOT(G, ofEnabled, 76, 1), SLOT(G, nRef, 77, 1), SLOT(G, l1Enabled, 78, 1),
            SLOT(G, l2Enabled, 79, 1), SLOT(G, l3Enabled, 80, 1), SLOT(G, l4Enabled, 81, 1), SLOT(G, empty, 82, 14) });
}

} // namespace
} // namespace aurisk::tests
