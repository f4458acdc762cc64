#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"

#include <optional>

namespace aurisk::tests {

/// The rules of what a hearing aid sends, written a second time, so that an error in the library's decoder cannot hide
/// behind itself.
struct SecondDecoding {
    enum class Kind { noFrame, stop, result };

    Kind kind = Kind::noFrame; ///< stop: taking the value apart breaks a precondition
    std::optional<AuriskRawData> frame = {}; ///< there where the value is one, also where its contents stop
    std::optional<AuriskResult> result = {};
};

namespace again {

using Kind = SecondDecoding::Kind;
using Response = AuriskResponse;

struct Stop { };

inline std::uint8_t sumOf(DataView bytes)
{
    unsigned sum = 0;
    for (const auto byte : bytes)
        sum = (sum + byte) % 256;
    return std::uint8_t(sum);
}

inline Kind kindOf(DataView received)
{
    if (received.empty())
        return Kind::stop;
    const auto b = received.subspan(1);
    const auto n = b.size();
    if (n < 6 || b[0] != 0xFE || b[1] != 0x68 || b[n - 1] != 0x16)
        return Kind::noFrame;
    if (b[3] >= 250)
        return Kind::stop;
    const bool isWhole = n == b[3] + 6U && sumOf(b.subspan(1, n - 3)) == b[n - 2];
    return isWhole ? Kind::result : Kind::noFrame;
}

inline int at(const Data& payload, std::size_t index)
{
    if (index >= payload.size())
        throw Stop();
    return payload[index];
}

inline Response readReply(const AuriskRawData& frame)
{
    const auto& v = *frame.data;
    const auto di0 = *frame.di0, di1 = *frame.di1;
    if (di1 == 0x04 && di0 == 0x00)
        return Response::didReadProgram{ .program = at(v, 0), .volume = {} };
    if (di1 == 0x04 && di0 == 0xFF)
        return Response::didReadProgram{ .program = at(v, 0) - 1, .volume = at(v, std::size_t(at(v, 0))) };
    if (di1 == 0x04)
        return Response::didReadProgram{ .program = di0 - 1, .volume = at(v, 0) };
    if (di1 == 0x03 && di0 <= 0x04)
        return Response::didReadDsp{ .program = di0, .data = v };
    if (di1 == 0x03 && di0 <= 0x06)
        return Response::didReadGlobal{ .data = v };
    if (di1 == 0x08) {
        const bool isKnown = di0 <= 0x06 || (di0 >= 0x10 && di0 <= 0x13) || (di0 >= 0x20 && di0 <= 0x22);
        return Response::didReadProfile{ .data = v,
            .type = isKnown ? AuriskProfileType(di0) : AuriskProfileType::unknown };
    }
    if (di0 == 0x80 && di1 == 0x05)
        return Response::didReadOrientation{ .orientation
            = at(v, 0) == 0x00 ? AccessoryOrientation::left : AccessoryOrientation::right };
    return Response::didRequest{ .data = frame };
}

inline Response auxiliaryReply(const AuriskRawData& frame)
{
    const auto& v = *frame.data;
    if (frame.di0 == 0x39 && frame.di1 == 0x05)
        return Response::didReadHearingTest{ .supported = true };
    if (frame.di0 == 0xBC)
        return Response::didReadPairCode{ .code = v };
    if (frame.di0 == 0xBE)
        return Response::didReadTransparency{ .level = at(v, 0) };
    if (frame.di0 == 0xBF)
        return Response::didReadBrEdr{ .enable = at(v, 0) != 0, .continuousIfEnable = at(v, 0) == 1 };
    return Response::didRequest{ .data = frame };
}

inline Response notification(const AuriskRawData& frame)
{
    const int program = *frame.di0;
    if (program == 0)
        throw Stop();
    const int volume = program == 1 ? *frame.di1 : at(*frame.data, std::size_t(program - 2));
    return Response::didNotify{ .program = program - 1, .volume = volume };
}

inline AuriskResult resultOf(const AuriskRawData& frame)
{
    using Error = AuriskResultError;
    const bool isBare = !frame.di0;
    switch (frame.cmd) {
    case 0x91: return AuriskResult::success(isBare ? Response::unknown{ .data = frame } : readReply(frame));
    case 0x94:
    case 0x9C: return AuriskResult::success(Response::didRequest{ .data = frame });
    case 0x9D: return AuriskResult::success(isBare ? Response::didRequest{ .data = frame } : auxiliaryReply(frame));
    case 0x9F: return AuriskResult::success(isBare ? Response::unknown{ .data = frame } : notification(frame));
    case 0xD1: return AuriskResult::error(Error::readError{});
    case 0xD4: return AuriskResult::error(Error::writeError{});
    case 0xDC: return AuriskResult::error(Error::controlError{});
    case 0xDD: return AuriskResult::error(Error::btError{});
    default: return AuriskResult::error(Error::other{ .message = "parse error" });
    }
}

} // namespace again

inline SecondDecoding decodeAgain(DataView received)
{
    SecondDecoding decoded{ .kind = again::kindOf(received) };
    if (decoded.kind != SecondDecoding::Kind::result)
        return decoded;
    AuriskRawData frame{ .cmd = received[3] };
    if (const auto size = received[4]; size >= 2) {
        const auto payload = received.subspan(7, size - 2U);
        frame.dataSize = size;
        frame.di0 = received[5];
        frame.di1 = received[6];
        frame.data = Data(payload.begin(), payload.end());
    }
    decoded.frame = frame;
    try {
        decoded.result = again::resultOf(frame);
    } catch (const again::Stop&) {
        decoded.kind = SecondDecoding::Kind::stop;
    }
    return decoded;
}

/// A received value that is a valid frame: the byte in front, FE 68, command, size, `body`, sum, 16.
inline Data frameAround(std::uint8_t command, DataView body)
{
    Data value;
    value.reserve(body.size() + 7);
    for (const auto byte : { 0x00, 0xFE, 0x68, int(command), int(body.size()) })
        value.push_back(std::uint8_t(byte));
    value.insert(value.end(), body.begin(), body.end());
    value.push_back(again::sumOf(DataView(value).subspan(2)));
    value.push_back(0x16);
    return value;
}

} // namespace aurisk::tests
