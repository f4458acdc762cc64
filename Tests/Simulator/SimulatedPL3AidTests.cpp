#include "Simulator/SimulatedPL3Aid.h"

#include "Simulator/WorldReader.h"
#include "Tests/Simulator/ARadio.h"

namespace aurisk::simulatortests {
namespace {

using nlohmann::json;

const std::string dataName = "95E82A96-47B6-C216-A125-403009D6F03E";
const CBUUID dataCharacteristic = *CBUUID::fromString(dataName);

Data bytes(const std::string& text) { return WorldReader::bytesOf(text, text); }
std::string times(std::size_t count, std::uint8_t byte) { return ask_hexadecimal(Data(count, byte)); }

TEST(APL3Receiver, PutsFramesTogetherFromWhateverPieces)
{
    const std::pair<Lines, Lines> rows[] = {
        { { "7e", "00", "03", "00", "0a", "0b" }, { "00 0a0b" } }, // a byte at a time
        { { "7e00047d5d7d5e7d5d01" }, { "7d 7e7d01" } }, // escape pairs
        { { "7e0002057d", "5e" }, { "05 7e" } }, // a split escape pair
        { { "7e7d207d227d257d2a" }, { "05 0a" } }, // any byte may be escaped
        { { "7e007d5d06" + times(124, 0x01) }, { "06 " + times(124, 0x01) } }, // a length of 7D
        { { "7e010206" + times(256, 0x02), "03" }, { "06 " + times(256, 0x02) + "03" } }, // a length of two bytes
        { { "7e00050001", "7e000181" }, { "81 " } }, // a frame that begins anew
        { { "7e0002057d", "7e00020601" }, { "06 01" } }, // a beginning behind an escape
        { { "000105", "7e000180ff007d", "7e000181" }, { "80 ", "81 " } }, // bytes between frames
        { { "7e000005", "7e000181" }, { "81 " } }, // no room for a command
    };
    for (const auto& [pieces, frames] : rows) {
        HdlcReceiver receiver;
        Lines received;
        for (const auto& piece : pieces)
            for (const auto& [command, payload] : receiver.receive(bytes(piece)))
                received.push_back(ask_hexadecimal(Data{ command }) + " " + ask_hexadecimal(payload));
        EXPECT_EQ(received, frames) << pieces.front();
    }
}

json someText()
{
    auto text = json::parse(R"({ "name": "X1-L", "address": "0A:1B:2C:00:55:67", "ear": "right",
        "volume": 6, "program": 1, "muted": true, "battery": 77, "manufacturerId": 4660, "modelNumber": 43981,
        "version": { "major": 1, "minor": 2, "build": 3 }, "programs": [{}, {}, {}, {}] })");
    text["programs"][1] = { { "bandEQs", "7E7D" + times(14, 0x7A) }, { "compRatios", times(16, 0x01) },
        { "compTimes", times(16, 0x02) }, { "compThreshold", times(16, 0x03) }, { "mpoConfig", times(16, 0x04) },
        { "inputSettings", times(16, 0x05) } };
    return text;
}

/// An aid that somebody listens to.
struct APL3Aid : testing::Test {
    explicit APL3Aid()
    {
        aid->notify = [this](const CBUUID&, const Data& value) { said += ask_hexadecimal(value); };
        aid->didConnect();
        aid->didSubscribe(dataCharacteristic, true);
    }

    /// What it says to a piece, or "refused".
    std::string answerTo(const std::string& piece)
    {
        said.clear();
        const bool isRefused = aid->failsWrite(dataCharacteristic, bytes(piece), false);
        aid->didReceive(dataCharacteristic, bytes(piece));
        return isRefused ? "refused" + said : said;
    }

