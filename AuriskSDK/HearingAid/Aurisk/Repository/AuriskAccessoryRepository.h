#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/JsonError.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace aurisk {

/// The default data of one model of hearing aid, or of a group of models: a pattern or a receiver that is not named is
/// any. An AuriskResourceBundle holds them; a profile holds the one of its device.
struct AuriskAccessoryRepository {
    std::string skuCode = {};
    std::string patternCode = {}; ///< empty: any
    std::optional<std::uint8_t> hornPowerCode = {}; ///< the power of the receiver; none: any
    std::string shape = {};
    int minVolume = 0;
    int maxVolume = 0;
    bool listenable = false;
    Data dspData = {}; ///< a program's block; empty where there is none, as the next two
    Data globalData = {}; ///< the block that all programs share
    Data hollingData = {}; ///< not interpreted; the spelling is part of the interface

    /// What else the JSON said, by its keys, each a JSON text. It is kept, and means nothing here.
    std::map<std::string, std::string> others = {};

    static constexpr auto fields = labelled("AuriskAccessoryRepository",
        label("skuCode", &AuriskAccessoryRepository::skuCode),
        label("patternCode", &AuriskAccessoryRepository::patternCode),
        label("hornPowerCode", &AuriskAccessoryRepository::hornPowerCode),
        label("shape", &AuriskAccessoryRepository::shape), label("minVolume", &AuriskAccessoryRepository::minVolume),
        label("maxVolume", &AuriskAccessoryRepository::maxVolume),
        label("listenable", &AuriskAccessoryRepository::listenable),
        label("dspData", &AuriskAccessoryRepository::dspData),
        label("globalData", &AuriskAccessoryRepository::globalData),
        label("hollingData", &AuriskAccessoryRepository::hollingData));

    /// Bytes are hexadecimal text. Missing keys have their defaults, all of them where the value is null. Throws
    /// JsonError.
    static AuriskAccessoryRepository fromJson(const nlohmann::json& object);
    nlohmann::ordered_json toJson() const;

    friend bool operator==(const AuriskAccessoryRepository&, const AuriskAccessoryRepository&) = default;
};

} // namespace aurisk
