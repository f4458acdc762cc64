#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacketCode.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "AuriskSDK/Shared/Utils/ByteWriter.h"
#include "AuriskSDK/Shared/Utils/Crc16.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <algorithm>

namespace aurisk {

namespace {

constexpr std::uint8_t update = 0x1D, updateFailed = 0xDD, firstImage = 0x91;
constexpr std::uint8_t startCode = 1, packetCode = 2, validateCode = 3, lastCode = 5;

Data framed(const DFUFirmware& firmware, std::uint8_t opCode, std::optional<Data> payload = {})
{
    const auto image = static_cast<std::uint8_t>(firstImage + rawValue(firmware.firmwareType));
    return AuriskRawData::make(update, image, opCode, std::move(payload)).toData();
}

/// CRC-16/XMODEM.
std::uint16_t checksum(DataView image) { return Crc16::crc16(image, 0x1021, 0, 0, false, false); }

std::uint32_t chunkOf(std::uint32_t packetSize)
{
    precondition(packetSize >= Tiny600DFUFrame::overhead && packetSize <= Tiny600DFUFrame::largestPacket,
        "a packet size is {} to {} bytes, not {}", Tiny600DFUFrame::overhead, Tiny600DFUFrame::largestPacket,
        packetSize);
    return packetSize - Tiny600DFUFrame::overhead;
}

} // namespace

Tiny600DFUResponse Tiny600DFUResponse::parse(DataView data)
{
    const auto frame = AuriskRawData::parse(data);
    if (!frame || !frame->data || frame->data->empty())
        return {};
    const auto status = fromRawValue<Tiny600DFUResultCode>(frame->data->front());
    if (frame->cmd == updateFailed) // an error reply never says that something succeeded
        return { .status = status == Tiny600DFUResultCode::boot_write_failure ? status : std::nullopt };
    const auto opCode = *frame->di1;
    return { .requestOpCode = opCode >= startCode && opCode <= lastCode ? std::optional(opCode) : std::nullopt,
        .status = status };
}

Data Tiny600DFUFrame::start(const DFUFirmware& firmware, std::uint32_t packetSize)
{
    const auto chunk = chunkOf(packetSize);
    return framed(firmware, startCode,
        ByteWriter()
            .u32(exactly<std::uint32_t>(firmware.totalSize, "the size of a firmware image"))
            .u16(checksum(firmware.binaries))
            .u16(0)
            .u16(static_cast<std::uint16_t>(chunk))
            .take());
}

std::uint32_t Tiny600DFUFrame::chunkSize(const DFUFirmware& firmware, std::uint32_t packetSize, std::uint32_t offset)
{
    const auto total = exactly<std::uint32_t>(firmware.totalSize, "the size of a firmware image");
    const auto size = std::min(chunkOf(packetSize), total - std::min(offset, total));
    precondition(size > 0, "a packet of {} bytes carries nothing of {} bytes from {} on", packetSize, total, offset);
    return size;
}

Data Tiny600DFUFrame::packet(
    const DFUFirmware& firmware, std::uint32_t packetSize, std::uint32_t sequence, std::uint32_t offset)
{
    const auto size = chunkSize(firmware, packetSize, offset);
    precondition(offset + std::uint64_t(size) <= firmware.binaries.size(),
        "a firmware image of {} bytes ends before {} bytes from {} on", firmware.binaries.size(), size, offset);
    auto payload = ByteWriter().u16(static_cast<std::uint16_t>(sequence)).take();
    const auto chunk = DataView(firmware.binaries).subspan(offset, size);
    payload.insert(payload.end(), chunk.begin(), chunk.end());
    return framed(firmware, packetCode, std::move(payload));
}

Data Tiny600DFUFrame::validate(const DFUFirmware& firmware) { return framed(firmware, validateCode); }

} // namespace aurisk