    const std::shared_ptr<SimulatedPL3Aid> aid = SimulatedPL3Aid::fromJson(someText(), "aid");
    const PL3AidState before = aid->state();
    std::string said;
};

TEST_F(APL3Aid, AnswersReads)
{
    // Volume, program, settings, battery, ear; blocks; streaming, mute, model, manufacturer.
    const std::pair<const char*, std::string> rows[] = { { "80", "0180 06" }, { "81", "0181 01" },
        { "82", "0b82 04 10 01 01 00000000 03 02 01" }, { "83", "0183 4d" }, { "84", "0184 03" },
        { "86", "10867d5e7d5d" + times(14, 0x7A) }, { "87", "1087" + times(16, 0x01) },
        { "88", "1088" + times(16, 0x02) }, { "89", "1089" + times(16, 0x03) }, { "8a", "108a" + times(16, 0x04) },
        { "8b", "108b" + times(16, 0x05) }, { "8e", "018e 00" }, { "8f", "018f 01" }, { "92", "0292 cdab" },
        { "93", "0293 3412" } };
    for (const auto& [command, answer] : rows)
        EXPECT_EQ(bytes(answerTo(std::string("7e0001") + command)), bytes("7e00" + answer)) << command;
}

TEST_F(APL3Aid, DoesWhatIsWritten)
{
    const std::string sixteen = "000102030405060708090a0b0c0d0e0f";
    const Data block = bytes(sixteen);
    const std::pair<std::string, std::function<void(PL3AidState&)>> rows[] = {
        { "7e00020000", [](auto& s) { s.volume = 0; } }, { "7e0002000f", [](auto& s) { s.volume = 15; } },
        { "7e00020f00", [](auto& s) { s.muted = false; } },
        { "7e001106" + sixteen, [&](auto& s) { s.programs[1].bandEQs = block; } },
        { "7e00020103", [](auto& s) { s.program = 3; } },
        { "7e001107" + sixteen, [&](auto& s) { s.programs[3].compRatios = block; } },
        { "7e001108" + sixteen, [&](auto& s) { s.programs[3].compTimes = block; } },
        { "7e001109" + sixteen, [&](auto& s) { s.programs[3].compThreshold = block; } },
        { "7e00110a" + sixteen, [&](auto& s) { s.programs[3].mpoConfig = block; } },
        { "7e00110b" + sixteen, [&](auto& s) { s.programs[3].inputSettings = block; } },
        { "7e00020004 7e00020f01", [](auto& s) { s.volume = 4, s.muted = true; } }, // two in one piece
    };
    auto expected = before;
    for (const auto& [written, change] : rows) {
        change(expected);
        EXPECT_EQ(answerTo(written), "") << written;
        EXPECT_TRUE(aid->state() == expected) << written;
    }
    for (const auto* unseen : { "7e00020500", "7e00030c0102", "7e00020d01 7e00021001 7e00021101" })
        EXPECT_EQ(answerTo(unseen), "") << unseen;
    EXPECT_TRUE(aid->state() == expected);
    EXPECT_EQ(answerTo("7e00020002 7e000180 7e00018b"), "7e000180027e00108b" + sixteen);
}

TEST_F(APL3Aid, RefusesWhatItCannotDoAndStaysAsItIs)
{
    for (const auto* bare : { // what can only be written, what nobody knows, and writes of nothing
             "85", "8c", "8d", "90", "91", "94", "95", "ff", "00", "01", "05", "06", "0c", "0d", "0f", "10", "11" })
        EXPECT_EQ(answerTo(std::string("7e0001") + bare), "refused") << bare;
    for (const auto* ofOneByte : { // what can only be read, what nobody knows, what is out of range, and a read
             "0201", "0301", "0401", "0e00", "1201", "1301", "1401", "7f01", "0010", "0104", "0f02", "8000" })
        EXPECT_EQ(answerTo(std::string("7e0002") + ofOneByte), "refused") << ofOneByte;
    EXPECT_EQ(answerTo("7e0003000102"), "refused") << "two volumes";
    EXPECT_EQ(answerTo("7e001006" + times(15, 0x01)), "refused") << "a block cut short";
    EXPECT_EQ(answerTo("7e001206" + times(17, 0x01)), "refused") << "a block that is too long";
    EXPECT_EQ(answerTo("7e00020001 7e000194"), "refused") << "and with it the volume before it";
    EXPECT_TRUE(aid->state() == before);
}

TEST_F(APL3Aid, ForgetsHalfAFrameWhenItsLinkEnds)
{
    EXPECT_EQ(answerTo("7e000200"), "");
    aid->didDisconnect();
    EXPECT_EQ(answerTo("03"), "");
    EXPECT_EQ(answerTo("7e000180"), "") << "nobody has subscribed";
    EXPECT_TRUE(aid->state() == before);
}

TEST_F(APL3Aid, TellsWhatItsWearerDoes)
{
    const std::pair<const char*, const char*> rows[] = { { "volume 15", "7e0001000f" }, { "program 3", "7e00010103" },
        { "battery 50", "7e00010332" }, { "mute 0", "7e00010f00" }, { "power 0", "" } };
    for (const auto& [action, telling] : rows) {
        said.clear();
        EXPECT_TRUE(aid->perform(*WearerAction::fromString(action))) << action;
        EXPECT_EQ(said, telling) << action;
    }
    EXPECT_FALSE(aid->isOnAir());
    EXPECT_TRUE(aidFromJson(aid->toJson())->toJson() == aid->toJson());
    EXPECT_TRUE(aid->perform({ "power", 1 }));
    EXPECT_TRUE(aid->isOnAir());
    EXPECT_FALSE(aid->perform({ "program", 4 }));
    EXPECT_EQ(answerTo("7e000180 7e000181 7e000183 7e00018f"), "7e0001800f7e000181037e000183327e00018f00");
}

TEST_F(APL3Aid, AdvertisesItsEarAndWhoMadeIt)
{
    EXPECT_EQ(aid->advertisement().localName, "X1-L");
    EXPECT_EQ(aid->advertisement().manufacturerData, bytes("c603033412cdab"));
    auto state = before;
    state.isRight = false;
    aid->setState(state);
    EXPECT_EQ(aid->advertisement().manufacturerData, bytes("c603023412cdab"));
}

TEST(APL3AidsText, IsRefusedWithThePlaceOfWhatIsWrong)
{
    const std::pair<const char*, const char*> rows[] = {
        { R"({ "address": "0A" })", "aid.address: must look like 0A:1B:2C:3D:4E:5F, with capital letters" },
        { R"({ "version": { "build": 256 } })", "aid.version.build: 256 is outside 0 to 255" },
        { R"({ "program": 4 })", "aid.program: 4 is outside 0 to 3" },
        { R"({ "programs": [] })", "aid.programs: must be 1 to 15 programs" },
        { R"({ "programs": [{}, { "mpoConfig": "00" }] })", "aid.programs[1].mpoConfig: must be 16 bytes" },
    };
    for (const auto& [patch, sentence] : rows) {
        auto wrong = someText();
        wrong.merge_patch(json::parse(patch));
        EXPECT_THAT(
            [&] { SimulatedPL3Aid::fromJson(wrong, "aid"); }, testing::ThrowsMessage<SimulatedWorldError>(sentence));
    }
}

TEST(APL3Factory, FitsEachProgramInItsOwnWayAndWithinTheTablesOfIndices)
{
    const auto state = pl3AidStateFromJson({ { "name", "P3-R" }, { "address", "00:00:00:00:00:01" } }, "aid");
    EXPECT_TRUE(state.isRight);
    for (const auto& one : state.programs) {
        EXPECT_THAT(one.compRatios, testing::Each(testing::Lt(36)));
        EXPECT_THAT(one.compTimes, testing::Each(testing::Lt(9)));
        EXPECT_THAT(one.compThreshold, testing::Each(testing::Lt(32)));
        EXPECT_THAT(one.mpoConfig, testing::Each(testing::Lt(16)));
        EXPECT_EQ(std::count(state.programs.begin(), state.programs.end(), one), 1);
    }
}

/// Messages 1 to 4 connect to a PL3 aid "X1-L" and subscribe to it.
struct APL3Link : ARadio {
    APL3Link()
    {
        simulator = Simulator::create({ .aids = { { .aid = pl3, .mtu = 23 } } }, queue);
        central = makeCentral();
        givenFoundAids();
        connect();
        left->discoverServices();
        queue.advance(10ms);
        left->discoverCharacteristics(left->services().at(0));
        EXPECT_EQ(within(1s).back(),
            "characteristics of 95E81860-47B6-C216-A125-403009D6F03E: " + dataName + "/24"); // write and notify
        request = characteristic(0, 0);
        left->setNotifyValue(true, request);
        queue.advance(10ms);
    }

