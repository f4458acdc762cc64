#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"
#include "AuriskSDK/Shared/Utils/JsonError.h"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace aurisk {

/// How the programs of a device were fitted: 3 bytes. A value's bits beyond its place there (4 for a mode, 3 for
/// `mode1`, 1 for `experience`) do not travel.
struct AuriskModeConfig {
    std::uint8_t experience = 0;
    std::uint8_t mode1 = 0; ///< a bit shorter than the others, whose bit `experience` has
    std::uint8_t mode2 = 1;
    std::uint8_t mode3 = 2;
    std::uint8_t mode4 = 3;
    std::uint8_t mode5 = 4;
    std::uint8_t mode6 = 5;

    AuriskModeConfig() = default;

    /// Decodes the first 3 of `bytes`. From fewer it has the defaults, with a line on standard output.
    explicit AuriskModeConfig(DataView bytes);

    Data toBytes() const;

    /// Throws JsonError. Missing keys have their defaults, others are ignored.
    static AuriskModeConfig fromJson(const nlohmann::json& object);
    nlohmann::ordered_json toJson() const;

    friend bool operator==(const AuriskModeConfig&, const AuriskModeConfig&) = default;
};

/// The wearer's age and sex. Bits beyond the low 7 of `age` and the lowest of `sex` do not travel.
struct AuriskAgeConfig {
    std::uint8_t age = 0; ///< years, 0 to 127
    std::uint8_t sex = 0; ///< 0 or 1

    /// Throws JsonError. Missing keys have their defaults, others are ignored.
    static AuriskAgeConfig fromJson(const nlohmann::json& object);
    nlohmann::ordered_json toJson() const;

    friend bool operator==(const AuriskAgeConfig&, const AuriskAgeConfig&) = default;
};

/// The profile field `productReserved`: what the device was fitted with and for whom, in 20 bytes.
struct AuriskProfileReservedField {
    std::uint16_t hornCode = 0;
    std::uint16_t microphoneCode = 0;
    std::uint16_t headsetCode = 0;
    std::uint8_t acCode = 0;
    std::uint8_t aidChipCode = 0;
    std::uint8_t hornPowerCode = 0;
    std::uint8_t formula = 0;
    std::uint8_t ext1 = 0;
    std::uint8_t ext2 = 0;
    std::uint8_t ext3 = 0;
    std::uint8_t ext4 = 0;
    std::uint8_t ext5 = 0;
    std::uint8_t ext6 = 0;
    AuriskModeConfig modeConfig = {};
    AuriskAgeConfig ageConfig = {};

    AuriskProfileReservedField() = default;

    /// Decodes the first 20 of `data`. From fewer it has the defaults.
    explicit AuriskProfileReservedField(DataView data) { setData(data); }

    /// The same, but fewer than 20 change nothing.
    void setData(DataView data);

    /// The same, with none for fewer than 20.
    static std::optional<AuriskProfileReservedField> decode(DataView data);

    /// 20 bytes.
    Data toData() const;

    /// Throws JsonError. Missing keys have their defaults, others are ignored.
    static AuriskProfileReservedField fromJson(const nlohmann::json& object);
    nlohmann::ordered_json toJson() const;

    friend bool operator==(const AuriskProfileReservedField&, const AuriskProfileReservedField&) = default;
};

namespace bits {

template <>
inline constexpr auto layoutOf<AuriskModeConfig> = [] {
    using D = AuriskModeConfig;
    return std::tuple{
        Field<&D::experience>{ "experience", 1 },
        Field<&D::mode1>{ "mode1", 3 },
        Field<&D::mode2>{ "mode2", 4 },
        Field<&D::mode3>{ "mode3", 4 },
        Field<&D::mode4>{ "mode4", 4 },
        Field<&D::mode5>{ "mode5", 4 },
        Field<&D::mode6>{ "mode6", 4 },
    };
}();
static_assert(bitCount<AuriskModeConfig>() == 3 * 8);

template <>
inline constexpr auto layoutOf<AuriskAgeConfig> = std::tuple{
    Field<&AuriskAgeConfig::age>{ "age", 7 },
    Field<&AuriskAgeConfig::sex>{ "sex", 1 },
};
static_assert(bitCount<AuriskAgeConfig>() == 8);

template <>
inline constexpr auto layoutOf<AuriskProfileReservedField> = [] {
    using D = AuriskProfileReservedField;
    return std::tuple{
        Field<&D::hornCode>{ "hornCode", 16 },
        Field<&D::microphoneCode>{ "microphoneCode", 16 },
        Field<&D::headsetCode>{ "headsetCode", 16 },
        Field<&D::acCode>{ "acCode", 8 },
        Field<&D::aidChipCode>{ "aidChipCode", 8 },
        Field<&D::hornPowerCode>{ "hornPowerCode", 8 },
        Field<&D::formula>{ "formula", 8 },
        Field<&D::ext1>{ "ext1", 8 },
        Field<&D::ext2>{ "ext2", 8 },
        Field<&D::ext3>{ "ext3", 8 },
        Field<&D::ext4>{ "ext4", 8 },
        Field<&D::ext5>{ "ext5", 8 },
        Field<&D::ext6>{ "ext6", 8 },
        Inner<&D::modeConfig>{ "modeConfig" },
        Inner<&D::ageConfig>{ "ageConfig" },
    };
}();
static_assert(bitCount<AuriskProfileReservedField>() == 20 * 8);
static_assert(bitOf<AuriskProfileReservedField>("acCode") == 6 * 8);
static_assert(bitOf<AuriskProfileReservedField>("ext1") == 10 * 8);
static_assert(bitOf<AuriskProfileReservedField>("modeConfig") == 16 * 8);

} // namespace bits

} // namespace aurisk
