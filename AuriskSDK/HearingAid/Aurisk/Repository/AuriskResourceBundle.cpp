#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskResourceBundle.h"

#include "AuriskSDK/Shared/Utils/JsonFields.h"

#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

namespace aurisk {

namespace {

using Repository = AuriskAccessoryRepository;

Repository readEntry(const nlohmann::json& object)
{
    auto entry = Repository::fromJson(object);
    if (entry.skuCode.empty())
        throw JsonError("names no model", "skuCode");
    if (entry.minVolume > entry.maxVolume)
        throw JsonError(fmt::format("{} is above maxVolume, {}", entry.minVolume, entry.maxVolume), "minVolume");
    return entry;
}

std::vector<Repository> readEntries(const nlohmann::json& value)
{
    if (!value.is_array())
        return { readEntry(value) };
    std::vector<Repository> entries;
    for (std::size_t i = 0; i < value.size(); ++i)
        try {
            entries.push_back(readEntry(value[i]));
        } catch (const JsonError& fault) {
            throw fault.below(fmt::format("[{}]", i));
        }
    return entries;
}

nlohmann::json readFile(const std::filesystem::path& path)
{
    try {
        std::ifstream file;
        file.exceptions(std::ios::failbit | std::ios::badbit);
        file.open(path, std::ios::binary);
        return nlohmann::json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
    } catch (const std::ios::failure&) {
        throw JsonError("cannot be read");
    } catch (const nlohmann::json::parse_error& fault) {
        throw JsonError(fmt::format("no JSON from byte {} on", fault.byte));
    } catch (const nlohmann::json::out_of_range&) {
        throw JsonError("a number that is too large to be held");
    }
}

} // namespace

AuriskResourceBundle AuriskResourceBundle::load(const std::filesystem::path& folder)
{
    std::set<std::filesystem::path> files;
    for (const auto& file : std::filesystem::directory_iterator(folder))
        if (file.path().extension() == ".json")
            files.insert(file.path());

    AuriskResourceBundle bundle;
    for (const auto& file : files)
        try {
            for (auto& entry : readEntries(readFile(file)))
                bundle.entries.push_back(std::move(entry));
        } catch (const JsonError& fault) {
            bundle.errors.push_back(file.filename().string() + ": " + fault.what());
        }
    return bundle;
}

std::optional<Repository> AuriskResourceBundle::find(
    std::string_view skuCode, std::string_view patternCode, std::optional<std::uint8_t> hornPowerCode) const
{
    const auto fits = [&](const Repository& entry) {
        return entry.skuCode == skuCode && (entry.patternCode.empty() || entry.patternCode == patternCode)
            && (!entry.hornPowerCode || entry.hornPowerCode == hornPowerCode);
    };
    const auto named = [](const Repository& entry) {
        return std::pair(!entry.patternCode.empty(), entry.hornPowerCode.has_value());
    };
    std::optional<Repository> best;
    for (const auto& entry : entries)
        if (fits(entry) && (!best || named(entry) > named(*best)))
            best = entry;
    return best;
}

} // namespace aurisk
