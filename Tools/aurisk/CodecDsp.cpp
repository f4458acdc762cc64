#include "Tools/aurisk/BlockJson.h"
#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16DspParameterLabels.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4DspParameterLabels.h"

#include <algorithm>

namespace aurisk::codec {

namespace {

/// The object of a line's fields, as it stands.
const Json& readObject(const Json& value, const Place& place)
{
    if (!value.is_object())
        throw Unusable(place, shown(value) + " is no object");
    return value;
}

template <typename Block> Block blockWithFields(const Members& line)
{
    const Place place{ "fields" };
    Block block;
    setMembers(block, readObject(line.at(place), place), place, EnumerationsAs::rawValues);
    return block;
}

/// `["direction","tv"]`, `["eq", 250, 3]`, `["notCare", 5]`
template <typename Dsp> Setter<Dsp> readEdit(const Json& edit, const Place& place)
{
    if (!edit.is_array() || edit.empty() || !edit[0].is_string())
        throw Unusable(place, shown(edit) + " where a list is needed that begins with a name");
    const auto name = edit[0].template get<std::string>();
    const Place inside{ name, &place };
    const bool isEq = name == "eq";
    if (edit.size() != (isEq ? 3 : 2))
        throw Unusable(inside, fmt::format("{} values, {} needed", edit.size() - 1, isEq ? 2 : 1));
    if (isEq)
        return [frequency = read<int>(edit[1], inside), eq = read<int>(edit[2], inside)](
                   Dsp& dsp) { dsp.setEq(eq, frequency); };
    if (name == "direction")
        return [direction = read<AuriskDirection>(edit[1], inside)](Dsp& dsp) { dsp.setDirection(direction); };
    if (name == "noise")
        return [noise = read<AuriskNoise>(edit[1], inside)](Dsp& dsp) { dsp.setNoise(noise); };
    if (name == "matrixGain")
        return [gain = read<int>(edit[1], inside)](Dsp& dsp) { dsp.setMatrixGain(gain); };
    return readNamedMember<Dsp>(name, edit[1], inside, EnumerationsAs::rawValues);
}

using Labels = const std::vector<std::string>& (*)();
struct LabelRow {
    std::string_view name;
    Labels labels;
};

using A4 = AuriskA4DspParameterLabels;
using A16 = AuriskA16DspParameterLabels;
constexpr LabelRow labelRows[] = {
    { "AuriskA4DspParameterLabels.inputMultiplexerValues", A4::inputMultiplexerValues },
    { "AuriskA4DspParameterLabels.preampGainValues", A4::preampGainValues },
    { "AuriskA4DspParameterLabels.matrixGainValues", A4::matrixGainValues },
    { "AuriskA4DspParameterLabels.feedbackCancelerValues", A4::feedbackCancelerValues },
    { "AuriskA4DspParameterLabels.expansionValues", A4::expansionValues },
    { "AuriskA4DspParameterLabels.noiseReductionValues", A4::noiseReductionValues },
    { "AuriskA4DspParameterLabels.lowCutValues", A4::lowCutValues },
    { "AuriskA4DspParameterLabels.highCutValues", A4::highCutValues },
    { "AuriskA4DspParameterLabels.compressionRatiosValues", A4::compressionRatiosValues },
    { "AuriskA4DspParameterLabels.compressionThresholdsValues", A4::compressionThresholdsValues },
    { "AuriskA4DspParameterLabels.maximumPowerOutputThresholdValues", A4::maximumPowerOutputThresholdValues },
    { "AuriskA4DspParameterLabels.compressionBandEQsValues", A4::compressionBandEQsValues },
    { "AuriskA16DspParameterLabels.inputMultiplexerValues", A16::inputMultiplexerValues },
    { "AuriskA16DspParameterLabels.analogPreAmpGainValues", A16::analogPreAmpGainValues },
    { "AuriskA16DspParameterLabels.digitalPreAmpGainValues", A16::digitalPreAmpGainValues },
    { "AuriskA16DspParameterLabels.matrixGainValues", A16::matrixGainValues },
    { "AuriskA16DspParameterLabels.feedbackCancelerValues", A16::feedbackCancelerValues },
    { "AuriskA16DspParameterLabels.noiseReductionValues", A16::noiseReductionValues },
    { "AuriskA16DspParameterLabels.lowLevelExpansionValues", A16::lowLevelExpansionValues },
    { "AuriskA16DspParameterLabels.windValues", A16::windValues },
    { "AuriskA16DspParameterLabels.lowCutValues", A16::lowCutValues },
    { "AuriskA16DspParameterLabels.remoteMixValues", A16::remoteMixValues },
    { "AuriskA16DspParameterLabels.mpoAttackConstantsValues", A16::mpoAttackConstantsValues },
    { "AuriskA16DspParameterLabels.mpoReleaseConstantsValues", A16::mpoReleaseConstantsValues },
    { "AuriskA16DspParameterLabels.compressionRatiosValues", A16::compressionRatiosValues },
    { "AuriskA16DspParameterLabels.compressionThresholdsValues", A16::compressionThresholdsValues },
    { "AuriskA16DspParameterLabels.compressionTimeConstantsValues", A16::compressionTimeConstantsValues },
    { "AuriskA16DspParameterLabels.maximumPowerOutputThresholdValues", A16::maximumPowerOutputThresholdValues },
    { "AuriskA16DspParameterLabels.compressionBandEQsValues", A16::compressionBandEQsValues },
};

} // namespace

template <typename Dsp> Answer decodeDsp(const Members& line)
{
    const Dsp dsp(line.get<Data>("bytes"));
    return Answer::object({
        { "fields", membersToJson(dsp, EnumerationsAs::rawValues) },
        { "direction", toJson(dsp.direction()) },
        { "noise", toJson(dsp.noise()) },
        { "frequences", dsp.frequences() },
        { "minEQValue", dsp.minEQValue() },
        { "maxEQValue", dsp.maxEQValue() },
        { "matrixGain", dsp.getMatrixGain() },
        { "matrixGainDisplayValue", dsp.matrixGainDisplayValue() },
        { "description", description(dsp) },
    });
}

template <typename Dsp> Answer encodeDsp(const Members& line) { return toJson(blockWithFields<Dsp>(line).toBytes()); }

template <typename Dsp> Answer editDsp(const Members& line)
{
    const auto bytes = line.get<Data>("bytes");
    const Place place{ "set" };
    const auto& list = line.at(place);
    if (!list.is_array())
        throw Unusable(place, shown(list) + " is no list");
    std::vector<Setter<Dsp>> edits;
    for (const auto& edit : list)
        edits.push_back(readEdit<Dsp>(edit, place));
    Dsp dsp(bytes);
    for (const auto& apply : edits)
        apply(dsp);
    return toJson(dsp.toBytes());
}

template <typename Dsp> Answer getEq(const Members& line)
{
    const auto bytes = line.get<Data>("bytes");
    const auto frequency = line.get<int>("frequency");
    return toJson(Dsp(bytes).getEq(frequency));
}

template <typename Global> Answer decodeGlobal(const Members& line)
{
    return membersToJson(Global(line.get<Data>("bytes")), EnumerationsAs::rawValues);
}

template <typename Global> Answer encodeGlobal(const Members& line)
{
    return toJson(blockWithFields<Global>(line).toData());
}

template Answer decodeDsp<AuriskA4Dsp>(const Members&);
template Answer decodeDsp<AuriskA16Dsp>(const Members&);
template Answer encodeDsp<AuriskA4Dsp>(const Members&);
template Answer encodeDsp<AuriskA16Dsp>(const Members&);
template Answer editDsp<AuriskA4Dsp>(const Members&);
template Answer editDsp<AuriskA16Dsp>(const Members&);
template Answer getEq<AuriskA4Dsp>(const Members&);
template Answer getEq<AuriskA16Dsp>(const Members&);
template Answer decodeGlobal<AuriskA4GlobalDsp>(const Members&);
template Answer decodeGlobal<AuriskA16GlobalDsp>(const Members&);
template Answer encodeGlobal<AuriskA4GlobalDsp>(const Members&);
template Answer encodeGlobal<AuriskA16GlobalDsp>(const Members&);

Answer listLabels(const Members& line)
{
    const auto name = line.get<std::string>("name");
    const auto* found
        = std::find_if(std::begin(labelRows), std::end(labelRows), [&](const auto& row) { return row.name == name; });
    if (found == std::end(labelRows))
        throw Unusable(Place{ "name" }, shown(name) + " is the name of no table of labels");
    return found->labels();
}

} // namespace aurisk::codec
