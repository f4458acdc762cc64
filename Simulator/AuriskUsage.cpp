#include "Simulator/AuriskUsage.h"

#include "Simulator/AuriskAidState.h"

#include <algorithm>
#include <utility>

namespace aurisk {

namespace {

constexpr std::int64_t hour = 3600;
constexpr std::int64_t percentOfBattery = 720;
constexpr std::int64_t betweenLoopGains = hour / 2;
constexpr int lowBattery = 10; ///< percent

constexpr std::size_t blockSize = 57;
constexpr std::uint8_t unwritten = 0xFF;

void add(std::int64_t& counter, std::int64_t amount) { counter = std::min(counter + amount, mostCounted); }

void putWord(Data& data, std::int64_t word)
{
    for (int shift = 0; shift < 32; shift += 8)
        data.push_back(std::uint8_t(word >> shift));
}

/// The newest record goes to the end; the oldest makes room for it.
void keepRecord(Data& records, const Data& record, std::size_t most)
{
    records.insert(records.end(), record.begin(), record.end());
    while (records.size() > most)
        records.erase(records.begin(), records.begin() + std::ptrdiff_t(record.size()));
}

/// A measurement of the loop at 500 to 6000 Hz, in dB: the louder the program, the more.
Data loopGainRecord(const AuriskAidState& state, std::int64_t time)
{
    constexpr std::uint8_t shape[] = { 12, 16, 22, 28, 25, 19 };
    const auto volume = std::uint8_t(state.volumes[std::size_t(state.program)]);
    Data record;
    putWord(record, time);
    record.push_back(std::uint8_t(state.program));
    record.push_back(volume);
    for (const auto gain : shape)
        record.push_back(std::uint8_t(gain + volume));
    return record;
}

void measureLoopGains(AuriskAidState& state, std::int64_t before, std::int64_t now)
{
    constexpr auto most = std::int64_t(mostLoopGainBytes / loopGainSize);
    const auto last = now / betweenLoopGains;
    for (auto one = std::max(before / betweenLoopGains, last - most) + 1; one <= last; ++one)
        keepRecord(state.usage.loopGains, loopGainRecord(state, one * betweenLoopGains), mostLoopGainBytes);
}

/// The seconds of `runTime` that were spent at each level of sound. There is none to hear: each minute goes by alike.
void putSoundLevels(Data& log, std::int64_t runTime)
{
    constexpr std::int64_t minute = 60;
    constexpr std::int64_t shares[] = { 12, 24, 15, 7, 2 }; ///< of a minute: below 50 dB, to 60, to 70, to 80, above
    auto rest = runTime % minute;
    for (const auto share : shares) {
        putWord(log, runTime / minute * share + std::min(rest, share));
        rest -= std::min(rest, share);
    }
}

Data summary(const AuriskAidState& state)
{
    const auto& usage = state.usage;
    Data log;
    putWord(log, usage.totalRunTime);
    putWord(log, usage.runTimeSincePowerUp);
    putWord(log, usage.numberOfBatteryChanges);
    putWord(log, usage.batteryRunTime / hour);
    putWord(log, state.battery <= lowBattery ? 1 : 0);
    for (std::size_t i = 0; i < usage.programRunTimes.size(); ++i) {
        putWord(log, usage.programRunTimes[i]);
        putWord(log, i < state.volumes.size() ? state.volumes[i] : 0);
        putSoundLevels(log, usage.programRunTimes[i]);
    }
    for (const auto count : usage.runTimeHistory)
        putWord(log, count);
    putWord(log, 0);

    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < log.size(); ++i)
        sum += std::uint32_t(log[i]) << 8 * (i % 4);
    putWord(log, sum);
    return log;
}

} // namespace

void letPass(AuriskAidState& state, std::int64_t seconds)
{
    if (seconds <= 0)
        return;
    auto& usage = state.usage;
    const auto before = std::pair(usage.totalRunTime, usage.batteryRunTime);
    add(usage.totalRunTime, seconds);
    add(usage.runTimeSincePowerUp, seconds);
    add(usage.batteryRunTime, seconds);
    if (const auto program = std::size_t(state.program); program < usage.programRunTimes.size())
        add(usage.programRunTimes[program], seconds);

    const auto drained = usage.batteryRunTime / percentOfBattery - before.second / percentOfBattery;
    if (state.battery > 1)
        state.battery = int(std::max<std::int64_t>(state.battery - drained, 1));
    measureLoopGains(state, before.first, usage.totalRunTime);
}

void noteUserEvent(AuriskAidState& state, AuriskUserEvent event, int value)
{
    Data record;
    putWord(record, state.usage.totalRunTime);
    for (const auto byte : { int(event), value, state.program, state.battery })
        record.push_back(std::uint8_t(byte));
    keepRecord(state.usage.userEvents, record, mostUserEventBytes);
}

void noteNewBattery(AuriskUsage& usage)
{
    add(usage.numberOfBatteryChanges, 1);
    usage.batteryRunTime = 0;
}

void notePowerDown(AuriskUsage& usage)
{
    constexpr std::array<std::int64_t, 7> ends
        = { hour / 2, 2 * hour, 4 * hour, 8 * hour, 12 * hour, 16 * hour, 20 * hour };
    const auto bucket = std::upper_bound(ends.begin(), ends.end(), std::exchange(usage.runTimeSincePowerUp, 0));
    add(usage.runTimeHistory[std::size_t(bucket - ends.begin())], 1);
}

std::optional<Data> readLog(const AuriskAidState& state, std::uint8_t block)
{
    constexpr std::uint8_t a16 = 0x06;
    struct Log {
        std::uint8_t first, last;
        Data bytes;
    };
    if (state.chip != a16)
        return std::nullopt;
    for (const auto& log : { Log{ 0x00, 0x03, summary(state) }, Log{ 0x10, 0x37, state.usage.userEvents },
             Log{ 0x60, 0x73, state.usage.loopGains } }) {
        if (block < log.first || block > log.last)
            continue;
        Data part(blockSize, unwritten);
        const auto begin = std::min<std::size_t>((block - log.first) * blockSize, log.bytes.size());
        const auto length = std::min(blockSize, log.bytes.size() - begin);
        std::copy_n(log.bytes.begin() + std::ptrdiff_t(begin), length, part.begin());
        return part;
    }
    return std::nullopt;
}

} // namespace aurisk
