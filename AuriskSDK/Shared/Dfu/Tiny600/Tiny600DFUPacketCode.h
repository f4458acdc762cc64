#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// The bytes of an update over the radio chip tiny600: frames of the Aurisk protocol (AuriskRawData) with the command
/// 1D. Their first identifier names the image, 91 + type; their second what is asked:
///
///     01 start       size of the image (4), its CRC-16 (2), 0 (2), bytes of it in a packet (2)
///     02 packet      sequence number, from 1 on, low 16 bits (2); then the bytes of the image
///     03 validate    no payload
///
/// The device answers with one byte, a Tiny600DFUResultCode. Numbers are little-endian.

namespace aurisk {

/// What the device says in an update.
enum class Tiny600DFUResultCode : std::uint8_t {
    init_success = 0x11,
    init_failure = 0x12,
    space_enough = 0x13,
    space_not_enough = 0x14,
    recv_pkg_success = 0x15,
    recv_pkg_seq_failure = 0x16,
    crc_success = 0x17,
    crc_failure = 0x18,
    boot_write_ok = 0x19,
    boot_write_failure = 0x1A,
};

template <>
inline constexpr auto enumCases<Tiny600DFUResultCode> = std::to_array<EnumCase<Tiny600DFUResultCode>>({
    { Tiny600DFUResultCode::init_success, "init_success", "dfu init success" },
    { Tiny600DFUResultCode::init_failure, "init_failure", "dfu init failure" },
    { Tiny600DFUResultCode::space_enough, "space_enough", "dfu space is enough" },
    { Tiny600DFUResultCode::space_not_enough, "space_not_enough", "dfu space is not enough" },
    { Tiny600DFUResultCode::recv_pkg_success, "recv_pkg_success", "dfu did receive package" },
    { Tiny600DFUResultCode::recv_pkg_seq_failure, "recv_pkg_seq_failure", "dfu package squence is not correct" },
    { Tiny600DFUResultCode::crc_success, "crc_success", "dfu validate firmware is success" },
    { Tiny600DFUResultCode::crc_failure, "crc_failure", "dfu validate firmware is failed" },
    { Tiny600DFUResultCode::boot_write_ok, "boot_write_ok", "dfu bootloader start ok" },
    { Tiny600DFUResultCode::boot_write_failure, "boot_write_failure", "dfu bootload start failure" },
});

/// "dfu space is enough".
constexpr std::string_view description(Tiny600DFUResultCode code) { return enumCase(code)->label; }

/// What one notification of the device says.
struct Tiny600DFUResponse {
    std::optional<std::uint8_t> requestOpCode = {}; ///< what it answers, 1 to 5
    std::optional<Tiny600DFUResultCode> status = {}; ///< none where it says nothing that is known

    /// Both are none where `data` is no frame. An empty value, and one whose size byte cannot be
    /// (AuriskRawData::parse), are broken preconditions.
    static Tiny600DFUResponse parse(DataView data);

    friend bool operator==(const Tiny600DFUResponse&, const Tiny600DFUResponse&) = default;
};

/// The frames that an update writes. A packet size is the longest frame, in bytes, that one write may carry: 10 to
/// `largestPacket`, as a frame holds no more; outside it is a broken precondition.
struct Tiny600DFUFrame {
    static constexpr std::uint32_t overhead = 10; ///< of a packet: what is not image
    static constexpr std::uint32_t largestPacket = 261;

    static Data start(const DFUFirmware& firmware, std::uint32_t packetSize);

    /// The packet with the bytes of the image from `offset` on: as many as fit, and as there are; none is a broken
    /// precondition.
    static Data packet(
        const DFUFirmware& firmware, std::uint32_t packetSize, std::uint32_t sequence, std::uint32_t offset);

    static Data validate(const DFUFirmware& firmware);

    /// How many bytes of the image that packet holds.
    static std::uint32_t chunkSize(const DFUFirmware& firmware, std::uint32_t packetSize, std::uint32_t offset);
};

} // namespace aurisk
