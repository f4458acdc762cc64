#include "Tools/aurisk/DeviceFields.h"

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

Field numberField(const std::string& key, const std::string& label, std::optional<int> value, const std::string& unit)
{
    return { .key = key,
        .value = value ? Json(*value) : Json(),
        .label = label,
        .text = value ? std::to_string(*value) + unit : notTold };
}

template <TabledEnum E> Field caseField(const std::string& key, const std::string& label, E value)
{
    return { .key = key, .value = caseName(value), .label = label, .text = std::string(caseName(value)) };
}

} // namespace

Fields advertisedFields(const Accessory& accessory, std::optional<int> rssi)
{
    const auto text = [](const std::string& key, const std::string& label, const std::string& value) {
        return Field{ .key = key, .value = value, .label = label, .text = value };
    };
    Fields fields = {
        text("identifier", "identifier", accessory.deviceId()),
        text("name", "name", accessory.name()),
        text("class", "class", std::string(accessory.className())),
        numberField("rssi", "rssi", rssi, " dBm"),
    };
    if (const auto* pl3 = dynamic_cast<const PL3Accessory*>(&accessory)) {
        fields.push_back(caseField("orientation", "ear", pl3->orientation()));
        fields.push_back({ .label = "chip", .text = "PL3" });
        fields.push_back(text("modelName", "model", pl3->modelName()));
        fields.push_back(numberField("manufacturerId", "manufacturer", pl3->manufacturerId(), ""));
    }
    const auto* aurisk = dynamic_cast<const AuriskAccessory*>(&accessory);
    if (!aurisk)
        return fields;
    fields.push_back(text("address", "address", aurisk->address()));
    fields.push_back(caseField("orientation", "ear", aurisk->orientation()));
    fields.push_back(caseField("hearChip", "chip", aurisk->hearChip()));
    fields.push_back(caseField("bleChip", "radio chip", aurisk->bleChip()));
    fields.push_back(switchField("transEnable", "transparency", aurisk->transEnable()));
    return fields;
}

Fields aboutDevice(const Accessory& accessory)
{
    Fields fields = { { .label = "identifier", .text = accessory.deviceId() } };
    for (auto& field : advertisedFields(accessory, std::nullopt))
        if (field.key != "identifier" && field.key != "name" && field.key != "rssi")
            fields.push_back(std::move(field));
    return fields;
}

Field programField(std::optional<int> program) { return numberField("program", "program", program, ""); }

Field volumeField(std::optional<int> volume) { return numberField("volume", "volume", volume, ""); }

Field batteryField(std::optional<int> bat) { return numberField("bat", "battery", bat, " %"); }

Field switchField(const std::string& key, const std::string& label, std::optional<bool> isOn)
{
    return { .key = key,
        .value = isOn ? Json(*isOn) : Json(),
        .label = label,
        .text = !isOn ? notTold
            : *isOn   ? "on"
                      : "off" };
}

Field hearingTestField(bool isSupported)
{
    return {
        .key = "hearingSupported", .value = isSupported, .label = "hearing test", .text = isSupported ? "yes" : "no"
    };
}

Fields brEdrFields(std::optional<bool> brEdr, bool continuous)
{
    auto isOn = switchField("brEdr", "BR/EDR", brEdr);
    if (brEdr.value_or(false) && continuous)
        isOn.text = "on continuously";
    return { isOn, { .key = "brEdrContinuousIfEnable", .value = continuous } };
}

} // namespace aurisk::tool
