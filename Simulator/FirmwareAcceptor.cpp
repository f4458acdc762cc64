#include "Simulator/FirmwareAcceptor.h"

#include "Simulator/AidFrame.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace aurisk {

namespace {

constexpr std::uint8_t updating = 0x1D, answering = 0x9D, failing = 0xDD;
constexpr std::uint8_t starting = 1, carrying = 2, validating = 3;
constexpr std::uint8_t firstType = 0x91, lastType = 0x93;

enum Status : std::uint8_t {
    initSuccess = 0x11,
    initFailure = 0x12,
    spaceEnough = 0x13,
    spaceNotEnough = 0x14,
    packetSuccess = 0x15,
    packetFailure = 0x16,
    crcSuccess = 0x17,
    crcFailure = 0x18,
    bootSuccess = 0x19,
    bootFailure = 0x1A,
};

bool isOfUpdate(const AidFrame& request)
{
    return request.command == updating && request.hasIdentifiers() && request.second() >= starting
        && request.second() <= validating;
}

Data answer(const AidFrame& request, Status status, std::uint8_t command = answering)
{
    return AidFrame{ command, { request.first(), request.second(), status } }.notified();
}

/// Polynomial 1021, from 0 on, nothing reflected.
std::uint16_t crc16(DataView bytes)
{
    std::uint32_t crc = 0;
    for (const auto byte : bytes) {
        crc ^= std::uint32_t(byte) << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc << 1 ^ ((crc & 0x8000) != 0 ? 0x1021u : 0u);
    }
    return std::uint16_t(crc);
}

} // namespace

std::string versionOf(DataView image)
{
    constexpr std::string_view mark = "version ";
    constexpr std::size_t longest = 32;
    const auto isPrintable = [](std::uint8_t byte) { return byte > ' ' && byte <= '~'; };
    if (image.size() > mark.size() && std::equal(mark.begin(), mark.end(), image.begin())) {
        const auto rest = image.subspan(mark.size());
        const auto end = std::find_if_not(rest.begin(), rest.end(), isPrintable);
        const auto length = std::size_t(end - rest.begin());
        if (length >= 1 && length <= longest && end != rest.end() && *end == '\n')
            return { rest.begin(), end };
    }
    const auto crc = crc16(image);
    return "0." + std::to_string(crc >> 8) + "." + std::to_string(crc & 0xFF);
}

FirmwareAcceptor::Reaction FirmwareAcceptor::didReceive(const AidFrame& request, const AuriskFirmware& firmware)
{
    if (!isOfUpdate(request))
        return {};
    switch (request.second()) {
    case starting: return begin(request, firmware);
    case carrying: return append(request, firmware);
    default: return validate(request, firmware);
    }
}

FirmwareAcceptor::Reaction FirmwareAcceptor::refuse(const AidFrame& request)
{
    if (!isOfUpdate(request))
        return {};
    _transfer.reset();
    switch (request.second()) {
    case starting: return { { answer(request, initFailure) } };
    case carrying: return { { answer(request, packetFailure) } };
    default: return { { answer(request, crcFailure) } };
    }
}

FirmwareAcceptor::Reaction FirmwareAcceptor::begin(const AidFrame& request, const AuriskFirmware& firmware)
{
    _transfer = Transfer::announcedBy(request);
    if (!_transfer || firmware.fails == FirmwareFailure::init)
        return refuse(request);
    if (std::int64_t(_transfer->size) > firmware.diskSize || firmware.fails == FirmwareFailure::space) {
        _transfer.reset();
        return { { answer(request, initSuccess), answer(request, spaceNotEnough) } };
    }
    return { { answer(request, initSuccess), answer(request, spaceEnough) } };
}

FirmwareAcceptor::Reaction FirmwareAcceptor::append(const AidFrame& request, const AuriskFirmware& firmware)
{
    if (!_transfer || !_transfer->isNext(request))
        return refuse(request);
    if (firmware.fails == FirmwareFailure::sequence && _transfer->packets + 1 == firmware.failsAt)
        return refuse(request);
    _transfer->append(request);
    return { { answer(request, packetSuccess) } };
}

FirmwareAcceptor::Reaction FirmwareAcceptor::validate(const AidFrame& request, const AuriskFirmware& firmware)
{
    if (!_transfer || !_transfer->isComplete(request) || firmware.fails == FirmwareFailure::crc)
        return refuse(request);
    auto image = std::exchange(_transfer, {})->image;
    if (firmware.fails == FirmwareFailure::boot)
        return { { answer(request, crcSuccess), answer(request, bootFailure) } };
    if (firmware.fails == FirmwareFailure::bootError)
        return { { answer(request, crcSuccess), answer(request, bootFailure, failing) } };
    return { { answer(request, crcSuccess), answer(request, bootSuccess) }, std::move(image) };
}

std::optional<FirmwareAcceptor::Transfer> FirmwareAcceptor::Transfer::announcedBy(const AidFrame& start)
{
    const auto payload = start.payload();
    if (payload.size() != 10 || start.first() < firstType || start.first() > lastType)
        return std::nullopt;
    Transfer transfer;
    transfer.image.type = start.first() - firstType;
    transfer.size = std::size_t(littleEndian(payload.first(4)));
    transfer.crc = std::uint16_t(littleEndian(payload.subspan(4, 2)));
    transfer.chunkSize = std::size_t(littleEndian(payload.last(2)));
    return transfer.size > 0 && transfer.chunkSize > 0 ? std::optional(std::move(transfer)) : std::nullopt;
}

bool FirmwareAcceptor::Transfer::isNext(const AidFrame& data) const
{
    const auto payload = data.payload();
    const auto missing = size - image.bytes.size();
    return data.first() == firstType + image.type && missing > 0 && payload.size() == 2 + std::min(chunkSize, missing)
        && littleEndian(payload.first(2)) == std::uint16_t(packets + 1);
}

void FirmwareAcceptor::Transfer::append(const AidFrame& data)
{
    const auto chunk = data.payload().subspan(2);
    image.bytes.insert(image.bytes.end(), chunk.begin(), chunk.end());
    ++packets;
}

bool FirmwareAcceptor::Transfer::isComplete(const AidFrame& validate) const
{
    return validate.first() == firstType + image.type && validate.payload().empty() && image.bytes.size() == size
        && crc16(image.bytes) == crc;
}

} // namespace aurisk
