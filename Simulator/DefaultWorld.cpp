#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/SimulatedPL3Aid.h"
#include "Simulator/SimulatedWorld.h"

namespace aurisk {

namespace {

constexpr std::uint8_t a4 = 0x00, h01 = 0x01, a16 = 0x06;

PlacedAid place(AuriskAidState state, int rssi)
{
    state.isRight = isRightByName(state.name);
    return { .aid = std::make_shared<SimulatedAuriskAid>(std::move(state)), .rssi = rssi };
}

PlacedAid placePL3(PL3AidState state, int rssi)
{
    state.isRight = isRightByName(state.name);
    return { .aid = std::make_shared<SimulatedPL3Aid>(std::move(state)), .rssi = rssi };
}

/// Some months with an aid: an hour or so each day in which it is not in the first program. Its battery has been in for
/// as long as it took to drain from full to `battery`.
AuriskUsage someMonths(int battery)
{
    constexpr std::int64_t hour = 3600, percent = 720;
    return { .totalRunTime = 1420 * hour,
        .runTimeSincePowerUp = 3 * hour,
        .batteryRunTime = (100 - battery) * percent,
        .numberOfBatteryChanges = 71,
        .programRunTimes = { 1180 * hour, 120 * hour, 80 * hour, 40 * hour },
        .runTimeHistory = { 14, 9, 12, 21, 40, 52, 6, 0 } };
}

} // namespace

SimulatedWorld SimulatedWorld::makeDefault()
{
    SimulatedWorld world;
    world.aids = {
        place({ .name = "X1-L",
                  .address = "0A:1B:2C:3D:4E:5F",
                  .chip = a16,
                  .volumes = { 8, 6, 7, 5 },
                  .battery = 84,
                  .usage = someMonths(84) },
            -52),
        place({ .name = "X1-R",
                  .address = "0A:1B:2C:3D:4E:60",
                  .chip = a16,
                  .volumes = { 9, 6, 7, 4 },
                  .battery = 79,
                  .usage = someMonths(79) },
            -58),
        place({ .name = "Solo-L", .address = "0A:1B:2C:00:11:22", .chip = a4, .volumes = { 10, 7, 5 }, .battery = 41 },
            -71),
        place({ .name = "Uno-R", .address = "0A:1B:2C:00:33:44", .chip = h01, .volumes = { 7, 9, 8 }, .battery = 66 },
            -66),
        placePL3({ .name = "P3-L", .address = "0A:1B:2C:00:55:66", .volume = 6, .battery = 92 }, -75),
        placePL3({ .name = "P3-R", .address = "0A:1B:2C:00:55:67", .volume = 7, .battery = 88 }, -78),
    };
    // Within a period everything comes back to where it began, so that each round shows the same.
    world.script = {
        { Seconds(4), "X1-L", { "volume", 9 } },
        { Seconds(6), "X1-R", { "volume", 10 } },
        { Seconds(8), "P3-L", { "volume", 7 } },
        { Seconds(9), "X1-L", { "program", 1 } },
        { Seconds(10), "Solo-L", { "volume", 11 } },
        { Seconds(13), "X1-R", { "program", 2 } },
        { Seconds(16), "X1-L", { "program", 0 } },
        { Seconds(18), "Solo-L", { "volume", 10 } },
        { Seconds(20), "X1-R", { "program", 0 } },
        { Seconds(21), "P3-L", { "volume", 6 } },
        { Seconds(23), "X1-L", { "volume", 8 } },
        { Seconds(24), "X1-R", { "volume", 9 } },
    };
    world.scriptPeriod = Seconds(26);
    return world;
}

} // namespace aurisk
