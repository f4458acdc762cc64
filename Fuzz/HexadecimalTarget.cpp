#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Fuzz/FuzzTargets.h"

#include <cctype>

namespace aurisk::fuzz {

namespace {

/// Each run of digits is cut into pairs; a digit left over is a byte by itself.
std::size_t byteCount(DataView text)
{
    std::size_t count = 0, run = 0;
    for (const auto character : text) {
        if (std::isxdigit(character)) {
            ++run;
            continue;
        }
        count += (run + 1) / 2;
        run = 0;
    }
    return count + (run + 1) / 2;
}

std::string upperCase(DataView text)
{
    std::string result;
    for (const auto character : text)
        result += char(std::toupper(character));
    return result;
}

} // namespace

void hexadecimal(DataView input)
{
    const std::string text(input.begin(), input.end());
    const auto bytes = ask_hexadecimal(text);
    require((bytes ? bytes->size() : 0) == byteCount(input), "text gave another number of bytes");
    require(!bytes || !bytes->empty(), "text without a digit gave bytes");
    if (bytes)
        require(ask_hexadecimal(ask_hexadecimal(*bytes)) == bytes, "bytes did not survive being written and read");

    if (const auto uuid = CBUUID::fromString(text)) {
        require(CBUUID::fromString(uuid->uuidString()) == uuid, "a UUID did not survive being written and read");
        require(text.size() == 4 || text.size() == 36, "text of this length is no UUID");
        require(upperCase(input).find(uuid->uuidString()) != std::string::npos, "a UUID was read as another");
    }
}

} // namespace aurisk::fuzz
