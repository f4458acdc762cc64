#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileReservedField.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileType.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProgram.h"
#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskAccessoryRepository.h"

#include <array>
#include <optional>
#include <string>

namespace aurisk {

/// What a device says of itself: the codes and versions of its parts, and what it was fitted with. Each field is read
/// and written by itself, under its AuriskProfileType. Texts are UTF-8, empty until they are known.
struct AuriskProfile {
    std::string pSeriesCode = {};
    std::string skuCode = {};
    std::string patternCode = {};
    std::string hwVersion = {};
    std::string swVersion = {};
    std::string bhwPattern = {}; ///< of the radio, as the next two
    std::string bhwVersion = {};
    std::string bswVersion = {};
    std::string hearingAidChipVersion = {};
    std::string otaVersion = {};
    std::string seriesCode = {};
    std::string adName = {}; ///< the name that the device advertises
    std::optional<AuriskProfileReservedField> reservedField = {}; ///< none until it is known
    AuriskAccessoryRepository repository = {}; ///< the default data of the device's model; no field of the device

    static constexpr auto fields = labelled("AuriskProfile", label("pSeriesCode", &AuriskProfile::pSeriesCode),
        label("skuCode", &AuriskProfile::skuCode), label("patternCode", &AuriskProfile::patternCode),
        label("hwVersion", &AuriskProfile::hwVersion), label("swVersion", &AuriskProfile::swVersion),
        label("bhwPattern", &AuriskProfile::bhwPattern), label("bhwVersion", &AuriskProfile::bhwVersion),
        label("bswVersion", &AuriskProfile::bswVersion),
        label("hearingAidChipVersion", &AuriskProfile::hearingAidChipVersion),
        label("otaVersion", &AuriskProfile::otaVersion), label("seriesCode", &AuriskProfile::seriesCode),
        label("adName", &AuriskProfile::adName), label("reservedField", &AuriskProfile::reservedField),
        label("repository", &AuriskProfile::repository));

    /// The text that travels as `type`; null for `productReserved`, which is none, and for `unknown`.
    static std::string AuriskProfile::*textOf(AuriskProfileType type);

    /// Takes a field over as it is on the device. Bytes that are no UTF-8 leave a text as it was; `productReserved`
    /// needs 20 of them; `unknown` is nothing.
    void set(AuriskProfileType type, DataView data);

    /// The scenes of the device's four programs.
    std::array<AuriskProgram, 4> programs() const;

    /// Throws JsonError. Missing keys have their defaults, others are ignored.
    static AuriskProfile fromJson(const nlohmann::json& object);
    nlohmann::ordered_json toJson() const;

    friend bool operator==(const AuriskProfile&, const AuriskProfile&) = default;
};

} // namespace aurisk
