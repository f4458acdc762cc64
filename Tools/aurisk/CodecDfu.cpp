#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacketCode.h"
#include "AuriskSDK/Shared/Utils/Crc16.h"

namespace aurisk::codec {

namespace {

DFUFirmwareType readType(const Members& line)
{
    const auto number = line.get<int>("type");
    const auto type = fromRawValue<DFUFirmwareType>(number);
    if (!type)
        throw Unusable({ "type" }, std::to_string(number) + " is no type of firmware");
    return *type;
}

/// What an update is made of.
struct Update {
    explicit Update(const Members& line)
        : firmware(DFUFirmware::create(line.get<Data>("image"), readType(line)))
        , packetSize(line.get<std::uint32_t>("packetSize"))
    {
    }

    std::shared_ptr<DFUFirmware> firmware;
    std::uint32_t packetSize;
};

} // namespace

Answer encodeDfuStart(const Members& line)
{
    const Update update(line);
    return toJson(Tiny600DFUFrame::start(*update.firmware, update.packetSize));
}

Answer encodeDfuPackets(const Members& line)
{
    const Update update(line);
    auto list = Answer::array();
    std::uint32_t sequence = 1, offset = 0;
    do {
        list.push_back(toJson(Tiny600DFUFrame::packet(*update.firmware, update.packetSize, sequence++, offset)));
        offset += Tiny600DFUFrame::chunkSize(*update.firmware, update.packetSize, offset);
    } while (offset < update.firmware->binaries.size());
    return list;
}

Answer encodeDfuValidate(const Members& line)
{
    return toJson(Tiny600DFUFrame::validate(*DFUFirmware::create({}, readType(line))));
}

Answer decodeDfuResponse(const Members& line)
{
    const auto response = Tiny600DFUResponse::parse(line.get<Data>("bytes"));
    return { { "requestOpCode", toJson(response.requestOpCode) }, { "status", toJson(response.status) } };
}

Answer crc16(const Members& line)
{
    const auto bytes = line.get<Data>("bytes");
    const auto polynomial = line.get<std::uint16_t>("polynomial"), initial = line.get<std::uint16_t>("initialValue"),
               final = line.get<std::uint16_t>("finalXORValue");
    const auto reverseInput = line.get<bool>("reverseInput"), reverseOutput = line.get<bool>("reverseOutput");
    return Crc16::crc16(bytes, polynomial, initial, final, reverseInput, reverseOutput);
}

} // namespace aurisk::codec
