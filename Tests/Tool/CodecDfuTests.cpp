#include "Tests/Tool/CodecLines.h"

namespace aurisk::tests {
namespace {

const std::string digits = R"("image":"313233343536373839")";
const std::string zeros = R"("image":")" + std::string(50, '0') + '"';

TEST(CodecDfu, FramesOfAnUpdate)
{
    expectAnswers({
        { R"({"op":"dfu.start",)" + digits + R"(,"type":0,"packetSize":20})",
            R"({"ok":"fe681d0c910109000000c33100000a002a16"})" },
        { R"({"op":"dfu.start",)" + zeros + R"(,"type":2,"packetSize":261})",
            R"({"ok":"fe681d0c93011900000000000000fb003916"})" },
        { R"({"op":"dfu.start",)" + zeros + R"(,"type":1,"packetSize":10})",
            R"({"ok":"fe681d0c9201190000000000000000003d16"})" },
        { R"({"op":"dfu.data",)" + digits + R"(,"type":0,"packetSize":20})",
            R"({"ok":["fe681d0d910201003132333435363738390316"]})" },
        { R"({"op":"dfu.data",)" + zeros + R"(,"type":0,"packetSize":20})",
            R"({"ok":["fe681d0e91020100000000000000000000002716","fe681d0e91020200000000000000000000002816",)"
            R"("fe681d099102030000000000002416"]})" },
        { R"({"op":"dfu.validate","type":0})", R"({"ok":"fe681d0291031b16"})" },
        { R"({"op":"dfu.validate","type":2})", R"({"ok":"fe681d0293031d16"})" },
    });
    expectStops({
        { R"({"op":"dfu.start",)" + zeros + R"(,"type":0,"packetSize":9})", "9" },
        { R"({"op":"dfu.start",)" + zeros + R"(,"type":0,"packetSize":262})", "262" },
        { R"({"op":"dfu.data",)" + zeros + R"(,"type":0,"packetSize":10})", "carries nothing" },
        { R"({"op":"dfu.data",)" + zeros + R"(,"type":0,"packetSize":262})", "262" },
        { R"({"op":"dfu.data","image":"","type":0,"packetSize":20})", "carries nothing" },
    });
    expectErrors({
        { R"({"op":"dfu.validate","type":3})", { "\"type\"", "3" } },
        { R"({"op":"dfu.start",)" + zeros + R"(,"type":-1,"packetSize":9})", { "\"type\"", "-1" } },
        { R"({"op":"dfu.data",)" + zeros + R"(,"type":0,"packetSize":4294967296})", { "\"packetSize\"" } },
    });
}

TEST(CodecDfu, AnswersOfTheDevice)
{
    expectAnswers({
        { R"({"op":"dfu.response","bytes":"00fe689d03910111ab16"})",
            R"({"ok":{"requestOpCode":1,"status":"init_success"}})" },
        { R"({"op":"dfu.response","bytes":"00fe689d03910319b516"})",
            R"({"ok":{"requestOpCode":3,"status":"boot_write_ok"}})" },
        { R"({"op":"dfu.response","bytes":"00fe689d03910515b316"})",
            R"({"ok":{"requestOpCode":5,"status":"recv_pkg_success"}})" },
        { R"({"op":"dfu.response","bytes":"00fe689d03910615b416"})",
            R"({"ok":{"requestOpCode":null,"status":"recv_pkg_success"}})" },
        { R"({"op":"dfu.response","bytes":"00fe689d0391021bb616"})", R"({"ok":{"requestOpCode":2,"status":null}})" },
        // An error reply says at most that the boot failed.
        { R"({"op":"dfu.response","bytes":"00fe68dd0391031af616"})",
            R"({"ok":{"requestOpCode":null,"status":"boot_write_failure"}})" },
        { R"({"op":"dfu.response","bytes":"00fe68dd03910319f516"})", R"({"ok":{"requestOpCode":null,"status":null}})" },
        // No payload; no identifiers; no frame.
        { R"({"op":"dfu.response","bytes":"00fe689d0291029a16"})", R"({"ok":{"requestOpCode":null,"status":null}})" },
        { R"({"op":"dfu.response","bytes":"00fe689d000516"})", R"({"ok":{"requestOpCode":null,"status":null}})" },
        { R"({"op":"dfu.response","bytes":"00fe689d03910111ac16"})", R"({"ok":{"requestOpCode":null,"status":null}})" },
    });
    expectStops({ { R"({"op":"dfu.response","bytes":""})", "" } });
}

TEST(CodecCrc16, TakesEveryArgument)
{
    const std::string of = R"({"op":"crc16","bytes":"313233343536373839","polynomial":)";
    expectAnswers({
        { of + R"(4129,"initialValue":0,"finalXORValue":0,"reverseInput":false,"reverseOutput":false})",
            R"({"ok":12739})" },
        { of + R"(4129,"initialValue":65535,"finalXORValue":65535,"reverseInput":false,"reverseOutput":true})",
            R"({"ok":54862})" },
    });
    expectErrors({
        { of + R"(65536,"initialValue":0,"finalXORValue":0,"reverseInput":false,"reverseOutput":false})",
            { "\"polynomial\"", "65536" } },
        { of + R"(4129,"initialValue":0,"finalXORValue":0,"reverseInput":0,"reverseOutput":false})",
            { "\"reverseInput\"" } },
    });
}

} // namespace
} // namespace aurisk::tests
