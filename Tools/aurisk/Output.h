#pragma once

#include "Tools/aurisk/LiveLines.h"
#include "Tools/aurisk/Options.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace aurisk::tool {

using Json = nlohmann::ordered_json;

/// One value that a command tells: a member of a JSON object, and words for a person.
struct Field {
    std::string key = {}; ///< in JSON; empty: for people alone
    Json value = {};
    std::string label = {}; ///< "volume"; empty where the text says it all
    std::string text = {}; ///< "3"; without it the field is for JSON alone
};

/// What a command tells of one device.
using Fields = std::vector<Field>;

/// Where a table shows the field of that label, and how wide.
struct Column {
    std::string_view label = {};
    int width = 0;
};

struct Style {
    bool json = false;
    bool colour = false; ///< of what goes to `Sink::out`
    bool drawing = false; ///< with characters beyond ASCII there, to draw with
    bool redrawing = false; ///< what is there can be replaced
    std::size_t columns = 80; ///< of what shows it
};

/// Writes what commands tell: as one JSON object a line, or for people, from the same description.
class Output {
public:
    Output(Sink& sink, Style style)
        : _sink(sink)
        , _style(style)
    {
    }

    /// `X1-L  volume 3, program 0`
    void line(const std::string& heading, const Fields& fields);

    /// The heading, then a line for each field.
    void block(const std::string& heading, const Fields& fields);

    /// `X1-L  program 0`, then the lines as they are. In JSON the fields.
    void picture(const std::string& heading, const std::string& caption, const Fields& fields,
        const std::vector<std::string>& lines);

    /// A whole document: over many lines or, for a program to read, in one.
    void document(const std::string& text, const Json& value);

    const Style& style() const { return _style; }

    /// A row of a table, which begins with a head. What a row has no field for, it leaves out.
    void row(const Fields& fields, const std::vector<Column>& columns);

    /// The sentence on standard error and, in JSON, as an object with the member `error`, too.
    void failure(const Failure& failure);

    /// A sentence on standard error that changes nothing.
    void note(const std::string& sentence);

    /// A line that stays the last one, and can be replaced, until it ends: for a style that is redrawing.
    void showLive(const std::string& name, const std::string& line) { _sink.show(name, line); }
    void endLive(const std::string& name) { _sink.end(name); }

private:
    void object(const Fields& fields);
    std::string bold(const std::string& text) const;

    LiveLines _sink;
    Style _style;
    bool _hasHead = false;
};

} // namespace aurisk::tool
