#include "Simulator/AuriskFactory.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/AuriskAidState.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace aurisk {

namespace {

constexpr std::uint8_t a4 = 0x00, h01 = 0x01, a16 = 0x06;

constexpr AuriskBlockFormat formats[] = { { a4, 12, 9, 0x05 }, { h01, 12, 9, 0x05 }, { a16, 56, 12, 0x06 } };

/// For the a4 and the h01. All four: microphone 1, 12 dB less in the matrix, feedback canceler and expansion on, and a
/// curve for ears that hear the lower half of the voice better than the upper one. The five highest bits of the last
/// byte are the aid's own: 2.
constexpr const char* smallBlocks[] = {
    // Gains 27 and 12 dB, bands 1 6 8 9 10 11 12 12 13 14 14 15. Ratios 1 2 3 4 from 50 dB on, from 200 Hz on, at most
    // -4 dB, noise reduction low.
    "71d0 6198baccedfe d1a8 4012",
    // Gains 27 and 12 dB, bands 4 9 10 10 11 11 12 12 12 13 13 14. Ratios 1 1 2 2 from 50 dB on, no noise reduction.
    "71d0 94aabbccdced 89a4 4010",
    // Gains 27 and 24 dB, bands 1 8 9 10 11 12 13 13 14 14 14 13. Ratios 2 3 4 4 from 45 dB on, from 500 Hz on, noise
    // reduction medium.
    "71d1 81a9cbddeede 1a99 4114",
    // Gains 27 and 27 dB, bands 1 9 8 10 12 13 14 14 14 13 12 11. Ratios 2 4 4 5 from 45 dB on, from 750 Hz on, at most
    // -8 dB, noise reduction high.
    "b1d1 91a8dceedebc 229b 8216",
};

/// For the a16. All four: gains 24 dB and 6 dB, 12 dB less in the matrix, low-level expansion, thresholds that fall
/// from 52 to 46 dB, output limits of -2 to -6 dB, attack 10 ms, release 80 ms. Some of the aid's own bits are set: 2
/// before the first band, 1 after the sixth, 1 after the release.
constexpr const char* largeBlocks[] = {
    // Microphone 1. Bands 6 7 8 9 10 11, 12 13 14 15 16 16, 17 17 18 18; ratios 5 5 6 7 8 9 10, 11 12 13 14 15,
    // 15 16 16 16; constants 4. Feedback canceler normal, noise reduction low, mix -3 dB, from 250 Hz.
    "80586849 e6a0a456acb90721314a59 14c681240a0bd3380f0f0441 4444444444444444"
    "10f0bdf71cceb9d61aadb5 9911222222323344c810",
    // Fixed cardioid. Bands 9 9 10 11 12 12, 13 14 14 15 15 16, 16 16 17 17; ratios 3 3 4 4 5 5 6, 7 8 8 9 10,
    // 10 11 11 11; constants 5. Feedback canceler normal, no noise reduction, mix 0 dB, no filter.
    "84586848 29a9c558cdb9f72010c638 0c045114060782240acab22c 5555555555555555"
    "10f0bdf71cceb9d61aadb5 99112222223233444800",
    // Adaptive super-cardioid. Bands 4 5 7 9 11 12, 13 14 15 16 17 17, 17 16 16 15; ratios 5 6 7 9 11 12 13,
    // 14 15 16 16 17, 17 17 18 18; constants 4. Feedback canceler normal, noise reduction high, mix -6 dB, from 750 Hz.
    "8858684b a49cb458cd3d182311c257 1847b2300dce034111512449 4444444444444444"
    "10f0bdf71cceb9d61aadb5 99112222223233444831",
    // Adaptive hyper-cardioid. Bands 2 3 5 8 11 13, 14 15 16 17 18 18, 17 16 15 14; ratios 5 6 8 10 12 14 15,
    // 16 17 18 19 19, 20 20 20 20; constants 4. Feedback canceler aggressive, noise reduction max, and against wind;
    // mix -12 dB, from 1250 Hz.
    "8958a85c 6214b45aeec12825113e57 1888c2380f50244d13144551 4444444444444444"
    "10f0bdf71cceb9d61aadb5 99112222223233444852",
};

/// Volume control in 4 steps of size 2, on at 8; prompts and tones on; settings saved by themselves. The number of
/// programs, 0 here, belongs into byte 2 from bit 6 on, and into byte 3 from bit 5 on.
constexpr const char* smallGlobalBlock = "804519000c2520200b";
constexpr const char* largeGlobalBlock = "358540091342499b6ad60300";

constexpr AuriskProfileField profileFields[] = {
    { 0x00, "productSeries" },
    { 0x01, "productPattern" },
    { 0x02, "productHard" },
    { 0x03, "productSoft" },
    { 0x04, "productSku" },
    { 0x05, "productReserved", false },
    { 0x06, "productSeriesCode" },
    { 0x10, "bluetoothHardPattern" },
    { 0x11, "bluetoothHard" },
    { 0x12, "bluetoothSoft" },
    { 0x13, "advertisementName" },
    { 0x20, "ota" },
    { 0x22, "hearingAidChip" },
};

/// Receiver 3, microphone 2, headset 1, the chip (0 here), power 2, formula 1; experienced, modes 0 to 5; 64 years,
/// sex 1.
constexpr const char* reservedField = "030002000100 00 00 02 01 000000000000 113254 c0";
constexpr std::size_t chipInReservedField = 7;

Data bytesOf(const char* text) { return ask_hexadecimal(text).value(); }
Data textOf(std::string_view text) { return { text.begin(), text.end() }; }

} // namespace

