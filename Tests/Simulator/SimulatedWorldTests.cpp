#include "Simulator/SimulatedWorld.h"

#include "Tests/Simulator/ARadio.h"
#include "Tests/Support/Refusal.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace aurisk::simulatortests {
namespace {

using nlohmann::json;

const SimulatedAuriskAid& auriskAid(const SimulatedWorld& world, std::size_t index)
{
    return dynamic_cast<const SimulatedAuriskAid&>(*world.aids.at(index).aid);
}

/// A file that is gone after the test.
struct AWorldFile : testing::Test {
    ~AWorldFile() override { std::filesystem::remove_all(folder); }
    void write(const char* text) const { std::ofstream(path) << text; }

    static std::filesystem::path makeFolder()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "worldXXXXXX").string();
        return mkdtemp(pattern.data());
    }
    std::filesystem::path folder = makeFolder();
    std::filesystem::path path = folder / "world.json";
};

TEST(AWorld, IsReadFromItsText)
{
    const auto world = SimulatedWorld::fromJson(json::parse(R"({
        "radio": "poweredOff",
        "aids": [
            { "kind": "aurisk", "name": "X1-R", "address": "0A:1B:2C:3D:4E:5F", "chip": "h01", "radioChip": "u87",
              "transparencyFlag": true, "hearingTestSupported": false, "transparencyLevel": 200,
              "brEdrEnabled": true, "brEdrContinuous": true, "locked": true, "finding": true, "inHearingMode": true,
              "inDeviceTest": true, "shipped": true, "switchedOff": true,
              "volumes": [1, 15], "program": 1, "battery": 12, "muted": true, "ear": "left", "lastBeep": 3,
              "tone": { "frequency": 1000, "dB": 40, "timestamp": 7 },
              "baseAmplitude": { "frequency": 500, "amplitude": 4294967295 },
              "programBlocks": ["000102030405 060708090A0b"], "globalBlock": "09 08 07 06 05 04 03 02 01",
              "profile": { "productSku": "Ö", "productReserved": "000102030405060708090a0b0c0d0e0f10111213" },
              "usage": { "totalRunTime": 4294967295, "runTimeSincePowerUp": 2, "batteryRunTime": 3,
                         "numberOfBatteryChanges": 4, "programRunTimes": [1, 2, 3, 4, 5, 6],
                         "runTimeHistory": [0, 0, 0, 0, 0, 0, 0, 7], "userEvents": "0807060504030201",
                         "loopGains": "0c0b0a090807060504030201" },
              "firmware": { "diskSize": 9, "fails": "sequence", "failsAt": 7, "image": "09 08", "imageType": 2,
                            "updates": 3 },
              "link": { "rssi": -70, "advertisingInterval": 1, "mtu": 23, "latency": 0.05, "isSilent": true,
                        "faults": [{ "kind": "delay", "message": 3, "by": 0.5 }, { "kind": "lose", "message": 9 }] } },
            { "kind": "aurisk", "name": "Plain-R", "address": "00:00:00:00:00:01", "chip": 7 }
        ],
        "script": [{ "at": 2.5, "aid": "Plain-R", "action": "program 3" }],
        "scriptPeriod": 10
    })"));
    AuriskAidState first;
    first.name = "X1-R";
    first.address = "0A:1B:2C:3D:4E:5F";
    first.chip = 0x01;
    first.radioChip = 7;
    first.transparencyFlag = first.brEdrEnabled = first.brEdrContinuous = first.locked = first.finding = true;
    first.inHearingMode = first.inDeviceTest = first.shipped = first.switchedOff = true;
    first.hearingTestSupported = false;
    first.transparencyLevel = 200;
    first.volumes = { 1, 15 };
    first.program = 1;
    first.battery = 12;
    first.muted = true;
    first.lastBeep = 3;
    first.tone = AuriskTone{ .frequency = 1000, .dB = 40, .timestamp = 7 };
    first.baseAmplitude = AuriskBaseAmplitude{ 500, 4294967295u };
    first.programBlocks = { { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11 } }; // the second is the factory's
    first.globalBlock = { 9, 8, 7, 6, 5, 4, 3, 2, 1 };
    first.profile = { { 0x04, { 0xC3, 0x96 } },
        { 0x05, { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19 } } };
    first.usage = { .totalRunTime = 4294967295,
        .runTimeSincePowerUp = 2,
        .batteryRunTime = 3,
        .numberOfBatteryChanges = 4,
        .programRunTimes = { 1, 2, 3, 4, 5, 6 },
        .runTimeHistory = { 0, 0, 0, 0, 0, 0, 0, 7 },
        .userEvents = { 8, 7, 6, 5, 4, 3, 2, 1 },
        .loopGains = { 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1 } };
    first.firmware = { 9, FirmwareFailure::sequence, 7, { 9, 8 }, 2, 3 };
    EXPECT_TRUE(auriskAid(world, 0).state() == completed(first));

    AuriskAidState plain;
    plain.name = "Plain-R";
    plain.address = "00:00:00:00:00:01";
    plain.chip = 7;
    plain.isRight = true; // from its name
    EXPECT_TRUE(auriskAid(world, 1).state() == completed(plain));

    const auto& placed = world.placed("X1-R");
    EXPECT_EQ(placed.rssi, -70);
    EXPECT_EQ(placed.advertisingInterval, 1s);
    EXPECT_EQ(placed.mtu, 23);
    const LinkFaults faults{
        .latency = 0.05s, .isSilent = true, .faults = { { Fault::Kind::delay, 3, 0.5s }, { Fault::Kind::lose, 9 } }
    };
    EXPECT_TRUE(placed.faults == faults);
    EXPECT_EQ(world.radioState, CBManagerState::poweredOff);
    EXPECT_THAT(world.script, ElementsAre(ScriptedAction{ 2.5s, "Plain-R", { "program", 3 } }));
    EXPECT_EQ(world.scriptPeriod, 10s);
    EXPECT_TRUE(auriskAid(SimulatedWorld::fromJson(world.toJson()), 0).state() == completed(first));
    EXPECT_TRUE(SimulatedWorld::fromJson(world.toJson()).toJson() == world.toJson());
    EXPECT_TRUE(SimulatedWorld::fromJson(json::object()).aids.empty());
}

