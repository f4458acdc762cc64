#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <array>
#include <cstddef>
#include <string>
#include <variant>

namespace aurisk {

/// The directional setting of a program.
enum class AuriskDirection { normal, tv, meeting, face, unknown };

template <>
inline constexpr auto enumCases<AuriskDirection> = std::to_array<EnumCase<AuriskDirection>>({
    { AuriskDirection::normal, "normal" },
    { AuriskDirection::tv, "tv" },
    { AuriskDirection::meeting, "meeting" },
    { AuriskDirection::face, "face" },
    { AuriskDirection::unknown, "unknown" },
});

/// The strength of a program's noise reduction.
enum class AuriskNoise { off, weak, medium, strong };

template <>
inline constexpr auto enumCases<AuriskNoise> = std::to_array<EnumCase<AuriskNoise>>({
    { AuriskNoise::off, "off" },
    { AuriskNoise::weak, "weak" },
    { AuriskNoise::medium, "medium" },
    { AuriskNoise::strong, "strong" },
});

/// A settings block of `Size` bytes, carried whole.
template <std::size_t Size> class SettingsBlock {
public:
    SettingsBlock() = default;

    /// The first `Size` of `bytes`; fewer are a broken precondition.
    explicit SettingsBlock(DataView bytes);

    Data bytes() const { return { _bytes.begin(), _bytes.end() }; }

    friend bool operator==(const SettingsBlock&, const SettingsBlock&) = default;

private:
    std::array<std::uint8_t, Size> _bytes{};
};

/// The parameters of one program on the A4 chip.
class AuriskA4Dsp : public SettingsBlock<12> {
public:
    using SettingsBlock::SettingsBlock;
    Data toBytes() const { return bytes(); }
};

/// The parameters of one program on the A16 chip.
class AuriskA16Dsp : public SettingsBlock<56> {
public:
    using SettingsBlock::SettingsBlock;
    Data toBytes() const { return bytes(); }
};

/// The settings that all programs of an A4 chip share.
class AuriskA4GlobalDsp : public SettingsBlock<9> {
public:
    using SettingsBlock::SettingsBlock;
    Data toData() const { return bytes(); }
};

/// The settings that all programs of an A16 chip share.
class AuriskA16GlobalDsp : public SettingsBlock<12> {
public:
    using SettingsBlock::SettingsBlock;
    Data toData() const { return bytes(); }
};

/// The parameters of one program, whatever its chip.
class AuriskDsp {
public:
    AuriskDsp(AuriskA4Dsp block)
        : _block(block)
    {
    }
    AuriskDsp(AuriskA16Dsp block)
        : _block(block)
    {
    }

    const std::variant<AuriskA4Dsp, AuriskA16Dsp>& block() const { return _block; }

    /// The bytes that travel.
    Data toBytes() const;

    friend bool operator==(const AuriskDsp&, const AuriskDsp&) = default;

private:
    std::variant<AuriskA4Dsp, AuriskA16Dsp> _block;
};

/// The settings that all programs of a device share, whatever its chip.
class AuriskGlobalDsp {
public:
    AuriskGlobalDsp(AuriskA4GlobalDsp block)
        : _block(block)
    {
    }
    AuriskGlobalDsp(AuriskA16GlobalDsp block)
        : _block(block)
    {
    }

    const std::variant<AuriskA4GlobalDsp, AuriskA16GlobalDsp>& block() const { return _block; }

    /// The bytes that travel.
    Data toData() const;

    friend bool operator==(const AuriskGlobalDsp&, const AuriskGlobalDsp&) = default;

private:
    std::variant<AuriskA4GlobalDsp, AuriskA16GlobalDsp> _block;
};

std::string description(const AuriskDsp& dsp);
std::string description(const AuriskGlobalDsp& global);

} // namespace aurisk
