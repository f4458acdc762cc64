#include "AuriskSDK/Platform/BlueZ/GattTable.h"

#include <gmock/gmock.h>

namespace aurisk::bluez {
namespace {

using testing::ElementsAre;
using testing::Key;
using Properties = CBCharacteristicProperties;
using Texts = std::vector<std::string>;

template <typename T> T at(const BusDictionary& properties, std::string_view name)
{
    const auto* value = find<T>(properties, name);
    EXPECT_TRUE(value) << name;
    return value ? *value : T();
}

TEST(GattTable, IsATreeOfObjectsThatTheDaemonTakes)
{
    const CBUUID longUUID = *CBUUID::fromString("95E82A96-47B6-C216-A125-403009D6F03E");
    const GattTable table("/aurisk/server0",
        { { CBUUID(0xAE30),
              { { CBUUID(0xAE01), Properties::write | Properties::writeWithoutResponse },
                  { CBUUID(0xAE02), Properties::notify } } },
            { CBUUID(0x180F), { { CBUUID(0x2A19), Properties::read | Properties::notify | Properties::indicate } } },
            { longUUID, { { longUUID, Properties::write } } } });
    const auto& objects = table.objects();
    EXPECT_THAT(objects,
        ElementsAre(Key("/aurisk/server0/service0"), Key("/aurisk/server0/service0/characteristic0"),
            Key("/aurisk/server0/service0/characteristic1"), Key("/aurisk/server0/service1"),
            Key("/aurisk/server0/service1/characteristic0"), Key("/aurisk/server0/service2"),
            Key("/aurisk/server0/service2/characteristic0")));

    const auto& service = objects.at("/aurisk/server0/service1").at("org.bluez.GattService1");
    EXPECT_THAT(service, ElementsAre(Key("Primary"), Key("UUID")));
    EXPECT_EQ(at<std::string>(service, "UUID"), "180F");
    EXPECT_TRUE(at<bool>(service, "Primary"));

    const struct {
        const char* path;
        std::string uuid, service;
        Texts flags;
    } rows[] = {
        { "/aurisk/server0/service0/characteristic0", "AE01", "/aurisk/server0/service0",
            { "write-without-response", "write" } },
        { "/aurisk/server0/service0/characteristic1", "AE02", "/aurisk/server0/service0", { "notify" } },
        { "/aurisk/server0/service1/characteristic0", "2A19", "/aurisk/server0/service1",
            { "read", "notify", "indicate" } },
        { "/aurisk/server0/service2/characteristic0", "95E82A96-47B6-C216-A125-403009D6F03E",
            "/aurisk/server0/service2", { "write" } },
    };
    for (const auto& row : rows) {
        const auto& properties = objects.at(row.path).at("org.bluez.GattCharacteristic1");
        EXPECT_THAT(properties, ElementsAre(Key("Flags"), Key("Service"), Key("UUID")));
        EXPECT_EQ(at<std::string>(properties, "UUID"), row.uuid);
        EXPECT_EQ(at<ObjectPath>(properties, "Service").text, row.service);
        EXPECT_EQ(at<Texts>(properties, "Flags"), row.flags);
        ASSERT_TRUE(table.characteristicAt(row.path));
        EXPECT_EQ(*table.pathOf(table.characteristicAt(row.path)->uuid), row.path);
    }
    EXPECT_FALSE(table.characteristicAt("/aurisk/server0/service0"));
    EXPECT_FALSE(table.pathOf(CBUUID(0xAE03)));
}

TEST(GattTable, AnAdvertisementNamesTheCompanyApartFromItsData)
{
    const auto full = propertiesOf({ Data{ 0xFE, 0xCA, 0x0A, 0x1B }, "X1-L" });
    EXPECT_THAT(full, ElementsAre(Key("Discoverable"), Key("LocalName"), Key("ManufacturerData"), Key("Type")));
    EXPECT_EQ(at<std::string>(full, "Type"), "peripheral");
    EXPECT_TRUE(at<bool>(full, "Discoverable"));
    EXPECT_EQ(at<std::string>(full, "LocalName"), "X1-L");
    EXPECT_EQ(at<CompanyData>(full, "ManufacturerData"), (CompanyData{ { 0xCAFE, { 0x0A, 0x1B } } }));
    EXPECT_EQ(
        at<CompanyData>(propertiesOf({ Data{ 0x01, 0x02 }, {} }), "ManufacturerData"), (CompanyData{ { 0x0201, {} } }));
    for (const auto& bare : { propertiesOf({}), propertiesOf({ Data{ 0xFE }, {} }) })
        EXPECT_THAT(bare, ElementsAre(Key("Discoverable"), Key("Type")));
}

} // namespace
} // namespace aurisk::bluez
