#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"
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

Answer listLogFrames(const Members& line)
{
    auto list = Answer::array();
    for (const auto& frame : rawDataArray(line.get<AuriskDataLogType>("type")))
        list.push_back(toJson(frame.toData()));
    return list;
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
    { "a4.decode", decodeDsp<AuriskA4Dsp> },
    { "a16.decode", decodeDsp<AuriskA16Dsp> },
    { "a4.encode", encodeDsp<AuriskA4Dsp> },
    { "a16.encode", encodeDsp<AuriskA16Dsp> },
    { "a4.edit", editDsp<AuriskA4Dsp> },
    { "a16.edit", editDsp<AuriskA16Dsp> },
    { "a4.getEq", getEq<AuriskA4Dsp> },
    { "a16.getEq", getEq<AuriskA16Dsp> },
    { "a4global.decode", decodeGlobal<AuriskA4GlobalDsp> },
    { "a16global.decode", decodeGlobal<AuriskA16GlobalDsp> },
    { "a4global.encode", encodeGlobal<AuriskA4GlobalDsp> },
    { "a16global.encode", encodeGlobal<AuriskA16GlobalDsp> },
    { "labels", listLabels },
    { "summarylog.decode",
        [](const Members& line) { return toJson(AuriskSummaryDataLog::decode(line.get<Data>("bytes"))); } },
    { "log.frames", listLogFrames },
    { "reserved.decode", decodeReserved },
    { "reserved.encode", encodeReserved },
    { "profile.apply", applyToProfile },
    { "profile.programs", listPrograms },
    { "enum", listEnumeration },
    { "crc16", crc16 },
    { "chdlc.encode", encodeHdlc },
    { "chdlc.encodeText", encodeHdlcText },
    { "chdlc.decode", decodeHdlc },
    { "pl3.manudata", decodePL3ManuData },
    { "pl3.block", decodePL3Block },
    { "pl3.describe", describePL3Value },
    { "pl3.command", namePL3Command },
    { "dfu.start", encodeDfuStart },
    { "dfu.data", encodeDfuPackets },
    { "dfu.validate", encodeDfuValidate },
    { "dfu.response", decodeDfuResponse },
};

} // namespace

const Operation* operation(std::string_view name)
{
    const auto found
        = std::find_if(std::begin(operations), std::end(operations), [&](const auto& row) { return row.name == name; });
    return found == std::end(operations) ? nullptr : found;
}

} // namespace aurisk::codec
