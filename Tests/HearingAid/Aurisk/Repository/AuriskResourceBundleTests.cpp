#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskResourceBundle.h"

#include <gmock/gmock.h>

#include <fstream>

namespace aurisk::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A folder that is gone after the test.
class ResourceBundle : public testing::Test {
protected:
    ~ResourceBundle() override { std::filesystem::remove_all(folder); }
    void given(const std::string& name, std::string_view text) { std::ofstream(folder / name) << text; }
    std::vector<std::string> skuCodes() const
    {
        std::vector<std::string> codes;
        for (const auto& entry : AuriskResourceBundle::load(folder).entries)
            codes.push_back(entry.skuCode);
        return codes;
    }

    const std::filesystem::path folder = [] {
        std::string path = testing::TempDir() + "bundleXXXXXX";
        return std::filesystem::path(::mkdtemp(path.data()));
    }();
};

TEST_F(ResourceBundle, HoldsAnObjectOrAListFromEachJsonFileInTheOrderOfTheirNames)
{
    EXPECT_THAT(skuCodes(), IsEmpty());
    given("b.json", R"([{"skuCode":"B1"},{"skuCode":"B2"}])");
    given("a.json", R"({"skuCode":"A"})");
    given("c.json", "[]");
    given("readme.txt", "no JSON");
    EXPECT_THAT(skuCodes(), ElementsAre("A", "B1", "B2"));
    EXPECT_THAT(AuriskResourceBundle::load(folder).errors, IsEmpty());
}

TEST_F(ResourceBundle, LeavesOutAndNamesEachFileThatIsBroken)
{
    given("a.json", R"({"skuCode":)");
    given("b.json", R"([{"skuCode":"B1"},{"skuCode":"B2","hornPowerCode":300}])");
    given("c.json", R"({"patternCode":"P1"})");
    given("d.json", R"({"skuCode":"D","minVolume":9,"maxVolume":8})");
    given("e.json", "5");
    given("f.json", R"({"skuCode":"F","minVolume":1e999})");
    given("g.json", "");
    std::filesystem::create_directory(folder / "h.json");
    std::filesystem::create_symlink(folder / "none", folder / "i.json");
    given("j.json", R"({"skuCode":"J"})");
    EXPECT_THAT(skuCodes(), ElementsAre("J"));
    EXPECT_THAT(AuriskResourceBundle::load(folder).errors,
        ElementsAre("a.json: no JSON from byte 12 on", "b.json: [1].hornPowerCode: 300 is outside 0 ... 255",
            "c.json: skuCode: names no model", "d.json: minVolume: 9 is above maxVolume, 8", "e.json: 5 is no object",
            "f.json: a number that is too large to be held", "g.json: no JSON from byte 1 on", "h.json: cannot be read",
            "i.json: cannot be read"));
}

TEST_F(ResourceBundle, FailsWithTheSystemsErrorWithoutItsFolder)
{
    try {
        AuriskResourceBundle::load(folder / "none");
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST_F(ResourceBundle, FindsTheEntryThatNamesMostOfADeviceAndNothingElse)
{
    given("a.json", R"([
        {"skuCode":"S","shape":"any"},
        {"skuCode":"S","hornPowerCode":1,"shape":"any, receiver 1"},
        {"skuCode":"S","patternCode":"P","shape":"P"},
        {"skuCode":"S","patternCode":"P","hornPowerCode":1,"shape":"P, receiver 1"},
        {"skuCode":"S","patternCode":"P","hornPowerCode":1,"shape":"P, receiver 1 again"},
        {"skuCode":"T","patternCode":"P","hornPowerCode":1,"shape":"T, P, receiver 1"}])");
    const auto bundle = AuriskResourceBundle::load(folder);
    const auto shape = [&](std::string_view sku, std::string_view pattern, std::optional<std::uint8_t> power) {
        const auto found = bundle.find(sku, pattern, power);
        return found ? found->shape : "none";
    };
    EXPECT_EQ(shape("S", "P", 1), "P, receiver 1");
    EXPECT_EQ(shape("S", "P", 2), "P");
    EXPECT_EQ(shape("S", "P", {}), "P");
    EXPECT_EQ(shape("S", "Q", 1), "any, receiver 1");
    EXPECT_EQ(shape("S", "Q", 2), "any");
    EXPECT_EQ(shape("S", "", {}), "any");
    EXPECT_EQ(shape("T", "P", 1), "T, P, receiver 1");
    EXPECT_EQ(shape("T", "P", 2), "none"); // never the data of a stronger receiver
    EXPECT_EQ(shape("T", "P", {}), "none");
    EXPECT_EQ(shape("T", "", 1), "none");
    EXPECT_EQ(shape("", "P", 1), "none");
}

TEST(ShippedResourceBundle, HoldsBlocksThatDecode)
{
    const auto bundle = AuriskResourceBundle::load(AURISK_RESOURCES);
    EXPECT_THAT(bundle.errors, IsEmpty());
    EXPECT_EQ(bundle.entries.size(), 3U);
    for (const auto& entry : bundle.entries) {
        const auto chip = entry.skuCode == "EX16" ? AuriskChip::a16 : AuriskChip::a4;
        const auto dsp = AuriskDsp::decode(chip, entry.dspData);
        const auto global = AuriskGlobalDsp::decode(chip, entry.globalData);
        ASSERT_TRUE(dsp && global) << entry.skuCode;
        EXPECT_EQ(dsp->toBytes(), entry.dspData);
        EXPECT_EQ(global->toData(), entry.globalData);
        EXPECT_GT(global->numberOfPrograms(), 0);
    }
}

} // namespace
} // namespace aurisk::tests
