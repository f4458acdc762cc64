#pragma once

#include "Tools/aurisk/Sink.h"

#include <functional>
#include <string>

namespace aurisk::tool {

/// Keeps standard output for the tool alone: what the library prints, its log included, goes to standard error from
/// here on, since descriptor 1 is pointed at it.
class Descriptors final : public Sink {
public:
    Descriptors();
    ~Descriptors() override;
    Descriptors(const Descriptors&) = delete;
    Descriptors& operator=(const Descriptors&) = delete;

    /// What standard output was when the program was started.
    int output() const { return _output; }

    /// Whether people see standard output as it is written, and in colour.
    bool isColourful() const;

    /// How wide what they see it on is: 80 where nobody knows.
    std::size_t columns() const;

    /// Whether what they see it on shows UTF-8.
    bool isDrawing() const;

    /// Whether what they see it on can be told to replace what it shows.
    bool isRedrawing() const;

    /// What the library prints goes nowhere from here on.
    void silenceLibrary();

    /// Called when standard output takes nothing more. What follows for it is dropped.
    std::function<void()> onLost;

    /// The error that standard output ended with; 0 where it did not, or where merely nobody reads it any more.
    int error() const { return _error; }

    void out(const std::string& line) override;
    void err(const std::string& line) override;
    void draw(const std::string& text) override;

private:
    int _output;
    int _error = 0;
    bool _isLost = false;
};

} // namespace aurisk::tool
