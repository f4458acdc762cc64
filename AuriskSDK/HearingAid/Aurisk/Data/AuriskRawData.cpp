#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"

#include "AuriskSDK/Shared/Utils/LabelledCase.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/core.h>

#include <limits>
#include <numeric>

namespace aurisk {

namespace {

constexpr std::size_t identifierCount = 2;
constexpr std::size_t mostPayload = std::numeric_limits<std::uint8_t>::max() - identifierCount;
constexpr std::size_t frameOverhead = 6; // FE 68 cmd size, sum 16

/// Modulo 256.
std::uint8_t checksum(DataView bytes)
{
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

} // namespace

AuriskRawData AuriskRawData::make(std::uint8_t cmd, std::uint8_t di0, std::uint8_t di1, std::optional<Data> data)
{
    const auto payload = data ? data->size() : 0;
    precondition(payload <= mostPayload, "a frame carries at most {} bytes, not {}", mostPayload, payload);
    return { .cmd = cmd,
        .dataSize = static_cast<std::uint8_t>(payload + identifierCount),
        .di0 = di0,
        .di1 = di1,
        .data = std::move(data) };
}

std::optional<AuriskRawData> AuriskRawData::parse(DataView bytes)
{
    precondition(!bytes.empty(), "an empty value is no frame");
    const auto frame = bytes.subspan(1);
    if (frame.size() < frameOverhead || frame[0] != head || frame[1] != begin || frame.back() != end)
        return std::nullopt;

    const std::size_t size = frame[3];
    precondition(size + frameOverhead <= std::numeric_limits<std::uint8_t>::max(),
        "a frame with the size byte {} would be longer than a frame can be", size);
    if (frame.size() != size + frameOverhead || checksum(frame.subspan(1, size + 3)) != frame[frame.size() - 2])
        return std::nullopt;

    AuriskRawData parsed{ .cmd = frame[2] };
    if (size >= identifierCount) {
        const auto payload = frame.subspan(frameOverhead, size - identifierCount);
        parsed.dataSize = frame[3];
        parsed.di0 = frame[4];
        parsed.di1 = frame[5];
        parsed.data.emplace(payload.begin(), payload.end());
    }
    return parsed;
}

Data AuriskRawData::toData() const
{
    Data bytes;
    bytes.reserve(frameOverhead + identifierCount + (data ? data->size() : 0));
    bytes.insert(bytes.end(), { head, begin, cmd, dataSize });
    if (di0)
        bytes.push_back(*di0);
    if (di1)
        bytes.push_back(*di1);
    if (data)
        bytes.insert(bytes.end(), data->begin(), data->end());
    bytes.push_back(checksum(DataView(bytes).subspan(1)));
    bytes.push_back(end);
    return bytes;
}

std::string description(const AuriskRawData& frame)
{
    return fmt::format("AuriskRawData(cmd: 0x{:02X}, dataSize: {}, di0: {}, di1: {}, data: {})", frame.cmd,
        frame.dataSize, description(frame.di0), description(frame.di1), description(frame.data));
}

} // namespace aurisk
