#include "AuriskSDK/Shared/Utils/Crc16.h"

#include <array>
#include <cstddef>

namespace aurisk {

namespace {

constexpr std::size_t stride = 8;
using Table = std::array<std::uint16_t, 256>;

/// tables[n][b]: what the division leaves of the byte b with n zero bytes and 16 zero bits behind it. With one for each
/// place in a stride, the bytes of a stride do not wait for each other.
using Tables = std::array<Table, stride>;

constexpr std::uint16_t shiftedByOne(std::uint16_t crc, std::uint16_t polynomial)
{
    return static_cast<std::uint16_t>(crc << 1 ^ ((crc & 0x8000) != 0 ? polynomial : 0));
}

constexpr Tables tablesFor(std::uint16_t polynomial)
{
    Tables tables{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        auto crc = static_cast<std::uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = shiftedByOne(crc, polynomial);
        tables[0][byte] = crc;
    }
    for (std::size_t zeros = 1; zeros < stride; ++zeros)
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const auto crc = tables[zeros - 1][byte];
            tables[zeros][byte] = static_cast<std::uint16_t>(crc << 8 ^ tables[0][crc >> 8]);
        }
    return tables;
}

constexpr std::uint16_t firmwarePolynomial = 0x1021;
constexpr Tables firmwareTables = tablesFor(firmwarePolynomial);

/// The tables of one polynomial are there already, and those of the last other one are kept.
const Tables& keptTables(std::uint16_t polynomial)
{
    if (polynomial == firmwarePolynomial)
        return firmwareTables;
    thread_local struct {
        std::uint16_t polynomial = 0;
        Tables tables{}; // those of the polynomial 0
    } kept;
    if (kept.polynomial != polynomial)
        kept = { polynomial, tablesFor(polynomial) };
    return kept.tables;
}

template <typename Bytes> std::uint16_t divided(const Tables& tables, std::uint16_t crc, Bytes byte, std::size_t count)
{
    for (; count >= stride; count -= stride, byte += stride) {
        crc = static_cast<std::uint16_t>(crc ^ (byte[0] << 8 | byte[1]));
        const auto first = static_cast<std::uint16_t>(tables[7][crc >> 8] ^ tables[6][crc & 0xFF]);
        const auto middle = tables[5][byte[2]] ^ tables[4][byte[3]] ^ tables[3][byte[4]];
        const auto last = tables[2][byte[5]] ^ tables[1][byte[6]] ^ tables[0][byte[7]];
        crc = static_cast<std::uint16_t>(first ^ middle ^ last);
    }
    for (; count > 0; --count, ++byte)
        crc = static_cast<std::uint16_t>(tables[0][(crc >> 8 ^ *byte) & 0xFF] ^ crc << 8);
    return crc;
}

} // namespace

std::vector<std::uint16_t> Crc16::generateCRCTable(std::uint16_t polynomial)
{
    const auto& table = keptTables(polynomial)[0];
    return { table.begin(), table.end() };
}

std::uint16_t Crc16::crc16(DataView data, std::uint16_t polynomial, std::uint16_t initialValue,
    std::uint16_t finalXORValue, bool reverseInput, bool reverseOutput)
{
    const auto& tables = keptTables(polynomial);
    const auto crc = reverseInput ? divided(tables, initialValue, data.rbegin(), data.size())
                                  : divided(tables, initialValue, data.begin(), data.size());
    return reverseOutput ? crc ^ finalXORValue : crc;
}

} // namespace aurisk
