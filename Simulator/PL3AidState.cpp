#include "Simulator/PL3AidState.h"

#include "Simulator/AidMembers.h"
#include "Simulator/SimulatedAid.h"

#include <iterator>

namespace aurisk {

namespace {

using Program = PL3AidProgram;
constexpr PL3AidBlock blocks[] = {
    { 6, "bandEQs", &Program::bandEQs },
    { 7, "compRatios", &Program::compRatios },
    { 8, "compTimes", &Program::compTimes },
    { 9, "compThreshold", &Program::compThreshold },
    { 10, "mpoConfig", &Program::mpoConfig },
    { 11, "inputSettings", &Program::inputSettings },
};

/// For quiet, television, meetings and a talk face to face: the blocks in their order.
constexpr const char* factoryPrograms[][std::size(blocks)] = {
    {
        // Ratios 1.25 to 2.86, slow, from 50 dB down to 42 dB on, at most -4 to -8 dB.
        "10 0e0f10111213131414151515161616",
        "08090a0b0c0d0e0f1112131415171819",
        "03030303030304040404040404040404",
        "0f0f0f0e0e0e0d0d0d0c0c0c0c0b0b0b",
        "03030303040404040404050505050505",
        // Microphones at 3 and 3, matrix 4 of 8 and 1; feedback canceller, noise reduction, expansion, a low cut.
        "00 0303 0000 040801 01 01 01 00 02 00 02 03",
    },
    {
        // Ratios 1.08 to 2, slowest, from 54 dB on, at most -2 dB.
        "10111112121213131414141515151515",
        "03030405060708090a0b0c0d0e101214",
        "06060606060606060707070707070707",
        "11111111111111111111111111111111",
        "02020202020202020202020202020202",
        // The telecoil: no noise reduction, no cut, half of the microphones mixed in.
        "02 0202 0000 040801 01 00 01 00 00 04 03 04",
    },
    {
        // Ratios 1.25 to 3.64, middling, from 46 dB on, at most -6 dB.
        "0c0d0f11121415161617171717161616",
        "08090a0c0d0f1113151617191a1b1c1d",
        "01010101020202020202030303030303",
        "0d0d0d0d0d0d0d0d0c0c0c0c0c0c0c0c",
        "04040404040404040404040404040404",
        // Both microphones, with more noise reduction and a higher cut.
        "03 0303 0101 050a01 01 02 01 01 03 00 02 03",
    },
    {
        // Ratios 1.33 to 5, fast, from 44 dB on, at most -8 dB.
        "0a0b0d10131517181818171716151414",
        "0a0b0c0e10121416181a1b1c1d1e1f20",
        "00000000000001010101010101010101",
        "0c0c0c0c0c0c0c0c0c0b0b0b0b0b0b0b",
        "05050505050505050505050505050505",
        // Both microphones, with everything against noise and wind.
        "03 0404 0101 050c01 02 03 02 02 04 00 01 02",
    },
};

/// Each member of a state with its key and its range: reading and writing both follow this list.
struct Members {
    template <typename Visitor, typename Version> static void ofVersion(Visitor& visit, Version& version)
    {
        visit.number("major", version.major, 0xFF);
        visit.number("minor", version.minor, 0xFF);
        visit.number("build", version.build, 0xFF);
    }

    template <typename Visitor, typename Blocks> static void ofProgram(Visitor& visit, Blocks& program)
    {
        for (const auto& block : blocks)
            visit.bytes(block.name, program.*block.member);
    }

    template <typename Visitor, typename State> static void ofState(Visitor& visit, State& state)
    {
        visit.text("name", state.name);
        visit.text("address", state.address);
        visit.choice("ear", state.isRight, ears);
        visit.number("manufacturerId", state.manufacturerId, 0xFFFF);
        visit.number("modelNumber", state.modelNumber, 0xFFFF);
        visit.group("version", state.version, [](auto& inner, auto& version) { ofVersion(inner, version); });
        visit.number("volume", state.volume, loudest);
        visit.number("program", state.program, mostPrograms - 1);
        visit.flag("muted", state.muted);
        visit.number("battery", state.battery, 100);
        visit.flag("switchedOff", state.switchedOff);
        visit.groups("programs", state.programs, [](auto& inner, auto& program) { ofProgram(inner, program); });
    }
};

void completeProgram(PL3AidProgram& program, std::size_t number, const std::string& place)
{
    const auto& factory = factoryPrograms[number % std::size(factoryPrograms)];
    for (std::size_t i = 0; i < std::size(blocks); ++i) {
        auto& block = program.*blocks[i].member;
        if (block.empty())
            block = ask_hexadecimal(factory[i]).value();
        if (block.size() != pl3AidBlockSize)
            failAt(fmt::format("{}.programs[{}].{}", place, number, blocks[i].name),
                fmt::format("must be {} bytes", pl3AidBlockSize));
    }
}

} // namespace

std::span<const PL3AidBlock> pl3AidBlocks() { return blocks; }

nlohmann::json toJson(const PL3AidState& state)
{
    WritingMembers writing;
    Members::ofState(writing, state);
    return std::move(writing.object);
}

PL3AidState pl3AidStateFromJson(const nlohmann::json& value, const std::string& place)
{
    ReadingMembers reading{ WorldReader(value, place) };
    PL3AidState state;
    state.isRight = isRightByName(reading.reader.text("name"));
    Members::ofState(reading, state);
    reading.reader.finish();

    const auto programs = state.programs.size();
    refuseNamelessAid(state.name, state.address, place);
    if (programs < 1 || programs > mostPrograms)
        failAt(place + ".programs", fmt::format("must be 1 to {} programs", mostPrograms));
    if (std::size_t(state.program) >= programs)
        failAt(place + ".program", fmt::format("{} is outside 0 to {}", state.program, programs - 1));
    for (std::size_t i = 0; i < programs; ++i)
        completeProgram(state.programs[i], i, place);
    return state;
}

PL3AidState completed(PL3AidState state, const std::string& place) { return pl3AidStateFromJson(toJson(state), place); }

} // namespace aurisk