TEST(AWorld, NamesThePlaceOfWhatIsWrong)
{
    struct Row {
        const char* patch; ///< merged over a world that is right
        const char* sentence;
    };
    const Row rows[] = {
        { R"({ "radios": 1 })", "radios: is no known key; known are radio, aids, scriptPeriod, script" },
        { R"({ "radio": "loud" })",
            "radio: \"loud\" is none of unknown, resetting, unsupported, unauthorized, poweredOff, poweredOn" },
        { R"({ "aids": 3 })", "aids: must be a list" },
        { R"({ "aids": [3] })", "aids[0]: must be an object" },
        { R"({ "aids": [{ "kind": "pl9" }] })", "aids[0].kind: \"pl9\" is none of aurisk, pl3" },
        { R"({ "aids": [{ "kind": "aurisk" }] })", "aids[0].name: is missing" },
        { R"({ "scriptPeriod": 0 })", "scriptPeriod: 0 is outside 0.1 to 86400" },
        { R"({ "script": [{ "at": 61 }] })", "script[0].at: 61 is outside 0 to 60" },
        { R"({ "script": [{ "aid": "B" }] })", "script[0].action: is missing" },
        { R"({ "script": [{ "aid": "B", "action": "volume 1" }] })", "script[0].aid: no aid is called \"B\"" },
        { R"({ "script": [{ "aid": "A", "action": "volume 16" }] })",
            "script[0].action: \"volume 16\" is nothing that the wearer of A can do" },
        { R"({ "script": [{ "aid": "A", "action": "dance" }] })",
            "script[0].action: \"dance\" is nothing that the wearer of A can do" },
    };
    const auto good = json::parse(R"({ "scriptPeriod": 60,
        "aids": [{ "kind": "aurisk", "name": "A", "address": "00:00:00:00:00:01" }] })");
    const auto sentence = [](const json& world) { return refusalOf([&] { SimulatedWorld::fromJson(world); }); };
    EXPECT_EQ(sentence(good), "accepted");
    for (const auto& row : rows) {
        auto world = good;
        world.merge_patch(json::parse(row.patch));
        EXPECT_EQ(sentence(world), row.sentence);
    }
    EXPECT_EQ(sentence(json::array()), "world: must be an object");

    const Row aidRows[] = {
        { R"({ "name": "" })", "aids[0].name: must not be empty" },
        { R"({ "name": 5 })", "aids[0].name: must be a text" },
        { R"({ "address": "0a:1B:2C:3D:4E:5F" })",
            "aids[0].address: must look like 0A:1B:2C:3D:4E:5F, with capital letters" },
        { R"({ "chip": "a5" })", "aids[0].chip: \"a5\" is none of a4, h01, a16" },
        { R"({ "chip": 256 })", "aids[0].chip: 256 is outside 0 to 255" },
        { R"({ "radioChip": 128 })", "aids[0].radioChip: 128 is outside 0 to 127" },
        { R"({ "volumes": [] })", "aids[0].volumes: must be 1 to 15 numbers" },
        { R"({ "volumes": [1, 16] })", "aids[0].volumes[1]: 16 is outside 0 to 15" },
        { R"({ "program": 4 })", "aids[0].program: 4 is outside 0 to 3" },
        { R"({ "program": 1.0 })", "aids[0].program: must be a whole number" },
        { R"({ "battery": 18446744073709551615 })", "aids[0].battery: 18446744073709551615 is outside 0 to 100" },
        { R"({ "muted": 1 })", "aids[0].muted: must be true or false" },
        { R"({ "programBlocks": ["0g"] })", "aids[0].programBlocks[0]: must be bytes, two hexadecimal digits each" },
        { R"({ "chip": "a4", "programBlocks": ["000102030405060708090a0b", "00"] })",
            "aids[0].programBlocks[1]: must be 12 bytes" },
        { R"({ "chip": "a4", "volumes": [1], "programBlocks": ["000102030405060708090a0b", "00"] })",
            "aids[0].programBlocks: must be at most 1 blocks" },
        { R"({ "chip": 9, "programBlocks": ["00"] })", "aids[0].programBlocks: this chip has no blocks" },
        { R"({ "chip": 9, "globalBlock": "00" })", "aids[0].globalBlock: this chip has no blocks" },
        { R"({ "globalBlock": "" })", "aids[0].globalBlock: must be bytes, two hexadecimal digits each" },
        { R"({ "globalBlock": "000102030405060708" })", "aids[0].globalBlock: must be 12 bytes" },
        { R"({ "profile": { "productSku": 5 } })", "aids[0].profile.productSku: must be a text" },
        { R"({ "profile": { "productReserved": "00" } })", "aids[0].profile.productReserved: must be 20 bytes" },
        { R"({ "usage": { "programRunTimes": [1] } })", "aids[0].usage.programRunTimes: must be 6 numbers" },
        { R"({ "usage": { "totalRunTime": 4294967296 } })",
            "aids[0].usage.totalRunTime: 4294967296 is outside 0 to 4294967295" },
        { R"({ "usage": { "userEvents": "00" } })",
            "aids[0].usage.userEvents: must be records of 8 bytes, at most 285" },
        { R"({ "usage": { "loopGains": "00" } })", "aids[0].usage.loopGains: must be records of 12 bytes, at most 95" },
        { R"({ "firmware": { "fails": "often" } })",
            "aids[0].firmware.fails: \"often\" is none of none, init, space, sequence, crc, boot, bootError" },
        { R"({ "firmware": { "failsAt": 0 } })", "aids[0].firmware.failsAt: 0 is outside 1 to 2147483647" },
        { R"({ "firmware": { "image": "00" } })", "aids[0].firmware: must have both image and imageType, or neither" },
        { R"({ "firmware": { "imageType": 0 } })", "aids[0].firmware: must have both image and imageType, or neither" },
        { R"({ "firmware": { "image": "00", "imageType": 3 } })", "aids[0].firmware.imageType: 3 is outside 0 to 2" },
        { R"({ "tone": { "pitch": 1 } })",
            "aids[0].tone.pitch: is no known key; known are frequency, dB, amplitude, timestamp" },
        { R"({ "link": { "mtu": 9 } })", "aids[0].link.mtu: 9 is outside 23 to 517" },
        { R"({ "link": { "latency": "1" } })", "aids[0].link.latency: must be a number of seconds" },
        { R"({ "link": { "faults": [{}] } })", "aids[0].link.faults[0].kind: is missing" },
        { R"({ "link": { "faults": [{ "kind": "lose", "message": 0 }] } })",
            "aids[0].link.faults[0].message: 0 is outside 1 to 2147483647" },
        { R"({ "link": { "faults": [{ "kind": "lose", "by": 1 }] } })",
            "aids[0].link.faults[0].by: is no known key; known are kind, message" },
    };
    for (const auto& row : aidRows) {
        auto world = good;
        world["aids"][0].merge_patch(json::parse(row.patch));
        EXPECT_EQ(sentence(world), row.sentence);
    }

    auto block = std::string(112, '0');
    block[0] = 'f';
    block[1] = 'f'; // an analog gain of 15
    auto noBlock = good;
    noBlock["aids"][0]["programBlocks"] = { std::string(112, '1'), block };
    EXPECT_EQ(sentence(noBlock), "aids[0].programBlocks[1]: holds bits that stand for nothing");
    auto longText = good;
    longText["aids"][0]["profile"] = { { "ota", std::string(248, 'a') } };
    EXPECT_EQ(sentence(longText), "aids[0].profile.ota: must be at most 247 bytes");
    auto misspelt = good;
    misspelt["aids"][0]["volums"] = { 1 };
    EXPECT_THAT(sentence(misspelt), testing::StartsWith("aids[0].volums: is no known key; known are name, address"));
    auto twins = good;
    twins["aids"].push_back({ { "kind", "aurisk" }, { "name", "A" }, { "address", "00:00:00:00:00:02" } });
    EXPECT_EQ(sentence(twins), "aids[1].name: there is already an aid called \"A\"");
    twins["aids"][1] = { { "kind", "aurisk" }, { "name", "B" }, { "address", "00:00:00:00:00:01" } };
    EXPECT_EQ(sentence(twins), "aids[1].address: A already has the address 00:00:00:00:00:01");
}

