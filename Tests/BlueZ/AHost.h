#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZErrors.h"
#include "Tests/BlueZ/Guest.h"
#include "Tests/RadioContract/RadioUnderTest.h"
#include "Tests/Scenarios/UpdateScenario.h"

namespace aurisk::tests {

/// An application on the host's adapter, and the aid X1-L on the other one.
class AHost : public testing::Test {
protected:
    static constexpr AuriskRequest::readVolume readVolume{ .program = 0 };
    static constexpr auto volumeIs10
        = "readVolume(program: 0) => success(data: didReadProgram(program: 0, volume: 10))";

    AHost() { manager->setStatusDelegate(app), manager->setScanningDelegate(app); }
    ~AHost() override
    {
        accessory.reset();
        manager.reset();
        platform.reset();
        served.reset();
        EXPECT_TRUE(until([] { return countOfSockets() == 0; }, 2s)) << "somebody still holds a connection to the bus";
        tidyUp();
    }

    int countOf(const std::string& line) const { return int(std::count(app->heard.begin(), app->heard.end(), line)); }
    int countOfAnswers() const
    {
        return int(std::count_if(app->heard.begin(), app->heard.end(),
            [](const std::string& line) { return line.find(" => ") != std::string::npos; }));
    }
    bool hears(const std::string& line, Seconds limit)
    {
        return until([&] { return countOf(line) > 0; }, limit);
    }

    void expect(const std::string& line, Seconds limit = 10s)
    {
        EXPECT_TRUE(hears(line, limit)) << line << " is missing in " << testing::PrintToString(app->heard);
    }

    void givenADiscoveredAid()
    {
        manager->startScan();
        ASSERT_TRUE(hears("discovered X1-L", 20s)) << testing::PrintToString(app->heard);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().front());
        ASSERT_TRUE(accessory);
    }
    void givenAnAidThatIsHeardAgain()
    {
        manager->stopScan();
        manager->startScan();
        const auto before = app->updates;
        ASSERT_TRUE(until([&] { return app->updates > before; }, 30s));
        manager->stopScan();
    }

    /// Ready for requests, as a first one shows.
    void givenAConnectedAid()
    {
        manager->stopScan();
        ASSERT_TRUE(accessory->connect(app, std::nullopt));
        ASSERT_TRUE(hears("services 180F AE30 AE3A", 60s)) << testing::PrintToString(app->heard);
        app->request(*accessory, readVolume);
        ASSERT_TRUE(hears(volumeIs10, 10s)) << testing::PrintToString(app->heard);
        app->take();
    }

    Data startUpdate(std::size_t size)
    {
        std::mt19937 random(static_cast<unsigned>(size));
        Data image(size);
        for (auto& byte : image)
            byte = static_cast<std::uint8_t>(random());
        updates = std::make_shared<UpdateApplication>();
        auto configure = DFUConfigure::create()->with(DFUFirmware::create(image, DFUFirmwareType::type0));
        configure->delegate = updates;
        configure->progressDelegate = updates;
        accessory->startOTA(configure);
        return image;
    }
    bool hasUpdated() const
    {
        return !updates->states.empty() && updates->states.back() == rawValue(DFUState::completed);
    }

    std::shared_ptr<ServedAid> served
        = ServedAid::create(std::make_shared<SimulatedAuriskAid>(contractAid("0A:1B:2C:3D:4E:5F")));
    std::shared_ptr<bluez::Platform> platform = bluez::makePlatform({ .adapter = hostAdapter });
    std::shared_ptr<AccessoryManager> manager = AccessoryManager::create(platform);
    std::shared_ptr<Application> app = std::make_shared<Application>();
    std::shared_ptr<AuriskAccessory> accessory;
    std::shared_ptr<UpdateApplication> updates;
};

} // namespace aurisk::tests
