#include "Tools/aurisk/ExchangeFile.h"

#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace aurisk::tool {

namespace {

constexpr std::string_view standard = "-";
constexpr int version = 1;

std::string nameOf(const std::string& path) { return path == standard ? "standard input" : path; }

[[noreturn]] void failAt(const std::string& path, std::string_view what)
{
    throw UsageError(fmt::format("{} {}: {}", path, what, std::strerror(errno)));
}

std::string contentOf(const std::string& path)
{
    std::ifstream file;
    if (path != standard) {
        file.open(path, std::ios::binary);
        if (!file || std::filesystem::is_directory(path)) {
            errno = file ? EISDIR : errno;
            failAt(path, "cannot be read");
        }
    }
    return { std::istreambuf_iterator<char>(path == standard ? std::cin : file), {} };
}

nlohmann::json parsed(const std::string& path)
{
    const auto text = contentOf(path);
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& error) {
        const auto end = text.begin() + std::ptrdiff_t(std::min(error.byte, text.size()));
        throw UsageError(fmt::format("{} is no JSON (line {})", nameOf(path), 1 + std::count(text.begin(), end, '\n')));
    } catch (const nlohmann::json::exception&) {
        throw UsageError(nameOf(path) + " holds a number that is too large");
    }
}

void checkHead(const nlohmann::json& whole, std::string_view format)
{
    const codec::Place place{ "aurisk" };
    const codec::Members head(codec::Members(whole).at(place), &place);
    const auto found = head.get<std::string>("format");
    if (found != format)
        throw codec::Unusable(
            codec::Place{ "format", &place }, fmt::format("{} is not \"{}\"", inQuotes(found), format));
    const auto number = head.get<int>("version");
    if (number != version)
        throw codec::Unusable(codec::Place{ "version", &place }, fmt::format("{} is not {}", number, version));
}

ExchangePart partOf(const nlohmann::json& device, const std::string& where)
{
    const codec::Place place{ where };
    const codec::Members members(device, &place);
    ExchangePart part{ .orientation = members.get<AccessoryOrientation>("orientation"),
        .chip = members.get<AuriskChip>("chip"),
        .place = where,
        .device = device };
    if (part.chip == AuriskChip::unassigned)
        throw codec::Unusable(codec::Place{ "chip", &place }, "unassigned is the name of no chip");
    return part;
}

void append(std::string& text, const Json& value, std::size_t indent);

std::size_t lineWidth(const std::string& text) { return text.size() - (text.rfind('\n') + 1); }

void appendList(std::string& text, const Json& list, std::size_t indent)
{
    constexpr std::size_t widest = 100;
    const bool isPlain = std::none_of(list.begin(), list.end(), [](const Json& one) { return one.is_structured(); });
    if (isPlain && lineWidth(text) + list.dump().size() + list.size() <= widest) {
        for (std::size_t i = 0; i < list.size(); ++i)
            text += (i == 0 ? "[" : ", ") + list[i].dump();
        text += ']';
        return;
    }
    const auto newLine = '\n' + std::string(indent + 2, ' ');
    for (std::size_t i = 0; i < list.size(); ++i) {
        text += i == 0 ? "[" : ",";
        if (i == 0 || !isPlain || lineWidth(text) + list[i].dump().size() + 2 > widest)
            text += newLine;
        else
            text += ' ';
        append(text, list[i], indent + 2);
    }
    text += '\n' + std::string(indent, ' ') + ']';
}

void append(std::string& text, const Json& value, std::size_t indent)
{
    if (value.is_array() && !value.empty())
        return appendList(text, value, indent);
    if (!value.is_object() || value.empty()) {
        text += value.dump(-1, ' ', false, Json::error_handler_t::replace);
        return;
    }
    text += '{';
    for (const auto& [name, member] : value.items()) {
        text += (text.back() == '{' ? "\n" : ",\n") + std::string(indent + 2, ' ') + Json(name).dump() + ": ";
        append(text, member, indent + 2);
    }
    text += '\n' + std::string(indent, ' ') + '}';
}

} // namespace

Json exchangeHead(const std::string& name, const AuriskAccessory& device)
{
    return { { "name", name }, { "orientation", caseName(device.orientation()) },
        { "chip", caseName(device.hearChip()) } };
}

void checkWritable(const std::string& path)
{
    if (path == standard)
        return;
    std::error_code ignored;
    const bool exists = std::filesystem::exists(path, ignored);
    if (exists && !std::filesystem::is_regular_file(path, ignored) && !std::filesystem::is_directory(path, ignored))
        return; // opening a pipe would wait for its reader
    if (!std::ofstream(path, std::ios::app))
        failAt(path, "cannot be written");
    if (!exists)
        std::filesystem::remove(path, ignored);
}

void writeFile(const std::string& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file)
        failAt(path, "cannot be written");
}

void writeExchangeFile(
    const std::string& path, std::string_view format, const std::vector<Json>& devices, Output& output)
{
    const Json whole = { { "aurisk", { { "format", format }, { "version", version } } }, { "devices", devices } };
    if (path == standard)
        return output.document(pleasantJson(whole), whole);
    writeFile(path, pleasantJson(whole) + '\n');
}

std::vector<ExchangePart> readExchangeFile(const std::string& path, std::string_view format)
{
    const auto whole = parsed(path);
    std::vector<ExchangePart> parts;
    readingFile(path, [&] {
        if (!whole.is_object())
            throw codec::Unusable(codec::shown(whole) + " is no object");
        checkHead(whole, format);
        const codec::Place place{ "devices" };
        const auto& devices = codec::Members(whole).at(place);
        if (!devices.is_array() || devices.empty() || devices.size() > 2)
            throw codec::Unusable(place, "a list of one device or two is needed");
        for (std::size_t i = 0; i < devices.size(); ++i)
            parts.push_back(partOf(devices[i], fmt::format("devices[{}]", i)));
        const auto isFor = [&](AccessoryOrientation ear) {
            return std::any_of(parts.begin(), parts.end(), [&](const auto& part) { return part.orientation == ear; });
        };
        const bool isPair = isFor(AccessoryOrientation::left) && isFor(AccessoryOrientation::right);
        if (parts.size() == 2 && !isPair)
            throw codec::Unusable(place, "of two devices one has to be left and one right");
    });
    return parts;
}

const ExchangePart& partFor(
    const AuriskAccessory& device, const std::vector<ExchangePart>& parts, const std::string& path)
{
    const auto found
        = parts.size() == 1 ? parts.begin() : std::find_if(parts.begin(), parts.end(), [&](const auto& part) {
              return part.orientation == device.orientation();
          });
    if (found == parts.end())
        throw UsageError(
            fmt::format("{} is for a left and a right device, and {} is neither", nameOf(path), device.name()));
    if (found->chip != device.hearChip())
        throw UsageError(fmt::format("{} is for the chip {}, and {} has the chip {}", nameOf(path),
            caseName(found->chip), device.name(), caseName(device.hearChip())));
    return *found;
}

void readingFile(const std::string& path, const std::function<void()>& read)
{
    try {
        read();
    } catch (const codec::Unusable& error) {
        throw UsageError(fmt::format("{}: {}", nameOf(path), error.what()));
    }
}

std::string pleasantJson(const Json& value)
{
    std::string text;
    append(text, value, 0);
    return text;
}

} // namespace aurisk::tool
