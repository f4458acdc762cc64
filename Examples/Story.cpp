#include "Mishaps.h"
#include "Storyteller.h"

#include <AuriskSDK/AuriskSDK.h>
#include <AuriskSDK/Platform/Manual/ManualDispatchQueue.h>
#include <Simulator/Simulator.h>

#include <fmt/core.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace aurisk;

namespace {

/// An application meets a hearing aid. Every value that is told is one that the library reported; one that differs from
/// what was set, and one that does not come in time, end the story.
class Story final : public Storyteller {
public:
    explicit Story(std::shared_ptr<Simulator> simulator)
        : _simulator(std::move(simulator))
        , _manager(AccessoryManager::create(_simulator->platform()))
    {
        _manager->setStatusDelegate(listener());
        _manager->setScanningDelegate(listener());
    }

private:
    std::vector<Step> steps() override
    {
        return {
            { "Is there a radio?", [this] { waitForTheRadio(); }, Seconds(5), "the radio did not become ready" },
            { "Who is nearby?", [this] { findAnAid(); }, Seconds(10), "no hearing aid was heard" },
            { "Connecting", [this] { connect(); }, Seconds(10), "the hearing aid did not say what it can do" },
            { "How is it set?", [this] { readProgramAndVolume(); }, Seconds(5), "the hearing aid did not answer" },
            { "Changing the volume", [this] { changeVolume(); }, Seconds(10), "the hearing aid did not answer" },
            { "Changing the program", [this] { changeProgram(); }, Seconds(10), "the hearing aid did not answer" },
            { "The wearer turns the volume", [this] { hearTheWearer(); }, Seconds(5),
                "nothing was heard of the wearer" },
            { "How full is the battery?", [this] { readBattery(); }, Seconds(5), "the hearing aid did not tell it" },
            { "Saying goodbye", [this] { disconnect(); }, Seconds(5), "the connection did not end" },
        };
    }

    void waitForTheRadio()
    {
        hear().isAvailable = [this](bool isAvailable) {
            if (!isAvailable)
                return fail("Bluetooth is switched off");
            say("Bluetooth is there and switched on.");
            next();
        };
    }

    void findAnAid()
    {
        say("A hearing aid calls out its name a few times a second. The application listens.");
        hear().discovered = [this](const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi) {
            const auto aid = std::dynamic_pointer_cast<AuriskAccessory>(accessory);
            if (!aid || _aid)
                return;
            _aid = aid;
            _manager->stopScan();
            say(fmt::format("Heard \"{}\", a hearing aid for the {} ear with the chip {}.", aid->name(),
                caseName(aid->orientation()), caseName(aid->hearChip())));
            if (rssi)
                say(fmt::format("Its signal arrives with {} dBm (-50 is close by, -90 is far away).", *rssi));
            next();
        };
        _manager->startScan();
    }

    void connect()
    {
        say(fmt::format("Before they can talk, the application asks \"{}\" for a connection.", _aid->name()));
        hear().state = [](AccessoryState state) {
            if (state == AccessoryState::connected)
                say("The library reports: connected.");
        };
        hear().services = [this](const std::vector<std::shared_ptr<AccessoryService>>& services) {
            std::string names;
            for (const auto& service : services)
                names += (names.empty() ? "" : ", ") + service->tag();
            say(fmt::format("The hearing aid offers {} services: {}.", services.size(), names));
            say("(AE30 is its own language, for everything about hearing; 180F is the battery.)");
            next();
        };
        hear().failedToConnect = [this](const MaybeError& error) {
            fail("there is no connection: " + (error ? error->localizedDescription : "it took too long"));
        };
        if (!_aid->connect(listener(), Seconds(5), "story"))
            fail("the library did not try to connect");
    }

    void readProgramAndVolume()
    {
        say("A hearing aid holds several programs, say for a quiet room or a restaurant, each with its own volume.");
        readBack([this] {
            say(fmt::format("It answers: program {} (they count from 0), at volume {}.", program(), volume()));
            next();
        });
    }

    void changeVolume()
    {
        say("The application asks for another volume, and then has the hearing aid say how loud it is now.");
        const int before = volume(), wanted = otherVolume();
        ask(AuriskRequest::controlVolume{ .volume = wanted, .program = program() }, [this, before, wanted] {
            readBack([this, before, wanted] {
                say(fmt::format("It answers: volume {}. Before, it was {}.", volume(), before));
                if (agree("volume", volume(), wanted))
                    next();
            });
        });
    }

    void changeProgram()
    {
        say("It asks for another program, too, and has the hearing aid say which one is on.");
        const int wanted = program() == 0 ? 1 : 0;
        ask(AuriskRequest::controlProgram{ .program = wanted }, [this, wanted] {
            readBack([this, wanted] {
                say(fmt::format("It answers: program {}, which has a volume of its own: {}.", program(), volume()));
                if (agree("program", program(), wanted))
                    next();
            });
        });
    }

