#pragma once

#include <stdexcept>

namespace aurisk {

/// A world, or a part of one, that cannot be: one sentence that names the place, such as
/// `aids[1].link.mtu: 9 is outside 23 to 517`.
class SimulatedWorldError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace aurisk
