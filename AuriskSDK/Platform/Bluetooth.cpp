#include "AuriskSDK/Platform/Bluetooth.h"

#include <algorithm>

namespace aurisk {

namespace {

constexpr CBUUID::Bytes bluetoothBase
    = { 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB };

constexpr bool hyphenBeforeByte(std::size_t index) { return index == 4 || index == 6 || index == 8 || index == 10; }

int digitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

void append(std::string& text, std::uint8_t byte)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    text += digits[byte >> 4];
    text += digits[byte & 0x0F];
}

} // namespace

CBUUID::CBUUID(std::uint16_t shortForm)
    : _bytes(bluetoothBase)
{
    _bytes[2] = std::uint8_t(shortForm >> 8);
    _bytes[3] = std::uint8_t(shortForm & 0xFF);
}

std::optional<CBUUID> CBUUID::fromString(std::string_view text)
{
    const bool isShort = text.size() == 4;
    if (!isShort && text.size() != 36)
        return std::nullopt;

    auto bytes = bluetoothBase;
    const std::size_t first = isShort ? 2 : 0, last = isShort ? 4 : bytes.size();
    std::size_t position = 0;
    for (auto i = first; i < last; ++i) {
        if (!isShort && hyphenBeforeByte(i) && text[position++] != '-')
            return std::nullopt;
        const auto high = digitValue(text[position]), low = digitValue(text[position + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[i] = std::uint8_t(high << 4 | low);
        position += 2;
    }
    return CBUUID(bytes);
}

std::string CBUUID::uuidString() const
{
    const bool onBase
        = _bytes[0] == 0 && _bytes[1] == 0 && std::equal(_bytes.begin() + 4, _bytes.end(), bluetoothBase.begin() + 4);
    std::string text;
    text.reserve(36);
    const std::size_t first = onBase ? 2 : 0, last = onBase ? 4 : _bytes.size();
    for (auto i = first; i < last; ++i) {
        if (!onBase && hyphenBeforeByte(i))
            text += '-';
        append(text, _bytes[i]);
    }
    return text;
}

void CBPeripheralDelegate::peripheralDidDiscoverServices(CBPeripheral&, const MaybeError&) { }
void CBPeripheralDelegate::peripheralDidDiscoverCharacteristicsFor(
    CBPeripheral&, const std::shared_ptr<CBService>&, const MaybeError&)
{
}
void CBPeripheralDelegate::peripheralDidUpdateValueFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>&, const MaybeError&)
{
}
void CBPeripheralDelegate::peripheralDidWriteValueFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>&, const MaybeError&)
{
}
void CBPeripheralDelegate::peripheralDidUpdateNotificationStateFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>&, const MaybeError&)
{
}

} // namespace aurisk
