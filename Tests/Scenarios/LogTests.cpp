#include "Tests/Support/AuriskScenario.h"

#include <regex>

namespace aurisk::tests {
namespace {

/// Everything that the library logs, in its exact words, with addresses of objects as @.
class Log : public AuriskScenario {
protected:
    struct Logger final : LoggerDelegate {
        void logWith(LogLevel, const std::string& message) override
        {
            static const std::regex object("0x[0-9a-f]+");
            lines.push_back(std::regex_replace(message, object, "@"));
        }
        Lines lines;
    };

    Log()
    {
        testing::internal::CaptureStdout(); // records do not mix with the test runner's own lines
        AuriskLog::shared().setLogger(logger);
        AuriskLog::setEnable(true);
    }
    ~Log() override
    {
        AuriskLog::setEnable(false);
        testing::internal::GetCapturedStdout();
    }

    Lines logged() { return std::exchange(logger->lines, {}); }
    std::string self() const { return accessory->description(); }

    std::shared_ptr<Logger> logger = std::make_shared<Logger>();
};

TEST_F(Log, TellsTheStory)
{
    givenAFoundAid();
    EXPECT_THAT(logged(),
        ElementsAre("CBManager's state = 5", "Scanning started", "did discovery device: " + self() + ", X1-L\n",
            "Scanning stopped"));

    accessory->connect(app, "left");
    accessory->connect(app, "again");
    after(1s);
    EXPECT_THAT(logged(),
        ElementsAre("[left] Connecting to " + self() + "\n",
            "device is now connected. Device UUID: " + accessory->deviceId(), "[left] Initializing " + self() + "\n",
            "[left] Accessory " + self() + ": didDiscoverServices\n", "[AE30] -- @ init -- "));

    faults().faults = { { .kind = Kind::lose, .message = 11 } }; // the reply to the second
    whenRequesting(AuriskRequest::readVolume{ .program = 0 });
    whenRequesting(AuriskRequest::readVolume{ .program = 1 });
    after(5s);
    EXPECT_THAT(logged(),
        ElementsAre("[AE30] @ send data ----> fe68110201048016",
            "AccessoryMessageHandler -- request: readVolume(program: 0)",
            "[AE30] receive data ----> 00fe6891030104080916",
            "AccessoryMessageHandler -- result: success(data: didReadProgram(program: 0, volume: 8))",
            "[AE30] @ send data ----> fe68110202048116", "AccessoryMessageHandler -- request: readVolume(program: 1)",
            "AccessoryMessageHandler -- result: timeOut"));

    accessory->disconnect();
    accessory->disconnect();
    after(1s);
    EXPECT_THAT(logged(),
        ElementsAre("[left] Disconnecting from " + self() + "\n", "[left] Disconnected from " + self() + "\n"));
}

TEST_F(Log, TellsWhatGoesWrong)
{
    givenAFoundAid();
    const auto deinit
        = std::string("<AccessoryManager @> deinit， Ensure that the AccessoryManager instance remains in "
                      "memory and is not deallocated while using AuriskSDK.");
    faults().refusesConnections = true;
    logged();
    accessory->connect(app, "left");
    after(1s);
    EXPECT_THAT(logged(),
        ElementsAre("[left] Connecting to " + self() + "\n", "[left] Failed to connect to " + self() + "\n",
            "[left] X1-L refused the connection.\n"));

    faults() = {};
    faults().faults = { { .kind = Kind::refuse, .message = 2 } }; // the services: what was refused above has no number
    accessory->connect(app, "left");
    after(1s);
    EXPECT_EQ(logged().back(), "[left] X1-L refused the request.\n");

    simulator->radio().dropLink(aidName);
    after(1s);
    EXPECT_THAT(
        logged(), ElementsAre("[left] Disconnected from " + self() + "\n", "[left] The link to X1-L was lost.\n"));

    accessory->connect(app, "left");
    after(1s);
    whenRequesting(AuriskRequest::readVolume{ .program = 0 });
    simulator->radio().dropLink(aidName);
    after(0.2s);
    EXPECT_THAT(logged(), testing::Contains("[AE30] write failed because peripheral is disconnected"));

    manager.reset();
    EXPECT_THAT(logged(), ElementsAre(deinit));
    accessory->connect(app, "left");
    accessory->disconnect();
    EXPECT_THAT(logged(),
        ElementsAre("[left] bluetooth manager is unavailable\n", "[left] Disconnected from " + self() + "\n",
            "[left] bluetooth manager is unavailable\n"));
}

} // namespace
} // namespace aurisk::tests
