#include "Tests/Tool/CodecLines.h"

#include <nlohmann/json.hpp>
#include <rapidcheck/gtest.h>

namespace aurisk::tests {
namespace {

using namespace std::string_literals;
using testing::StartsWith;

TEST(CodecAnswer, GivesBackTheIdentifierWhateverItIs)
{
    expectAnswers({
        { R"({"id":1,"op":"hex.toBytes","text":"a"})", R"({"id":1,"ok":"0a"})" },
        { R"({"op":"hex.toBytes","text":"a","id":null})", R"({"id":null,"ok":"0a"})" },
        { R"({"id":"a\"\n\u0000\u00e9","op":"hex.toBytes","text":"a"})",
            R"({"id":"a\"\n\u0000)"
            "\xC3\xA9"
            R"(","ok":"0a"})" },
        { R"({"id":[1.0,-1,true,{"b":[],"a":{}}],"op":"hex.toBytes","text":"a"})",
            R"({"id":[1.0,-1,true,{"a":{},"b":[]}],"ok":"0a"})" },
        { R"({"id":18446744073709551615,"op":"hex.toBytes","text":"x"})", R"({"id":18446744073709551615,"ok":null})" },
    });
    // Where the line is JSON and cannot be used, and where it breaks a precondition, too.
    EXPECT_THAT(codec::answer(R"({"id":[7]})"), StartsWith(R"({"id":[7],"error":")"));
    EXPECT_THAT(codec::answer(R"({"id":7,"op":"none"})"), StartsWith(R"({"id":7,"error":")"));
    EXPECT_THAT(codec::answer(R"({"id":7,"op":"frame.decode","bytes":""})"), StartsWith(R"({"id":7,"stop":")"));
}

TEST(CodecAnswer, TakesLinesAsJsonAllowsThem)
{
    expectAnswers({
        { "  { \"text\" : \"a\" ,\t\"op\":\"hex.toBytes\" } \r", R"({"ok":"0a"})" },
        { R"({"\u006fp":"hex.toBytes","text":"\u0061"})", R"({"ok":"0a"})" },
        { R"({"op":"hex.toBytes","text":"a","bytes":5,"more":{"text":"b"}})", R"({"ok":"0a"})" },
    });
}

TEST(CodecAnswer, IsAnErrorForWhatIsNoObjectOfAnOperation)
{
    expectErrors({
        { "{", { "JSON", "byte 2" } },
        { "nonsense", { "JSON" } },
        { R"({"op":"hex.toBytes","text":"a"} {})", { "JSON" } },
        { R"({"op":"hex.toBytes","text":"a",})", { "JSON" } },
        { "{\"op\":\"hex.toBytes\",\"text\":\"\xFF\"}", { "JSON", "byte 29" } },
        { "{\"op\":\"hex.toBytes\",\"text\":\"\xED\xA0\x80\"}", { "JSON" } }, // half a surrogate pair
        { R"({"op":"hex.toBytes","text":"\ud800"})", { "JSON" } },
        { "{\"op\":\"hex.toBytes\",\"text\":\"a\"}\0"s, { "JSON" } },
        { R"({"op":"hex.toBytes","text":1e999})", { "number" } },
        { "[]", { "a list" } },
        { "7", { "7" } },
        { "null", { "null" } },
        { R"("op")", { "\"op\"" } },
        { "{}", { "\"op\"", "missing" } },
        { R"({"op":null})", { "\"op\"", "null" } },
        { R"({"op":"hex"})", { "\"op\"", "\"hex\"" } },
        { R"({"op":"Hex.toBytes","text":"a"})", { "\"Hex.toBytes\"" } },
    });
}

TEST(CodecAnswer, ShowsLongValuesShortened)
{
    const auto text = codec::answer(R"({"op":")" + std::string(100'000, 'x') + R"("})");
    EXPECT_THAT(text, StartsWith(R"({"error":")"));
    EXPECT_LT(text.size(), 200U);
    // Also where that cuts a character in two.
    for (std::size_t length = 50; length < 60; ++length) {
        const auto op = std::string(length, 'x') + "\xF0\x9F\x91\x82\xF0\x9F\x91\x82";
        EXPECT_TRUE(nlohmann::json::accept(codec::answer(R"({"op":")" + op + R"("})"))) << length;
    }
}

std::string nested(std::string_view opening, std::size_t depth, std::string_view closing)
{
    std::string text;
    for (std::size_t i = 0; i < depth; ++i)
        text += opening;
    text += "1";
    for (std::size_t i = 0; i < depth; ++i)
        text += closing;
    return text;
}

TEST(CodecAnswer, OutlivesLinesThatAreNestedDeeply)
{
    constexpr std::size_t deep = 100'000;
    EXPECT_THAT(codec::answer(std::string(deep, '[')), StartsWith(R"({"error":")"));
    EXPECT_THAT(codec::answer(nested("[", deep, "]")), StartsWith(R"({"error":")"));
    EXPECT_THAT(codec::answer(R"({"id":)" + nested("[", deep, "]") + "}"), StartsWith(R"({"error":")"));
    EXPECT_THAT(codec::answer(R"({"op":)" + nested(R"({"a":)", deep, "}") + "}"), StartsWith(R"({"error":")"));
    EXPECT_EQ(
        codec::answer(R"({"op":"hex.toBytes","text":"a","more":)" + nested("[", deep, "]") + "}"), R"({"ok":"0a"})");

    const auto identifier = nested("[", 500, "]");
    EXPECT_EQ(codec::answer(R"({"op":"hex.toBytes","text":"a","id":)" + identifier + "}"),
        R"({"id":)" + identifier + R"(,"ok":"0a"})");
}

/// A good line, some of whose bytes are others or gone.
rc::Gen<std::string> hostileLine()
{
    return rc::gen::exec([] {
        auto line = *rc::gen::element(R"({"id":[1,"a"],"op":"frame.decode","bytes":"00fe6891030104060716"})"s,
            R"({"op":"result.decode","bytes":"00fe689105ff040205060e16"})"s,
            R"({"op":"request.encode","request":{"playSine":{"freq":1000,"dB":60,"timestamp":16909060}}})"s,
            R"({"op":"request.encode","request":{"writeGlobalDsp":{"global":{"a4":"111213141516171819"},"chip":"a4","withResponse":true}}})"s,
            R"({"op":"select","bytes":"fefe0a1b2c3d4e5f0806","name":"X1-L"})"s);
        for (auto changes = *rc::gen::inRange(0, 4); changes > 0; --changes) {
            const auto place = *rc::gen::inRange<std::size_t>(0, line.size());
            if (*rc::gen::arbitrary<bool>())
                line[place] = static_cast<char>(
                    *rc::gen::oneOf(rc::gen::arbitrary<char>(), rc::gen::element('"', '0', '9', '-', '{', ']')));
            else
                line.erase(place, *rc::gen::inRange<std::size_t>(1, 4));
            if (line.empty())
                break;
        }
        return line;
    });
}

RC_GTEST_PROP(CodecAnswer, IsOneObjectWithOneOutcomeWhateverTheLine, ())
{
    const auto line = *rc::gen::oneOf(hostileLine(), hostileLine(), rc::gen::arbitrary<std::string>());
    const auto text = codec::answer(line);
    if (text.empty())
        return;
    RC_ASSERT(text.find('\n') == text.npos);
    const auto answer = nlohmann::json::parse(text);
    RC_ASSERT(answer.contains("ok") + answer.contains("stop") + answer.contains("error") == 1);
    RC_TAG(answer.contains("ok") ? "ok" : answer.contains("stop") ? "stop" : "error");
}

} // namespace
} // namespace aurisk::tests