TEST(AWorld, MadeInCodeObeysTheSameRules)
{
    ManualDispatchQueue queue;
    auto world = ARadio::world();
    world.scriptPeriod = 0s;
    EXPECT_THROW(Simulator::create(world, queue), SimulatedWorldError);
    EXPECT_THROW(SimulatedAuriskAid({ .name = "A", .address = "00:00:00:00:00:01", .volumes = { 1 }, .program = 1 }),
        SimulatedWorldError);
}

TEST_F(AWorldFile, SaysWhatIsWrongWithIt)
{
    const auto loading = [&] { SimulatedWorld::load(path); };
    EXPECT_EQ(refusalOf(loading), path.string() + ": cannot be read: No such file or directory");
    write("{\n\"aids\": ");
    EXPECT_EQ(refusalOf(loading), path.string() + ": is no JSON (line 2)");
    write("{ \"aids\": 1e999 }");
    EXPECT_EQ(refusalOf(loading), path.string() + ": holds a number that is too large");
    EXPECT_EQ(refusalOf([&] { SimulatedWorld::load(folder); }), folder.string() + ": cannot be read: Is a directory");
    write("{ \"aids\": [7] }");
    EXPECT_EQ(refusalOf(loading), path.string() + ": aids[0]: must be an object");
    const auto nowhere = folder / "none" / "world.json";
    EXPECT_EQ(refusalOf([&] { SimulatedWorld().save(nowhere); }),
        nowhere.string() + ": cannot be written: No such file or directory");
    std::filesystem::create_directories(folder / "folder" / "inner");
    EXPECT_THAT(
        refusalOf([&] { SimulatedWorld().save(folder / "folder"); }), testing::HasSubstr("cannot be written: "));
    SimulatedWorld().save(path);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2) << "nothing else lies about";
}

