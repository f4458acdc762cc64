#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace aurisk::tool {

/// Where the devices of a run wait for each other, so that none is changed before all can be.
class Gate {
public:
    using Go = std::function<void(bool all)>;

    /// For that many devices.
    explicit Gate(std::size_t count)
        : _missing(count)
    {
    }

    /// Calls `go` once all have arrived or one has left.
    void arrive(Go go)
    {
        _waiting.push_back(std::move(go));
        if (--_missing == 0 || _isBroken)
            open();
    }

    /// A device ends. After all have arrived that matters to nobody.
    void leave()
    {
        _isBroken = _isBroken || _missing > 0;
        open();
    }

private:
    void open()
    {
        for (const auto& go : std::exchange(_waiting, {}))
            go(!_isBroken);
    }

    std::vector<Go> _waiting;
    std::size_t _missing; ///< have not arrived
    bool _isBroken = false;
};

} // namespace aurisk::tool
