#pragma once

#include <functional>
#include <memory>
#include <string>

namespace aurisk::tool {

/// The lines that come in on a descriptor, read on the main queue whenever there is something to read. The descriptor
/// stays as it is, since others may have it, too. Dropping this ends it.
class InputLines : public std::enable_shared_from_this<InputLines> {
public:
    struct Handlers {
        std::function<void(const std::string&)> line = {}; ///< without its line feed
        std::function<void()> ended = {}; ///< there will be no more
    };

    static std::shared_ptr<InputLines> start(int descriptor, Handlers handlers);
    virtual ~InputLines() = default;
};

} // namespace aurisk::tool
