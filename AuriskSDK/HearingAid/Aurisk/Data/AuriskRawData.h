#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstdint>
#include <optional>
#include <string>

namespace aurisk {

template <typename Response, typename Error> class RequestResult;
class AuriskResponse;
class AuriskResultError;

/// The outcome of a request: what the device says, or why it failed (AuriskResult.h).
using AuriskResult = RequestResult<AuriskResponse, AuriskResultError>;

/// One frame of the protocol, without its checksum.
///
///     FE 68 cmd size [di0 di1 payload…] sum 16        size = 2 + payload bytes
///
/// sum: the bytes from 68 to the end of the payload, modulo 256. Numbers inside payloads are little-endian.
struct AuriskRawData {
    static constexpr std::uint8_t head = 0xFE;
    static constexpr std::uint8_t begin = 0x68;
    static constexpr std::uint8_t end = 0x16;

    std::uint8_t cmd = 0;
    std::uint8_t dataSize = 2;
    std::optional<std::uint8_t> di0 = {};
    std::optional<std::uint8_t> di1 = {};
    std::optional<Data> data = {};

    /// A frame to send. A payload of more than 253 bytes is a broken precondition.
    static AuriskRawData make(std::uint8_t cmd, std::uint8_t di0, std::uint8_t di1, std::optional<Data> data = {});

    /// Takes a received value apart: one byte that is not part of the frame, then the frame. None where it is no valid
    /// frame. A size byte of 0 or 1 leaves identifiers and payload absent and counts as 2. An empty value, and a size
    /// byte of 250 or more in what else looks like a frame, are broken preconditions.
    static std::optional<AuriskRawData> parse(DataView bytes);

    /// The bytes that travel, checksum included. Absent parts are left out; the size is written as it stands.
    Data toData() const;

    /// What the frame says as a reply or a notification.
    AuriskResponse toResponse() const;

    /// The outcome that a frame from a device stands for: a response, or the error that its command names.
    AuriskResult toResult() const;

    friend bool operator==(const AuriskRawData&, const AuriskRawData&) = default;
};

std::string description(const AuriskRawData& frame);

} // namespace aurisk
