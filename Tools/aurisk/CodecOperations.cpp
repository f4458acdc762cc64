#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"

#include <algorithm>
#include <iterator>

namespace aurisk::codec {

namespace {

Answer encodeFrame(const Members& line)
{
    const auto cmd = line.get<std::uint8_t>("cmd"), di0 = line.get<std::uint8_t>("di0"),
               di1 = line.get<std::uint8_t>("di1");
    return toJson(AuriskRawData::make(cmd, di0, di1, line.get<std::optional<Data>>("data")).toData());
}

Answer decodeResult(const Members& line)
{
    const auto frame = AuriskRawData::parse(line.get<Data>("bytes"));
    return frame ? toJson(frame->toResult()) : Answer();
}

constexpr Operation operations[] = {
    { "hex.toBytes", [](const Members& line) { return toJson(ask_hexadecimal(line.get<std::string>("text"))); } },
    { "hex.fromBytes", [](const Members& line) { return toJson(ask_hexadecimal(line.get<Data>("bytes"))); } },
    { "frame.encode", encodeFrame },
    { "frame.decode", [](const Members& line) { return toJson(AuriskRawData::parse(line.get<Data>("bytes"))); } },
    { "request.encode",
        [](const Members& line) { return toJson(line.get<AuriskRequest>("request").requestRawData().toData()); } },
    { "result.decode", decodeResult },
    { "manudata.decode", [](const Members& line) { return toJson(AuriskManuData(line.get<Data>("bytes"))); } },
    { "select", selectAccessory },
    { "enum", listEnumeration },
};

} // namespace

const Operation* operation(std::string_view name)
{
    const auto found
        = std::find_if(std::begin(operations), std::end(operations), [&](const auto& row) { return row.name == name; });
    return found == std::end(operations) ? nullptr : found;
}

} // namespace aurisk::codec
