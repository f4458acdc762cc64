#include "Tests/Tool/CodecLines.h"

namespace aurisk::tests {
namespace {

TEST(CodecHex, ReadsAsPeopleWriteAndWritesLowerCase)
{
    expectAnswers({
        { R"({"op":"hex.toBytes","text":"FE68"})", R"({"ok":"fe68"})" },
        { R"({"op":"hex.toBytes","text":""})", R"({"ok":null})" },
        { R"({"op":"hex.fromBytes","bytes":"0AfF"})", R"({"ok":"0aff"})" },
        { R"({"op":"hex.fromBytes","bytes":""})", R"({"ok":""})" },
    });
    expectErrors({
        { R"({"op":"hex.toBytes","text":null})", { "\"text\"", "null" } },
        { R"({"op":"hex.fromBytes","bytes":"0a f"})", { "\"bytes\"", "\"0a f\"" } },
        { R"({"op":"hex.fromBytes","bytes":"0g"})", { "\"bytes\"", "\"0g\"" } },
        { R"({"op":"hex.fromBytes","bytes":"abc"})", { "\"bytes\"", "3", "even" } },
        { R"({"op":"hex.fromBytes","bytes":12})", { "\"bytes\"", "12" } },
    });
}

TEST(CodecFrame, IsEncodedWithBothIdentifiers)
{
    expectAnswers({
        { R"({"op":"frame.encode","cmd":17,"di0":1,"di1":4,"data":null})", R"({"ok":"fe68110201048016"})" },
        { R"({"op":"frame.encode","cmd":17,"di0":1,"di1":4,"data":""})", R"({"ok":"fe68110201048016"})" },
        { R"({"op":"frame.encode","cmd":20,"di0":0,"di1":3,"data":"FFffFFff","dataSize":1})",
            R"({"ok":"fe6814060003ffffffff8116"})" },
    });
    expectStops(
        { { R"({"op":"frame.encode","cmd":17,"di0":1,"di1":4,"data":")" + std::string(508, '0') + R"("})", "254" } });
    expectErrors({
        { R"({"op":"frame.encode","cmd":17,"di0":null,"di1":4,"data":null})", { "\"di0\"", "null" } },
        { R"({"op":"frame.encode","cmd":17,"di0":1,"di1":4})", { "\"data\"", "missing" } },
        { R"({"op":"frame.encode","cmd":-1,"di0":1,"di1":4,"data":null})", { "\"cmd\"", "-1" } },
        // Unusable, though the payload is too long as well.
        { R"({"op":"frame.encode","cmd":17,"di0":1,"di1":256,"data":")" + std::string(508, '0') + R"("})",
            { "\"di1\"", "256" } },
    });
}

TEST(CodecFrame, IsDecodedAsReceivedOrIsNone)
{
    expectAnswers({
        { R"({"op":"frame.decode","bytes":"00fe68110201048016"})",
            R"({"ok":{"cmd":17,"dataSize":2,"di0":1,"di1":4,"data":""}})" },
        { R"({"op":"frame.decode","bytes":"00FE6891030104060716"})",
            R"({"ok":{"cmd":145,"dataSize":3,"di0":1,"di1":4,"data":"06"}})" },
        { R"({"op":"frame.decode","bytes":"00fe684200aa16"})",
            R"({"ok":{"cmd":66,"dataSize":2,"di0":null,"di1":null,"data":null}})" },
        { R"({"op":"frame.decode","bytes":"fe68110201048016"})", R"({"ok":null})" },
        { R"({"op":"frame.decode","bytes":"00"})", R"({"ok":null})" },
    });
    expectStops({
        { R"({"op":"frame.decode","bytes":""})", "" },
        { R"({"op":"frame.decode","bytes":"00fe6891fa0104060716"})", "250" },
    });
}

TEST(CodecResult, IsWhatTheDeviceSaysOrWhyItRefused)
{
    expectAnswers({
        { R"({"op":"result.decode","bytes":"00fe689105ff040205060e16"})",
            R"({"ok":{"success":{"didReadProgram":{"program":1,"volume":6}}}})" },
        { R"({"op":"result.decode","bytes":"00fe6891030004030316"})",
            R"({"ok":{"success":{"didReadProgram":{"program":3,"volume":null}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68910402030a0b1716"})",
            R"({"ok":{"success":{"didReadDsp":{"program":2,"data":"0a0b"}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68910306030a0f16"})",
            R"({"ok":{"success":{"didReadGlobal":{"data":"0a"}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68910413085831a116"})",
            R"({"ok":{"success":{"didReadProfile":{"data":"5831","type":"advertisementName"}}}})" },
        { R"({"op":"result.decode","bytes":"00fe689d03be0007cd16"})",
            R"({"ok":{"success":{"didReadTransparency":{"level":7}}}})" },
        { R"({"op":"result.decode","bytes":"00fe6891038005018216"})",
            R"({"ok":{"success":{"didReadOrientation":{"orientation":"right"}}}})" },
        { R"({"op":"result.decode","bytes":"00fe689d03bf0002c916"})",
            R"({"ok":{"success":{"didReadBrEdr":{"enable":true,"continuousIfEnable":false}}}})" },
        { R"({"op":"result.decode","bytes":"00fe689d0239054516"})",
            R"({"ok":{"success":{"didReadHearingTest":{"supported":true}}}})" },
        { R"({"op":"result.decode","bytes":"00fe689d04bc0031322816"})",
            R"({"ok":{"success":{"didReadPairCode":{"code":"3132"}}}})" },
        { R"({"op":"result.decode","bytes":"00fe689f030207091c16"})",
            R"({"ok":{"success":{"didNotify":{"program":1,"volume":9}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68940202030316"})",
            R"({"ok":{"success":{"didRequest":{"data":{"cmd":148,"dataSize":2,"di0":2,"di1":3,"data":""}}}}})" },
        { R"({"op":"result.decode","bytes":"00fe689f000716"})",
            R"({"ok":{"success":{"unknown":{"data":{"cmd":159,"dataSize":2,"di0":null,"di1":null,"data":null}}}}})" },

        { R"({"op":"result.decode","bytes":"00fe68d10201044016"})", R"({"ok":{"error":{"readError":{}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68d4030203004416"})", R"({"ok":{"error":{"writeError":{}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68dc0201256c16"})", R"({"ok":{"error":{"controlError":{}}}})" },
        { R"({"op":"result.decode","bytes":"00fe68dd02be000516"})", R"({"ok":{"error":{"btError":{}}}})" },
        { R"({"op":"result.decode","bytes":"00fe6842020000ac16"})",
            R"({"ok":{"error":{"other":{"message":"parse error"}}}})" },

        // The checksum is wrong.
        { R"({"op":"result.decode","bytes":"00fe689104020405060016"})", R"({"ok":null})" },
    });
    expectStops({
        { R"({"op":"result.decode","bytes":""})", "" },
        { R"({"op":"result.decode","bytes":"00fe68910201040016"})", "" },
        { R"({"op":"result.decode","bytes":"00fe689d02be00c516"})", "" },
        { R"({"op":"result.decode","bytes":"00fe689f030307091d16"})", "program 3" },
    });
}

