#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/SimulatedWorld.h"

namespace aurisk {

namespace {

constexpr std::uint8_t a4 = 0x00, a16 = 0x06;

PlacedAid place(AuriskAidState state, int rssi)
{
    state.isRight = isRightByName(state.name);
    return { .aid = std::make_shared<SimulatedAuriskAid>(std::move(state)), .rssi = rssi };
}

} // namespace

SimulatedWorld SimulatedWorld::makeDefault()
{
    SimulatedWorld world;
    world.aids = {
        place({ .name = "X1-L", .address = "0A:1B:2C:3D:4E:5F", .chip = a16, .volumes = { 8, 6, 7, 5 }, .battery = 84 },
            -52),
        place({ .name = "X1-R", .address = "0A:1B:2C:3D:4E:60", .chip = a16, .volumes = { 9, 6, 7, 4 }, .battery = 79 },
            -58),
        place({ .name = "Solo-L", .address = "0A:1B:2C:00:11:22", .chip = a4, .volumes = { 10, 7, 5 }, .battery = 41 },
            -71),
    };
    // Within a period everything comes back to where it began, so that each round shows the same.
    world.script = {
        { Seconds(4), "X1-L", { "volume", 9 } },
        { Seconds(6), "X1-R", { "volume", 10 } },
        { Seconds(9), "X1-L", { "program", 1 } },
        { Seconds(10), "Solo-L", { "volume", 11 } },
        { Seconds(13), "X1-R", { "program", 2 } },
        { Seconds(16), "X1-L", { "program", 0 } },
        { Seconds(18), "Solo-L", { "volume", 10 } },
        { Seconds(20), "X1-R", { "program", 0 } },
        { Seconds(23), "X1-L", { "volume", 8 } },
        { Seconds(24), "X1-R", { "volume", 9 } },
    };
    world.scriptPeriod = Seconds(26);
    return world;
}

} // namespace aurisk
