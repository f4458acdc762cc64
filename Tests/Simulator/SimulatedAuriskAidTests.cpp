#include "Tests/Simulator/AnAuriskAid.h"

#include <functional>

namespace aurisk::simulatortests {
namespace {

TEST_F(AnAuriskAid, DoesWhatItIsAskedOrRefusesAndStaysAsItIs)
{
    struct Row {
        const char* what;
        const char* request;
        const char* reply;
        std::function<void(AuriskAidState&)> change = [](auto&) {};
    };
    const auto tone = [](AuriskTone one) { return [one](AuriskAidState& state) { state.tone = one; }; };
    const Row rows[] = {
        { "current program", "fe68110200047f16", "00fe6891030004010116" },
        { "volume of its first program", "fe68110201048016", "00fe6891030104080916" },
        { "volume of its last program", "fe68110204048316", "00fe68910304040f1316" },
        { "all volumes", "fe681102ff047e16", "00fe689107ff040208050a0f2b16" },
        { "ear", "fe68110280050016", "00fe6891038005008116" },
        { "right ear", "fe6814038005010516", "00fe68940280058316", [](auto& s) { s.isRight = true; } },
        { "left ear", "fe6814038005000416", "00fe68940280058316", [](auto& s) { s.isRight = false; } },
        { "volume 5, program 2", "fe681c020125ac16", "00fe689c0201252c16", [](auto& s) { s.volumes[1] = 5; } },
        { "volume 0, program 4", "fe681c020140c716", "00fe689c0201404716", [](auto& s) { s.volumes[3] = 0; } },
        { "program 4", "fe681c0202048c16", "00fe689c0202040c16", [](auto& s) { s.program = 3; } },
        { "lock", "fe681c0203008916", "00fe689c0203000916", [](auto& s) { s.locked = true; } },
        { "mute", "fe681c0205008b16", "00fe689c0205000b16", [](auto& s) { s.muted = true; } },
        { "unmute", "fe681c0204008a16", "00fe689c0204000a16", [](auto& s) { s.muted = false; } },
        { "beep", "fe681c0206079316", "00fe689c0206071316", [](auto& s) { s.lastBeep = 7; } },
        { "transparency level", "fe681d02be004516", "00fe689d03be0003c916" },
        { "transparency 9", "fe681d03ae00093f16", "00fe689d02ae00b516", [](auto& s) { s.transparencyLevel = 9; } },
        { "no BR/EDR", "fe681d02bf004616", "00fe689d03bf0000c716" },
        { "continuous BR/EDR", "fe681d03af00013816", "00fe689d02af00b616",
            [](auto& s) { s.brEdrEnabled = s.brEdrContinuous = true; } },
        { "is BR/EDR continuous", "fe681d02bf004616", "00fe689d03bf0001c816" },
        { "BR/EDR", "fe681d03af00023916", "00fe689d02af00b616", [](auto& s) { s.brEdrContinuous = false; } },
        { "is BR/EDR on", "fe681d02bf004616", "00fe689d03bf0002c916" },
        { "end BR/EDR", "fe681d03af00003716", "00fe689d02af00b616", [](auto& s) { s.brEdrEnabled = false; } },
        { "enter hearing mode", "fe681d03390400c516", "00fe689d0239044416", [](auto& s) { s.inHearingMode = true; } },
        { "leave hearing mode", "fe681d03390401c616", "00fe689d0239044416", [](auto& s) { s.inHearingMode = false; } },
        { "base amplitude", "fe681d083902e8032c010000e016", "00fe689d0239024216",
            [](auto& s) {
                s.baseAmplitude = { 1000, 300 };
            } },
        { "tone of 60 dB", "fe681d093901d0073c15cd5b071f16", "00fe689d0239014116",
            tone({ .frequency = 2000, .dB = 60, .timestamp = 123456789 }) },
        { "tone by amplitude", "fe681d0c3903f401e803000002000000af16", "00fe689d0239034316",
            tone({ .frequency = 500, .amplitude = 1000, .timestamp = 2 }) },
        { "stop the tone", "fe681d023900c016", "00fe689d0239004016", [](auto& s) { s.tone.reset(); } },
        { "is there a hearing test", "fe681d023905c516", "00fe689d0239054516" },
        { "begin to be found", "fe681d0281010916", "00fe689d0281018916", [](auto& s) { s.finding = true; } },
        { "end to be found", "fe681d0281000816", "00fe689d0281008816", [](auto& s) { s.finding = false; } },
        { "device test", "fe681d0283000a16", "00fe689d0283008a16", [](auto& s) { s.inDeviceTest = true; } },

        // What it does not know or have.
        { "volume of a fifth program", "fe68110205048416", "00fe68d10205044416" },
        { "a read with a payload", "fe6811030104008116", "00fe68d10201044016" },
        { "an ear of its own kind", "fe6814038005020616", "00fe68d4028005c316" },
        { "no ear", "fe68140280050316", "00fe68d4028005c316" },
        { "two ears", "fe681404800501010716", "00fe68d4028005c316" },
        { "volume for a fifth program", "fe681c020155dc16", "00fe68dc0201559c16" },
        { "volume for program 0", "fe681c0201058c16", "00fe68dc0201054c16" },
        { "program 0", "fe681c0202008816", "00fe68dc0202004816" },
        { "a fifth program", "fe681c0202058d16", "00fe68dc0202054d16" },
        { "a program with a payload", "fe681c030201008a16", "00fe68dc0202014916" },
        { "mute with a value", "fe681c0205018c16", "00fe68dc0205014c16" },
        { "an unknown control", "fe681c0207008d16", "00fe68dc0207004d16" },
        { "no transparency level", "fe681d02ae003516", "00fe68dd02ae00f516" },
        { "a third kind of BR/EDR", "fe681d03af00033a16", "00fe68dd02af00f616" },
        { "a transparency question with a payload", "fe681d03be00014716", "00fe68dd02be000516" },
        { "a third way to be found", "fe681d0281020a16", "00fe68dd028102ca16" },
        { "a third hearing mode", "fe681d03390402c716", "00fe68dd0239048416" },
        { "a base amplitude cut short", "fe681d073902e8032c0100df16", "00fe68dd0239028216" },
        { "a tone cut short", "fe681d083901d0073c15cd5b1716", "00fe68dd0239018116" },
        { "a tone that is too long", "fe681d0d3903f401e80300000200000000b016", "00fe68dd0239038316" },
        { "an unknown hearing test", "fe681d023906c616", "00fe68dd0239068616" },
        { "a pair code", "fe681d02bc004316", "00fe68dd02bc000316" },
        { "shipping with the wrong word", "fe68cc02c3484116", "00fe688c02c3480116" },
        { "an unknown command", "fe6842020000ac16", "00fe68020200006c16" },
        { "a read of nothing", "fe6811007916", "00fe68d1003916" },
        { "half an identifier", "fe681101017b16", "00fe68d101013b16" },

        { "pack for shipping", "fe68cc02c3494216", "00fe684c02c349c216",
            [](auto& s) { s.shipped = true, s.usage.runTimeHistory[0] = 1; } },
    };
    auto expected = someState();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        row.change(expected);
        EXPECT_THAT(answersTo(row.request), ElementsAre(std::string("AE02 ") + row.reply));
        EXPECT_TRUE(aid.state() == completed(expected));
    }
    EXPECT_FALSE(aid.isOnAir());
}

TEST_F(AnAuriskAid, RefusesAHearingTestThatItDoesNotHave)
{
    auto deaf = someState();
    deaf.hearingTestSupported = false;
    aid.setState(deaf);
    EXPECT_THAT(answersTo("fe681d023905c516"), ElementsAre("AE02 00fe68dd0239058516"));
    EXPECT_THAT(answersTo("fe681d03390400c516"), ElementsAre("AE02 00fe68dd0239048416"));
}

TEST_F(AnAuriskAid, DoesNotAnswerWhatIsNoFrameOrAsksForNoAnswer)
{
    for (const auto* value : {
             "fe68110201048116", // checksum off by one
             "fe68110301048116", // a size that is not the length
             "fe681102010480", // no end
             "ff68110201048016", // a wrong beginning
             "fe69110201048116", // a wrong second byte
             "00fe68110201048016", // a byte too many in front
             "fe6811020104801600", // and behind
             "fe68001668", // too short
             "fe6814048203aabb6a16", // a block that asks for no answer
         })
        EXPECT_THAT(answersTo(value), IsEmpty()) << value;
    aid.didReceive(replies, *ask_hexadecimal("fe681c0205008b16"));
    aid.didReceive(requests, {});
    EXPECT_THAT(said, IsEmpty());
    EXPECT_TRUE(aid.state() == completed(someState()));
}

TEST_F(AnAuriskAid, GoesBackToItsDefaultsAndKeepsWhatItWasMadeAs)
{
    auto state = someState();
    state.name = "X1-R";
    state.chip = 0x00;
    state.radioChip = 7;
    state.transparencyFlag = true;
    state.hearingTestSupported = false;
    state.muted = state.locked = state.brEdrEnabled = state.finding = true;
    state.lastBeep = 3;
    aid.setState(state);

    EXPECT_THAT(answersTo("fe681d0282000916"), ElementsAre("AE02 00fe689d0282008916"));
    AuriskAidState expected;
    expected.name = "X1-R";
    expected.address = "0A:1B:2C:3D:4E:5F";
    expected.chip = 0x00;
    expected.radioChip = 7;
    expected.transparencyFlag = true;
    expected.hearingTestSupported = false;
    expected.volumes = { 8, 8, 8, 8 };
    expected.isRight = true;
    expected.battery = 77;
    EXPECT_TRUE(aid.state() == completed(expected));
}

TEST_F(AnAuriskAid, TellsWhatItsWearerDoes)
{
    const auto tellsAt = [this](const char* action) {
        said.clear();
        EXPECT_TRUE(aid.perform(*WearerAction::fromString(action))) << action;
        return said;
    };
    EXPECT_THAT(tellsAt("volume 3"), ElementsAre("AE02 00fe689f050208030a0f3216"));
    EXPECT_THAT(tellsAt("volume 5"), ElementsAre("AE02 00fe689f050208050a0f3416"));
    EXPECT_THAT(tellsAt("program 2"), ElementsAre("AE02 00fe689f050308050a0f3516"));
    EXPECT_THAT(tellsAt("battery 50"), ElementsAre("2A19 32"));
    EXPECT_THAT(tellsAt("mute 1"), IsEmpty());
    EXPECT_TRUE(aid.state().muted);
    EXPECT_EQ(aid.read(batteryLevel), Data{ 50 });

    for (const auto* action : { "volume 16", "volume -1", "program 4", "battery 101", "mute 2", "power 2", "sing 1" })
        EXPECT_FALSE(aid.perform(*WearerAction::fromString(action))) << action;

    aid.setState({ .name = "Solo", .address = "00:00:00:00:00:01", .volumes = { 8 } });
    EXPECT_THAT(tellsAt("volume 12"), ElementsAre("AE02 00fe689f02010c1616"));
}

TEST_F(AnAuriskAid, AdvertisesItsAddressAndChips)
{
    EXPECT_EQ(aid.advertisement().localName, "X1-L");
    EXPECT_EQ(ask_hexadecimal(*aid.advertisement().manufacturerData), "fefe0a1b2c3d4e5f0806");
    auto state = someState();
    state.chip = 0x00;
    state.radioChip = 7;
    state.transparencyFlag = true;
    aid.setState(state);
    EXPECT_EQ(ask_hexadecimal(*aid.advertisement().manufacturerData), "fefe0a1b2c3d4e5f8700");
    EXPECT_EQ(aid.identifier().uuidString().substr(24), "0A1B2C3D4E5F");
}

/// Takes updates; somebody counts how often it starts anew.
struct AnUpdatedAid : AnAuriskAid {
    AnUpdatedAid()
    {
        aid.restart = [this] { ++restarts; };
        aid.didSubscribe(updateAnswers, true);
    }