    void hearTheWearer()
    {
        say("The wearer can do this, too, with the knob on the hearing aid. Nobody has to ask: the aid tells of it.");
        const int turned = otherVolume();
        hear().volume = [this, turned](int previous, int current) {
            say(fmt::format("The library reports: the wearer turned the volume from {} to {}.", previous, current));
            if (agree("volume", current, turned))
                next();
        };
        _simulator->radio().perform(_aid->name(), { "volume", turned });
    }

    void readBattery()
    {
        say("The application asks for the battery.");
        hear().battery = [this](int percent) {
            say(fmt::format("The library reports: {} percent.", percent));
            next();
        };
        _aid->readBattery();
    }

    void disconnect()
    {
        say("The application ends the connection.");
        hear().disconnected = [this](const MaybeError& error) {
            if (error)
                return fail("the connection was lost: " + error->localizedDescription);
            say(fmt::format("The library reports: disconnected from \"{}\".", _aid->name()));
            next();
        };
        if (!_aid->disconnect())
            fail("the library did not end the connection");
    }

    // What the steps are made of.

    int program() const { return _aid->program().value(); }
    int volume() const { return _aid->volume().value(); }
    int otherVolume() const { return volume() < 12 ? volume() + 3 : volume() - 3; }

    /// Sends a request, and goes on with `then` once the hearing aid has done it.
    void ask(const AuriskRequest& request, std::function<void()> then)
    {
        _aid->request(request, onThisPage([this, then = std::move(then)](const AuriskResult& result) {
            if (const auto* error = result.error())
                return fail("the hearing aid did not do it: " + description(*error));
            then();
        }));
    }

    /// Has the hearing aid say its program and volume, whatever the library holds for them.
    void readBack(std::function<void()> then)
    {
        ask(AuriskRequest::readProgramVolume{}, [this, then = std::move(then)] {
            if (!_aid->program() || !_aid->volume())
                return fail("the hearing aid did not say its program and volume");
            then();
        });
    }

    /// Fails where the library reports something else than what was set.
    bool agree(std::string_view what, int reported, int set)
    {
        if (reported != set)
            fail(fmt::format("the {} was set to {}, and the library reports {}", what, set, reported));
        return reported == set;
    }

    std::shared_ptr<Simulator> _simulator;
    std::shared_ptr<AccessoryManager> _manager;
    std::shared_ptr<AuriskAccessory> _aid;
};

/// The default world, in which nobody but the story touches the hearing aids.
std::shared_ptr<Simulator> simulatorWith(const Mishap* mishap)
{
    auto world = SimulatedWorld::makeDefault();
    world.script.clear();
    world.scriptPeriod.reset();
    auto simulator = Simulator::create(std::move(world));
    if (mishap)
        mishap->happen(*simulator);
    return simulator;
}

/// In real time, as a person would see it.
bool tellInRealTime(const Mishap* mishap)
{
    const auto story = std::make_shared<Story>(simulatorWith(mishap));
    bool succeeded = false;
    story->begin([&](bool fine) {
        succeeded = fine;
        stopMainQueue();
    });
    runMainQueue();
    return succeeded;
}

/// In virtual time: the same story, in a moment.
bool tellFast(const Mishap* mishap)
{
    ManualDispatchQueue queue;
    const ScopedMainQueue scope(queue);
    const auto story = std::make_shared<Story>(simulatorWith(mishap));
    std::optional<bool> succeeded;
    story->begin([&](bool fine) { succeeded = fine; });
    while (!succeeded) // each step has its limit
        queue.advance(Seconds(0.1));
    return *succeeded;
}

int usage(std::FILE* out)
{
    fmt::print(out,
        "usage: Story [--fast] [--fault NAME]\n\n"
        "Plays the story of an application and a hearing aid; exits with 0 when everything that was set\n"
        "was also reported, and with 1 otherwise.\n\n"
        "  --fast        in virtual time, without waiting\n"
        "  --fault NAME  lets something go wrong:\n");
    for (const auto& mishap : mishaps::all)
        fmt::print(out, "    {:<15} {}\n", mishap.name, mishap.meaning);
    return out == stdout ? 0 : 2;
}

} // namespace

int main(int count, char** arguments)
{
    bool isFast = false;
    const Mishap* mishap = nullptr;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help")
            return usage(stdout);
        if (argument == "--fast")
            isFast = true;
        else if (argument != "--fault" || ++i == count || !(mishap = mishaps::named(arguments[i])))
            return usage(stderr);
    }
    setPreconditionPolicy(PreconditionPolicy::contain);
    fmt::print("A story of an application and a hearing aid. The hearing aid is simulated, and so is the radio;\n"
               "the library in between is the real one, and each value below is what it reported.\n");
    return (isFast ? tellFast(mishap) : tellInRealTime(mishap)) ? 0 : 1;
}