TEST(CodecManuData, IsDecodedWhateverItsLength)
{
    expectAnswers({
        { R"({"op":"manudata.decode","bytes":"fefe0a1b2c3d4e5f0806"})",
            R"({"ok":{"address":"0A:1B:2C:3D:4E:5F","hearChip":"a16","bleChip":"tiny600","transEnable":false}})" },
        { R"({"op":"manudata.decode","bytes":"fefe0a1b2c3d4e5f8801"})",
            R"({"ok":{"address":"0A:1B:2C:3D:4E:5F","hearChip":"h01","bleChip":"u87","transEnable":true}})" },
        { R"({"op":"manudata.decode","bytes":"fefe0a1b2c3d4e5f0907"})",
            R"({"ok":{"address":"0A:1B:2C:3D:4E:5F","hearChip":"unassigned","bleChip":"unassigned","transEnable":false}})" },
        { R"({"op":"manudata.decode","bytes":"fefeffffffffffff7f0200"})", // neither chip is known, and a byte more
            R"({"ok":{"address":"FF:FF:FF:FF:FF:FF","hearChip":"a4","bleChip":"u87","transEnable":false}})" },
        { R"({"op":"manudata.decode","bytes":"fefe0a1b2c3d4e5f88"})", // a byte too short: nor is the flag looked at
            R"({"ok":{"address":"0A:1B:2C:3D:4E:5F","hearChip":"a4","bleChip":"u87","transEnable":false}})" },
        { R"({"op":"manudata.decode","bytes":"fefe0a1b2c"})",
            R"({"ok":{"address":"0A:1B:2C","hearChip":"a4","bleChip":"u87","transEnable":false}})" },
        { R"({"op":"manudata.decode","bytes":""})",
            R"({"ok":{"address":"","hearChip":"a4","bleChip":"u87","transEnable":false}})" },
    });
}