    std::vector<std::string> answersTo(int opcode, const std::string& payload, int first = 0x91)
    {
        said.clear();
        aid.didReceive(
            updateRequests, *ask_hexadecimal(framed({ 0x1D, int(payload.size() / 2) + 2, first, opcode }, payload)));
        return said;
    }

    void connectAgain()
    {
        aid.didDisconnect();
        aid.didConnect();
        aid.didSubscribe(replies, true);
        aid.didSubscribe(updateAnswers, true);
    }

    const CBUUID updateRequests{ 0xAE3B }, updateAnswers{ 0xAE3C };
    int restarts = 0;
};

TEST_F(AnUpdatedAid, InstallsTheImageThatItTookAndIsDeafUntilItsLinkHasGone)
{
    struct Row {
        int type;
        std::string start, data;
        std::vector<std::string> profile; ///< productSoft, bluetoothSoft and ota afterwards
    };
    const std::string ofCrc = "302e34392e313935", ofText = "39"; // 0.49.195 and 9
    const std::string startOfNine = "09000000c33100000900", nine = "313233343536373839";
    const std::string startOfText = "0a000000484800000a00", text = "76657273696f6e20390a";
    const Row rows[] = {
        { 0, startOfNine, nine, { ofCrc, "332e302e34", "312e31" } },
        { 1, startOfText, text, { ofCrc, ofText, "312e31" } },
        { 2, startOfNine, nine, { ofCrc, ofText, ofCrc } },
    };
    for (const auto& row : rows) {
        const auto first = 0x91 + row.type;
        EXPECT_EQ(answersTo(1, row.start, first).size(), 2u);
        EXPECT_EQ(answersTo(2, "0100" + row.data, first).size(), 1u);
        EXPECT_EQ(restarts, row.type);
        EXPECT_THAT(answersTo(3, "", first),
            ElementsAre(
                "AE3C 00" + framed({ 0x9D, 3, first, 3 }, "17"), "AE3C 00" + framed({ 0x9D, 3, first, 3 }, "19")));
        EXPECT_EQ(restarts, row.type + 1);
        EXPECT_EQ(ask_hexadecimal(aid.firmwareImage()), row.data);
        EXPECT_EQ(aid.state().firmware.imageType, row.type);
        EXPECT_EQ(aid.state().firmware.updates, row.type + 1);

        EXPECT_EQ(readField(0x03), "") << "it does not hear";
        aid.refuse(requests, *ask_hexadecimal("fe68110201048016"));
        EXPECT_THAT(answersTo(1, row.start), IsEmpty());
        connectAgain();
        EXPECT_EQ(readField(0x03), "91 " + row.profile[0]);
        EXPECT_EQ(readField(0x12), "91 " + row.profile[1]);
        EXPECT_EQ(readField(0x20), "91 " + row.profile[2]);
    }
    const auto firmware = aid.state().firmware;
    EXPECT_EQ(ask(0x1D, 0x82, 0x00), "9d"); // factory reset
    EXPECT_TRUE(aid.state().firmware == firmware);
    EXPECT_EQ(readField(0x03), "91 " + ofCrc);
}

TEST_F(AnUpdatedAid, KeepsWhatItHasWhereAnUpdateFails)
{
    auto state = aid.state();
    state.firmware.fails = FirmwareFailure::boot;
    aid.setState(state);
    EXPECT_EQ(answersTo(1, "09000000c33100000900").size(), 2u);
    EXPECT_EQ(answersTo(2, "0100313233343536373839").size(), 1u);
    EXPECT_THAT(answersTo(3, ""), ElementsAre("AE3C 00fe689d03910317b316", "AE3C 00fe689d0391031ab616"));
    EXPECT_TRUE(aid.state() == state);
    EXPECT_EQ(restarts, 0);
    EXPECT_EQ(readField(0x03), "91 322e332e31") << "it still hears, and has 2.3.1";
}

TEST_F(AnUpdatedAid, ForgetsAnUpdateWhenItsLinkEndsOrAFrameIsRefused)
{
    EXPECT_EQ(answersTo(1, "09000000c33100000400").size(), 2u);
    EXPECT_THAT(answersTo(2, "010031323334"), ElementsAre("AE3C 00fe689d03910215b016"));
    connectAgain();
    EXPECT_THAT(answersTo(2, "020035363738"), ElementsAre("AE3C 00fe689d03910216b116"));

    EXPECT_EQ(answersTo(1, "09000000c33100000400").size(), 2u);
    said.clear();
    aid.refuse(updateRequests, *ask_hexadecimal("fe681d089102010031323334eb16"));
    EXPECT_THAT(said, ElementsAre("AE3C 00fe689d03910216b116"));
    EXPECT_THAT(answersTo(2, "010031323334"), ElementsAre("AE3C 00fe689d03910216b116"));
    said.clear();
    aid.didReceive(requests, *ask_hexadecimal("fe681d0c910109000000c331000004002416"));
    EXPECT_THAT(said, ElementsAre("AE02 00fe68dd029101d916")) << "a start belongs to AE3B";
    said.clear();
    for (const auto* value : { "", "fe681d0291031c16" }) // nothing, and a checksum off by one
        aid.didReceive(updateRequests, ask_hexadecimal(value).value_or(Data{}));
    EXPECT_THAT(said, IsEmpty());
}

TEST(WearerActions, AreReadAsTheyArePrinted)
{
    EXPECT_EQ(WearerAction::fromString("volume 5"), (WearerAction{ "volume", 5 }));
    EXPECT_EQ((WearerAction{ "program", -2 }).toString(), "program -2");
    for (const auto* text :
        { "", "volume", "volume ", " 5", "volume x", "volume 5x", "volume 5 6", "volume 99999999999" })
        EXPECT_FALSE(WearerAction::fromString(text)) << text;
}

} // namespace
} // namespace aurisk::simulatortests
