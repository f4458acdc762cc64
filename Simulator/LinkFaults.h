#pragma once

#include "AuriskSDK/Platform/Dispatch.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace aurisk {

class WorldReader;

/// One thing that goes wrong with one message of a link.
struct Fault {
    enum class Kind {
        dropLinkBefore, ///< the link goes in place of the message
        dropLinkAfter, ///< the message arrives, and the link goes before anything that answers it
        lose, ///< never arrives; where it is "connection made", the attempt is made again a second later
        duplicate, ///< arrives twice, the second time at once; only where the message carries a value
        delay, ///< arrives later `by` so much, and holds nothing up
        corrupt, ///< one bit in the middle of the value is flipped; only where the message carries one
        refuse, ///< a request gets the error reply, or its write fails; an answer says that it failed
    };

    Kind kind = Kind::lose;
    int message = 1; ///< which one, counted from 1
    Seconds by{ 0 }; ///< for `delay`

    friend bool operator==(const Fault&, const Fault&) = default;
};

/// How the link of one aid behaves. The default is a perfect one.
///
/// Its messages are numbered from 1, from the start of the radio on and across connections, in the order in which they
/// are sent: connection made, services found, characteristics found, each subscription confirmed, each write, each
/// write confirmed, each read answered, each notification. What a host merely asks for, other than by a write, has no
/// number: its answer has. Several faults of one message come together.
struct LinkFaults {
    Seconds latency{ 0.005 }; ///< one way
    bool refusesConnections = false; ///< an attempt fails with an error
    bool ignoresConnections = false; ///< an attempt never completes
    bool isSilent = false; ///< hears everything and answers no read and notifies nothing
    std::vector<Fault> faults = {};

    friend bool operator==(const LinkFaults&, const LinkFaults&) = default;
};

nlohmann::json toJson(const LinkFaults& faults);

/// What is missing has its default. The rest of the object is the caller's to read.
LinkFaults linkFaultsFrom(WorldReader& reader);

} // namespace aurisk