    /// What is heard of pieces that are written back to back.
    Lines heardOf(std::initializer_list<const char*> pieces)
    {
        for (const auto* piece : pieces)
            write(piece, CBCharacteristicWriteType::withResponse);
        return within(1s);
    }

    const std::shared_ptr<SimulatedPL3Aid> pl3 = SimulatedPL3Aid::fromJson(someText(), "aid");
    const std::string written = "written " + dataName, failed = written + ", simulated 4", value = "value " + dataName;
};

TEST_F(APL3Link, SaysByTheConfirmationOfAWriteWhetherTheAidRefuses)
{
    EXPECT_EQ(heardOf({ "7e000180" }), (Lines{ written, value + " 7e00018006" }));
    EXPECT_EQ(heardOf({ "7e00020003" }), Lines{ written });
    EXPECT_EQ(heardOf({ "7e00020010" }), Lines{ failed });
    EXPECT_EQ(heardOf({ "7e0002007d", "30", "7e000180" }), (Lines{ written, failed, written, value + " 7e00018003" }));
    EXPECT_EQ(heardOf({ "7e000186" }), (Lines{ written, value + " 7e0010867d5e7d5d" + times(12, 0x7A) })) << "cut off";
    radio().perform("X1-L", { "volume", 9 });
    EXPECT_EQ(within(1s), Lines{ value + " 7e00010009" });
}

} // namespace
} // namespace aurisk::simulatortests