TEST(CodecSelect, NamesTheClassThatAnAdvertisementLeadsTo)
{
    expectAnswers({
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0806","name":"X1-L"})", R"({"ok":"AuriskA16Accessory"})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0800","name":"X1-R"})", R"({"ok":"AuriskA4Accessory"})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0801","name":"-L"})", R"({"ok":"AuriskH01Accessory"})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0807","name":"X1-L"})", R"({"ok":"AuriskAccessory"})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0802","name":"X1-L"})", R"({"ok":"AuriskA4Accessory"})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f","name":"X1-L"})", R"({"ok":"AuriskA4Accessory"})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e","name":"X1-L"})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0806","name":"X1-l"})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0806","name":"X1-L "})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0806","name":"L"})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0806","name":null})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"feff0a1b2c3d4e5f0806","name":"X1-L"})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"fffe0a1b2c3d4e5f0806","name":"X1-L"})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"c703","name":"X1-L"})", R"({"ok":null})" },
        { R"({"op":"select","bytes":"c6030000000000","name":null})", R"({"ok":"PL3Accessory"})" },
    });
    expectStops({
        { R"({"op":"select","bytes":"c60302000000","name":"X1-L"})", "7 bytes" },
        { R"({"op":"select","bytes":"c6","name":null})", "1 byte" },
        { R"({"op":"select","bytes":"","name":"X1-L"})", "0 byte" },
    });
    expectErrors({ { R"({"op":"select","bytes":"c6"})", { "\"name\"", "missing" } } });
}

TEST(CodecEnum, ListsTheCasesInTheOrderOfTheirDeclaration)
{
    expectAnswers({
        { R"({"op":"enum","name":"AuriskChip"})",
            R"({"ok":[{"case":"h01","rawValue":1},{"case":"a4","rawValue":0},{"case":"a16","rawValue":6},{"case":"unassigned","rawValue":7}]})" },
        { R"({"op":"enum","name":"AuriskProfileType"})",
            R"({"ok":[{"case":"productSeries","rawValue":0},{"case":"productPattern","rawValue":1},)"
            R"({"case":"productHard","rawValue":2},{"case":"productSoft","rawValue":3},{"case":"productSku","rawValue":4},)"
            R"({"case":"productReserved","rawValue":5},{"case":"productSeriesCode","rawValue":6},)"
            R"({"case":"bluetoothHardPattern","rawValue":16},{"case":"bluetoothHard","rawValue":17},)"
            R"({"case":"bluetoothSoft","rawValue":18},{"case":"advertisementName","rawValue":19},)"
            R"({"case":"hearingAidChip","rawValue":34},{"case":"ota","rawValue":32},{"case":"unknown","rawValue":33}]})" },
    });
    expectErrors({ { R"({"op":"enum","name":"Chip"})", { "\"name\"", "\"Chip\"" } } });
}

} // namespace
} // namespace aurisk::tests
