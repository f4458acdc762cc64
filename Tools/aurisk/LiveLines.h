#pragma once

#include "Tools/aurisk/Sink.h"

#include <map>
#include <string>

namespace aurisk::tool {

/// Lines at the end of what a terminal shows that are redrawn in place; whatever else is written comes above them.
/// Without any, lines are merely passed on.
class LiveLines final : public Sink {
public:
    explicit LiveLines(Sink& sink)
        : _sink(sink)
    {
    }

    /// Shows `line`, or replaces the one of that name. They are ordered by name.
    void show(const std::string& name, const std::string& line);
    void end(const std::string& name);

    void out(const std::string& line) override;
    void err(const std::string& line) override;
    void draw(const std::string& text) override { _sink.draw(text); }

private:
    std::string cleared() const;
    std::string drawn() const;

    Sink& _sink;
    std::map<std::string, std::string> _lines;
};

} // namespace aurisk::tool