const AuriskBlockFormat* blockFormatOf(std::uint8_t chip)
{
    const auto* format = std::find_if(
        std::begin(formats), std::end(formats), [chip](const auto& candidate) { return candidate.chip == chip; });
    return format == std::end(formats) ? nullptr : format;
}

Data factoryProgramBlock(std::uint8_t chip, std::size_t program)
{
    const auto& blocks = chip == a16 ? largeBlocks : smallBlocks;
    return bytesOf(blocks[program % std::size(blocks)]);
}

Data factoryGlobalBlock(std::uint8_t chip, std::size_t programCount)
{
    const bool isLarge = chip == a16;
    const std::size_t most = isLarge ? 7 : 3; // what three bits hold, or two
    auto block = bytesOf(isLarge ? largeGlobalBlock : smallGlobalBlock);
    block[isLarge ? 3 : 2] |= std::uint8_t(std::min(programCount, most) << (isLarge ? 5 : 6));
    return block;
}

std::span<const AuriskProfileField> auriskProfileFields() { return profileFields; }

std::map<std::uint8_t, Data> factoryProfile(const AuriskAidState& state)
{
    auto series = state.name;
    if (series.ends_with("-L") || series.ends_with("-R"))
        series.resize(series.size() - 2);
    const std::string chip = state.chip == a4 ? "A4" : state.chip == h01 ? "H01" : state.chip == a16 ? "A16" : "";
    auto reserved = bytesOf(reservedField);
    reserved[chipInReservedField] = state.chip;
    return {
        { 0x00, textOf(series) },
        { 0x01, textOf("RIC") },
        { 0x02, textOf("1.2") },
        { 0x03, textOf("2.3.1") },
        { 0x04, textOf(series + "-" + chip) },
        { 0x05, std::move(reserved) },
        { 0x06, textOf("S1") },
        { 0x10, textOf("B1") },
        { 0x11, textOf("1.0") },
        { 0x12, textOf("3.0.4") },
        { 0x13, textOf(state.name) },
        { 0x20, textOf("1.1") },
        { 0x22, textOf(chip) },
    };
}

} // namespace aurisk
