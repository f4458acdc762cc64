#include "AuriskSDK/Shared/Utils/JsonFields.h"

#include <fmt/format.h>
#include <utility>

namespace aurisk::json {

std::string shown(const Input& value)
{
    constexpr std::size_t most = 60;
    if (value.is_object())
        return "an object";
    if (value.is_array())
        return "a list";
    auto text = value.dump(-1, ' ', false, Input::error_handler_t::replace);
    if (text.size() > most)
        text = text.substr(0, most) + "...";
    return text;
}

bool isDeeper(const Input& value, int levels)
{
    if (!value.is_structured())
        return false;
    for (const auto& element : value)
        if (levels == 0 || isDeeper(element, levels - 1))
            return true;
    return false;
}

std::int64_t readInteger(const Input& value, std::int64_t least, std::int64_t most)
{
    if (!value.is_number_integer())
        throw JsonError(shown(value) + " is no integer");
    const bool isTooLarge = value.is_number_unsigned() && !std::in_range<std::int64_t>(value.get<std::uint64_t>());
    const auto number = value.get<std::int64_t>();
    if (isTooLarge || number < least || number > most)
        throw JsonError(fmt::format("{} is outside {} ... {}", shown(value), least, most));
    return number;
}

bool readBoolean(const Input& value)
{
    if (!value.is_boolean())
        throw JsonError(shown(value) + " is neither true nor false");
    return value.get<bool>();
}

const std::string& readText(const Input& value)
{
    if (!value.is_string())
        throw JsonError(shown(value) + " is no text");
    return value.get_ref<const std::string&>();
}

Data readBytes(const Input& value)
{
    const auto& text = readText(value);
    if (text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        throw JsonError(shown(value) + " is not hexadecimal");
    if (text.size() % 2 != 0)
        throw JsonError(fmt::format("{} hexadecimal digits, an even number is needed", text.size()));
    return ask_hexadecimal(text).value_or(Data());
}

void expectObject(const Input& value)
{
    if (!value.is_object())
        throw JsonError(shown(value) + " is no object");
}

} // namespace aurisk::json
