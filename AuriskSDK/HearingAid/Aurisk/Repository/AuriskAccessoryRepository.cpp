#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskAccessoryRepository.h"

#include "AuriskSDK/Shared/Utils/JsonFields.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

AuriskAccessoryRepository AuriskAccessoryRepository::fromJson(const nlohmann::json& object)
{
    if (object.is_null())
        return {};
    constexpr int deepest = 100;
    auto one = json::readFields<AuriskAccessoryRepository>(object);
    const auto known = json::writeFields(one);
    for (const auto& [key, value] : object.items()) {
        if (known.contains(key))
            continue;
        if (json::isDeeper(value, deepest))
            throw JsonError(fmt::format("nested deeper than {} levels", deepest), key);
        one.others.emplace(key, value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    }
    return one;
}

nlohmann::ordered_json AuriskAccessoryRepository::toJson() const
{
    auto object = json::writeFields(*this);
    for (const auto& [key, text] : others) {
        auto value = json::Output::parse(text, nullptr, false);
        precondition(!value.is_discarded(), "{}: what stands there is no JSON", key);
        object.emplace(key, std::move(value));
    }
    return object;
}

} // namespace aurisk
