#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3BandEQ.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3CompRatio.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3CompThreshold.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3CompTime.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3InputSettings.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3ManuData.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3MpoConfig.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3Command.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

namespace aurisk::codec {

namespace {

template <typename Block> Answer blockToJson(DataView data) { return toJson(Block(data)); }

struct BlockType {
    std::string_view name;
    Answer (*toJson)(DataView data);
    std::string_view (*description)(std::uint8_t value) = nullptr; ///< where it has display texts
};

constexpr BlockType blockTypes[] = {
    { "PL3BandEQ", blockToJson<PL3BandEQ> },
    { "PL3CompRatio", blockToJson<PL3CompRatio>, PL3CompRatio::description },
    { "PL3CompTime", blockToJson<PL3CompTime>, PL3CompTime::description },
    { "PL3CompThreshold", blockToJson<PL3CompThreshold>, PL3CompThreshold::description },
    { "PL3MpoConfig", blockToJson<PL3MpoConfig>, PL3MpoConfig::description },
    { "PL3InputSettings", blockToJson<PL3InputSettings> },
};

const BlockType& readBlockType(const Members& line)
{
    const auto name = line.get<std::string>("type");
    const auto* const found = std::find_if(
        std::begin(blockTypes), std::end(blockTypes), [&](const BlockType& type) { return type.name == name; });
    if (found == std::end(blockTypes))
        throw Unusable(Place{ "type" }, shown(name) + " is the name of no block");
    return *found;
}

} // namespace

Answer encodeHdlc(const Members& line)
{
    const auto command = line.get<std::uint8_t>("command");
    const auto data = line.get<std::optional<Data>>("data");
    CHDLC frame;
    frame.create(command, data.value_or(Data{}), line.get<bool>("read"));
    auto pieces = Answer::array();
    while (frame.moreData())
        pieces.push_back(toJson(frame.getHDLC()));
    return { { "frame", toJson(frame.getHDLCAll()) }, { "pieces", pieces } };
}

Answer encodeHdlcText(const Members& line)
{
    const auto command = line.get<std::string>("command"), data = line.get<std::string>("data");
    CHDLC frame;
    const bool isBuilt = frame.create(command, data);
    return { { "result", isBuilt }, { "frame", toJson(frame.getHDLCAll()) } };
}

Answer decodeHdlc(const Members& line)
{
    const Place place{ "bytes" };
    const auto& bytes = line.at(place);
    CHDLC frame;
    if (bytes.is_array()) {
        std::vector<Data> notifications;
        for (const auto& one : bytes)
            notifications.push_back(read<Data>(one, place));
        for (const auto& one : notifications)
            frame.parse(one);
    } else
        frame.parse(read<Data>(bytes, place));
    return { { "command", frame.rcvdCommand() }, { "length", frame.rcvdLength() },
        { "data", toJson(frame.rcvdPayload()) } };
}

Answer decodePL3ManuData(const Members& line)
{
    const PL3ManuData data(line.get<Data>("bytes"));
    return { { "orientation", toJson(data.orientation) }, { "modelName", data.modelName },
        { "manufacturerId", data.manufacturerId } };
}

Answer decodePL3Block(const Members& line)
{
    const auto& type = readBlockType(line);
    return type.toJson(line.get<Data>("data"));
}

Answer describePL3Value(const Members& line)
{
    const auto& type = readBlockType(line);
    const auto value = line.get<std::uint8_t>("value");
    if (!type.description)
        throw Unusable(Place{ "type" }, std::string(type.name) + " has no display texts");
    return type.description(value);
}

Answer namePL3Command(const Members& line)
{
    const auto command = fromRawValue<PL3Command>(line.get<std::uint8_t>("rawValue"));
    if (!command)
        return {};
    return { { "case", caseName(*command) }, { "name", name(*command) } };
}

} // namespace aurisk::codec
