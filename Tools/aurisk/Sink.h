#pragma once

#include <string>

namespace aurisk::tool {

/// Where lines go. They come without line feeds.
class Sink {
public:
    virtual ~Sink() = default;
    virtual void out(const std::string& line) = 0;
    virtual void err(const std::string& line) = 0;

    /// What a terminal shows of standard output is changed: `text` is written there as it is.
    virtual void draw(const std::string& text) = 0;
};

} // namespace aurisk::tool
