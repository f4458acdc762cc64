#pragma once

#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/SimulatedPL3Aid.h"
#include "Tests/Support/AidScenario.h"

namespace aurisk::tests {

inline PL3Request reading(PL3Command command) { return { .command = command, .read = true }; }
inline PL3Request writing(PL3Command command, Data data) { return { .command = command, .data = std::move(data) }; }

/// `volumeLevel 06`
inline std::string inShort(PL3Command command, DataView data)
{
    return std::string(caseName(command)) + " " + ask_hexadecimal(data);
}

/// `read volumeLevel` or `write volumeLevel 06`
inline std::string inShort(const PL3Request& request)
{
    return request.read ? "read " + std::string(caseName(request.command))
                        : "write " + inShort(request.command, request.data.value_or(Data{}));
}

/// Writes down what a PL3 hearing aid says.
struct PL3Listener final : PL3AccessoryDelegate {
    explicit PL3Listener(std::shared_ptr<Application> application)
        : app(std::move(application))
    {
    }
    void didUpdateValue(const std::shared_ptr<PL3Accessory>&, const PL3Request& request) override
    {
        app->hear("updated " + inShort(request));
    }
    void didNotify(const std::shared_ptr<PL3Accessory>&, const PL3Response& data) override
    {
        app->hear("news " + inShort(data.command, data.data));
    }
    std::shared_ptr<Application> app;
};

/// An application, a radio and one PL3 hearing aid, "P3-L", in virtual time. The link takes 5 ms each way.
class PL3Scenario : public AidScenario<PL3Accessory> {
protected:
    static constexpr auto aidName = "P3-L";

    static SimulatedWorld world()
    {
        SimulatedWorld world;
        world.aids = { { .aid = std::make_shared<SimulatedPL3Aid>(PL3AidState{
                             .name = aidName, .address = "0A:1B:2C:00:55:66", .volume = 6, .battery = 80 }) } };
        return world;
    }

    PL3Scenario()
        : AidScenario(aidName, world())
    {
    }

    SimulatedPL3Aid& aid() const { return dynamic_cast<SimulatedPL3Aid&>(*simulator->aid(aidName)); }
    void whenFound() override { accessory->setDataDelegate(listener); }

    /// Sends a request and hears "<request> => <result>".
    void whenRequesting(const PL3Request& request)
    {
        accessory->request(request, [app = app, request](const PL3Result& result) {
            app->hear(inShort(request) + " => "
                + (result.isSuccess() ? inShort(result.data()->command, result.data()->data)
                                      : description(*result.error())));
        });
    }

    std::shared_ptr<PL3Listener> listener = std::make_shared<PL3Listener>(app);
};

} // namespace aurisk::tests
