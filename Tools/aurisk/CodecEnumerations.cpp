#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileType.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProgram.h"

namespace aurisk::codec {

namespace {

template <TabledEnum E> Answer cases()
{
    auto list = Answer::array();
    for (const auto& row : enumCases<E>) {
        auto shownCase = Answer::object({ { "case", row.name }, { "rawValue", rawValue(row.value) } });
        if (!row.label.empty())
            shownCase.emplace("displayName", row.label);
        list.push_back(std::move(shownCase));
    }
    return list;
}

struct Enumeration {
    std::string_view name;
    Answer (*cases)();
};

constexpr Enumeration enumerations[] = {
    { "AuriskChip", cases<AuriskChip> },
    { "AuriskBLEChip", cases<AuriskBLEChip> },
    { "AuriskProgram", cases<AuriskProgram> },
    { "AuriskDirection", cases<AuriskDirection> },
    { "AuriskNoise", cases<AuriskNoise> },
    { "AuriskProfileType", cases<AuriskProfileType> },
    { "AccessoryOrientation", cases<AccessoryOrientation> },
};

} // namespace

Answer listEnumeration(const Members& line)
{
    const auto name = line.get<std::string>("name");
    for (const auto& row : enumerations)
        if (row.name == name)
            return row.cases();
    throw Unusable(Place{ "name" }, shown(name) + " is the name of no enumeration");
}

} // namespace aurisk::codec
