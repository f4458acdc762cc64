#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

// Replies carry the request's command plus 0x80 when it was done, plus 0xC0 when it was refused.
constexpr std::uint8_t readReply = 0x91, writeReply = 0x94, controlReply = 0x9C, auxiliaryReply = 0x9D,
                       notification = 0x9F;
constexpr std::uint8_t readRefused = 0xD1, writeRefused = 0xD4, controlRefused = 0xDC, auxiliaryRefused = 0xDD;

std::uint8_t firstByte(const Data& payload, std::string_view what)
{
    precondition(!payload.empty(), "{}: a reply without a byte where one is read", what);
    return payload.front();
}

AuriskResponse programAndVolume(std::uint8_t di0, const Data& payload)
{
    constexpr std::uint8_t currentProgramAlone = 0x00, allPrograms = 0xFF;
    const int first = firstByte(payload, "program and volume");
    if (di0 == currentProgramAlone)
        return AuriskResponse::didReadProgram{ .program = first, .volume = {} };
    if (di0 != allPrograms)
        return AuriskResponse::didReadProgram{ .program = di0 - 1, .volume = first };

    // The current program, counted from 1, then the volume of each program.
    const auto current = static_cast<std::size_t>(first);
    precondition(payload.size() > current, "program {} of a reply that tells {} volumes", current, payload.size() - 1);
    return AuriskResponse::didReadProgram{ .program = first - 1, .volume = payload[current] };
}

AuriskResponse readResponse(const AuriskRawData& frame)
{
    constexpr std::uint8_t blocks = 0x03, volumes = 0x04, orientation = 0x05, profile = 0x08;
    constexpr std::uint8_t lastProgram = 4, globalA4 = 5, globalA16 = 6, orientationField = 0x80;

    if (!frame.di0 || !frame.di1)
        return AuriskResponse::unknown{ .data = frame };
    if (!frame.data)
        return AuriskResponse::didRequest{ .data = frame };

    const auto di0 = *frame.di0;
    const auto& payload = *frame.data;
    switch (*frame.di1) {
    case volumes: return programAndVolume(di0, payload);
    case blocks:
        if (di0 <= lastProgram)
            return AuriskResponse::didReadDsp{ .program = di0, .data = payload };
        if (di0 == globalA4 || di0 == globalA16)
            return AuriskResponse::didReadGlobal{ .data = payload };
        break;
    case profile:
        return AuriskResponse::didReadProfile{ .data = payload,
            .type = fromRawValue<AuriskProfileType>(di0).value_or(AuriskProfileType::unknown) };
    case orientation:
        if (di0 == orientationField) {
            const bool isLeft = firstByte(payload, "orientation") == 0x00;
            return AuriskResponse::didReadOrientation{ .orientation
                = isLeft ? AccessoryOrientation::left : AccessoryOrientation::right };
        }
        break;
    default: break;
    }
    return AuriskResponse::didRequest{ .data = frame };
}

AuriskResponse auxiliaryResponse(const AuriskRawData& frame)
{
    constexpr std::uint8_t hearingTest = 0x39, hearingTestSupport = 0x05, pairCode = 0xBC, transparency = 0xBE,
                           brEdr = 0xBF;
    constexpr std::uint8_t continuously = 1;

    if (frame.di0 == hearingTest && frame.di1 == hearingTestSupport)
        return AuriskResponse::didReadHearingTest{ .supported = true }; // that there is a reply means support
    if (frame.di0 && frame.data)
        switch (*frame.di0) {
        case pairCode: return AuriskResponse::didReadPairCode{ .code = *frame.data };
        case transparency:
            return AuriskResponse::didReadTransparency{ .level = firstByte(*frame.data, "transparency") };
        case brEdr: {
            const auto mode = firstByte(*frame.data, "BR/EDR");
            return AuriskResponse::didReadBrEdr{ .enable = mode != 0, .continuousIfEnable = mode == continuously };
        }
        default: break;
        }
    return AuriskResponse::didRequest{ .data = frame };
}

/// The current program, counted from 1, then the volume of each program, the first of them in the second identifier.
AuriskResponse notified(const AuriskRawData& frame)
{
    if (!frame.data)
        return AuriskResponse::unknown{ .data = frame };
    Data volumes;
    if (frame.di1)
        volumes.push_back(*frame.di1);
    volumes.insert(volumes.end(), frame.data->begin(), frame.data->end());

    precondition(frame.di0.has_value(), "a notification without a program");
    const std::size_t current = *frame.di0;
    precondition(current >= 1 && current <= volumes.size(), "program {} in a notification of {} volumes", current,
        volumes.size());
    return AuriskResponse::didNotify{ .program = static_cast<int>(current) - 1, .volume = volumes[current - 1] };
}

} // namespace

AuriskResponse AuriskRawData::toResponse() const
{
    switch (cmd) {
    case readReply: return readResponse(*this);
    case writeReply:
    case controlReply: return AuriskResponse::didRequest{ .data = *this };
    case auxiliaryReply: return auxiliaryResponse(*this);
    case notification: return notified(*this);
    default: return AuriskResponse::unknown{ .data = *this };
    }
}

AuriskResult AuriskRawData::toResult() const
{
    switch (cmd) {
    case readReply:
    case writeReply:
    case controlReply:
    case auxiliaryReply:
    case notification: return AuriskResult::success(toResponse());
    case readRefused: return AuriskResult::error(AuriskResultError::readError{});
    case writeRefused: return AuriskResult::error(AuriskResultError::writeError{});
    case controlRefused: return AuriskResult::error(AuriskResultError::controlError{});
    case auxiliaryRefused: return AuriskResult::error(AuriskResultError::btError{});
    default: return AuriskResult::error(AuriskResultError::other{ .message = "parse error" });
    }
}

std::string description(const AuriskResponse& response) { return description(response.value()); }

std::string description(const AuriskResultError& error) { return description(error.value()); }

} // namespace aurisk