TEST(AScript, IsPlayedInItsOrderAndAgainWithEachPeriod)
{
    ManualDispatchQueue queue;
    auto world = ARadio::world();
    world.script = { { 3s, "X1-L", { "volume", 3 } }, { 1s, "X1-L", { "volume", 1 } } };
    world.scriptPeriod = 5s;
    auto simulator = Simulator::create(world, queue);
    const auto volumeAfter = [&](Seconds span) {
        queue.advance(span);
        return auriskAid(simulator->world(), 0).state().volumes.front();
    };
    EXPECT_EQ(volumeAfter(0.9s), 10);
    EXPECT_EQ(volumeAfter(0.2s), 1);
    EXPECT_EQ(volumeAfter(2s), 3);
    EXPECT_EQ(volumeAfter(2.8s), 3);
    EXPECT_EQ(volumeAfter(0.2s), 1);
    EXPECT_EQ(queue.clock()->pendingCount(), 1u) << "one timer for the whole script";
    simulator.reset();
    queue.advance(10s);
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);

    world.scriptPeriod.reset();
    simulator = Simulator::create(world, queue);
    EXPECT_EQ(volumeAfter(10s), 3);
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);
}

TEST(TheDefaultWorld, HasTwoPairsAndTwoSinglesAndWearersWhoMoveThem)
{
    ManualDispatchQueue queue;
    const auto simulator = Simulator::create(SimulatedWorld::makeDefault(), queue);
    const auto recorder = std::make_shared<RadioRecorder>();
    const auto central = simulator->platform()->makeCentralManager(recorder, {});
    const auto settings = [&] {
        auto value = simulator->world().toJson();
        for (auto& aid : value["aids"])
            aid.erase("usage");
        return value;
    };
    queue.runUntilIdle();
    central->scanForPeripherals({});
    queue.advance(1s);
    EXPECT_THAT(recorder->take(),
        ElementsAre("state 5", "found X1-L -52", "found X1-R -58", "found Solo-L -71", "found Uno-R -66",
            "found P3-L -75", "found P3-R -78"));
    const auto before = settings();
    queue.advance(3.5s);
    EXPECT_TRUE(settings() != before);
    queue.advance(21s);
    EXPECT_TRUE(settings() == before) << "each round ends where it began";
}

} // namespace
} // namespace aurisk::simulatortests
