#include "Tools/aurisk/Output.h"

#include "Tools/aurisk/TextLayout.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace aurisk::tool {

namespace {

std::string written(const Json& object) { return object.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string upperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    return text;
}

} // namespace

void Output::object(const Fields& fields)
{
    auto object = Json::object();
    for (const auto& field : fields)
        if (!field.key.empty())
            object[field.key] = field.value;
    _sink.out(written(object));
}

std::string Output::bold(const std::string& text) const
{
    return _style.colour && !text.empty() ? "\033[1m" + text + "\033[0m" : text;
}

void Output::line(const std::string& heading, const Fields& fields)
{
    if (_style.json)
        return object(fields);
    std::string words;
    for (const auto& field : fields)
        if (!field.text.empty())
            words
                += (words.empty() ? "" : ", ") + field.label + (field.label.empty() ? "" : " ") + printable(field.text);
    _sink.out(bold(printable(heading)) + "  " + words);
}

void Output::block(const std::string& heading, const Fields& fields)
{
    if (_style.json)
        return object(fields);
    std::size_t width = 0;
    for (const auto& field : fields)
        width = std::max(width, field.text.empty() ? 0 : field.label.size());
    _sink.out(bold(printable(heading)));
    for (const auto& field : fields)
        if (!field.text.empty())
            _sink.out(fmt::format("  {:{}}  {}", field.label, width, printable(field.text)));
}

void Output::picture(
    const std::string& heading, const std::string& caption, const Fields& fields, const std::vector<std::string>& lines)
{
    if (_style.json)
        return object(fields);
    _sink.out(bold(printable(heading)) + "  " + caption);
    for (const auto& line : lines)
        _sink.out(line);
}

void Output::document(const std::string& text, const Json& value) { _sink.out(_style.json ? written(value) : text); }

void Output::row(const Fields& fields, const std::vector<Column>& columns)
{
    if (_style.json)
        return object(fields);
    std::string head, words;
    for (const auto& column : columns) {
        const auto found = std::find_if(
            fields.begin(), fields.end(), [&](const Field& field) { return field.label == column.label; });
        head += fmt::format("{:{}}  ", upperCase(std::string(column.label)), column.width);
        words += fmt::format("{:{}}  ", found == fields.end() ? "-" : printable(found->text), column.width);
    }
    if (!std::exchange(_hasHead, true))
        _sink.out(bold(withoutTrailingBlanks(head)));
    _sink.out(withoutTrailingBlanks(words));
}

void Output::failure(const Failure& failure)
{
    note(failure.sentence);
    if (!_style.json)
        return;
    Json object = { { "error", failure.sentence } };
    if (!failure.name.empty())
        object["name"] = failure.name;
    if (failure.seen)
        object["seen"] = *failure.seen;
    _sink.out(written(object));
}

void Output::note(const std::string& sentence) { _sink.err("aurisk: " + printable(sentence)); }

} // namespace aurisk::tool
