#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Fuzz/FuzzTargets.h"
#include "Fuzz/InputReader.h"
#include "Tests/Support/PlayedAid.h"

#include <array>
#include <cstdio>

namespace aurisk::fuzz {

namespace {

constexpr std::array<const char*, 6> names = { "X1-L", "X1-R", "X1", "-L", "", "R-L-" };

bool hasSide(std::string_view name) { return name.ends_with("-L") || name.ends_with("-R"); }

bool beginsWith(const Data& mfgData, std::uint8_t first, std::uint8_t second)
{
    return mfgData.size() >= 2 && mfgData[0] == first && mfgData[1] == second;
}

/// The class of the accessory that is to be made; empty where none is.
std::string_view classFor(const Data& mfgData, std::string_view name)
{
    if (beginsWith(mfgData, 0xC6, 0x03))
        return mfgData.size() >= 7 ? "PL3Accessory" : "";
    if (!beginsWith(mfgData, 0xFE, 0xFE) || mfgData.size() < 8 || !hasSide(name))
        return "";
    switch (mfgData.size() > 9 ? mfgData[9] : 0x00) {
    case 0x01: return "AuriskH01Accessory";
    case 0x06: return "AuriskA16Accessory";
    case 0x07: return "AuriskAccessory";
    default: return "AuriskA4Accessory";
    }
}

std::string addressIn(const Data& mfgData)
{
    std::string text;
    for (std::size_t i = 2; i < 8 && i < mfgData.size(); ++i) {
        std::array<char, 4> part{};
        std::snprintf(part.data(), part.size(), ":%02X", mfgData[i]);
        text += part.data();
    }
    return text.empty() ? text : text.substr(1);
}

/// What an accessory says must be what its last advertisement said, save its class, which the first decides.
void check(const PL3Accessory& accessory, const Data& mfgData)
{
    using enum AccessoryOrientation;
    require(accessory.mfgData() == mfgData, "the manufacturer data is not the last");
    require(accessory.orientation() == (mfgData[2] == 2 ? left : mfgData[2] == 3 ? right : unassigned), "another ear");
    require(accessory.manufacturerId() == mfgData[3] + 256 * mfgData[4], "the manufacturer is another");
    require(accessory.modelName() == std::to_string(mfgData[5] + 256 * mfgData[6]), "the model is another");
}

void check(const AuriskAccessory& accessory, const Data& mfgData)
{
    const bool hasChips = mfgData.size() > 9;
    require(accessory.mfgData() == mfgData, "the manufacturer data is not the last");
    require(accessory.address() == addressIn(mfgData), "the address is another");
    require(accessory.transEnable() == (hasChips && mfgData[8] >= 0x80), "transparency is another");
    const auto radio = hasChips && mfgData[8] >= 7 && mfgData[8] <= 9 ? mfgData[8] : 7;
    require(rawValue(accessory.bleChip()) == radio, "the radio chip is another");
}

} // namespace

/// Under PreconditionPolicy::contain nothing that is advertised may stop a scan.
void advertisement(DataView input)
{
    const ScopedContainPolicy contain;
    ManualDispatchQueue queue;
    const ScopedMainQueue scope(queue);
    tests::PlayedRadio radio;
    InputReader reader(input);
    const std::string name = names[reader.byte() % names.size()];
    const auto peripheral = tests::PlayedAid::create(CBUUID(0x0001), name);

    std::string_view chosen; // empty until the device has been adopted
    Data last; // of those that are long enough
    while (!reader.isEmpty()) {
        const auto piece = reader.counted();
        const Data mfgData(piece.begin(), piece.end());
        radio.hear(peripheral, { .manufacturerData = mfgData, .localName = std::nullopt });

        if (chosen.empty())
            chosen = classFor(mfgData, name);
        if (chosen != "PL3Accessory" || mfgData.size() >= 7)
            last = mfgData;
        const auto accessories = radio.manager->accessories();
        require(accessories.size() == (chosen.empty() ? 0U : 1U), "a device was adopted that is none, or was not");
        if (chosen.empty())
            continue;
        require(accessories[0]->className() == chosen, "the class is another");
        if (const auto* one = dynamic_cast<const PL3Accessory*>(accessories[0].get()))
            check(*one, last);
        else
            check(dynamic_cast<const AuriskAccessory&>(*accessories[0]), last);
    }
}

} // namespace aurisk::fuzz
