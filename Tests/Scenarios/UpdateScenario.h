#pragma once

#include "Tests/Support/AuriskScenario.h"

#include <random>

namespace aurisk::tests {

/// What an application hears of its updates.
class UpdateApplication final : public DFUServiceDelegate, public DFUProgressDelegate {
public:
    struct Progress {
        int percent;
        double currentSpeed, averageSpeed; ///< bytes a second
        Seconds at;
    };

    std::vector<int> states;
    std::vector<std::string> errors;
    std::function<void()> onError;
    std::vector<Progress> progress;

    void dfuStateDidChange(DFUState to) override { states.push_back(rawValue(to)); }
    void dfuError(DFUError error, const std::string& message) override
    {
        errors.push_back(std::to_string(rawValue(error)) + " " + message);
        if (onError)
            onError();
    }
    void dfuProgressDidChange(int to, double current, double average) override
    {
        progress.push_back({ to, current, average, DispatchQueue::main().now() });
    }

    /// The states without the repetitions of "uploading".
    std::vector<int> milestones() const
    {
        auto all = states;
        all.erase(std::unique(all.begin(), all.end()), all.end());
        return all;
    }
};

/// An application that updates the firmware of an aid.
class UpdateScenario : public AuriskScenario {
protected:
    /// An image that no mistake about offsets survives.
    static Data image(std::size_t size, unsigned seed = 1)
    {
        std::mt19937 random(seed);
        Data bytes(size);
        for (auto& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        return bytes;
    }

    void givenAnMtu(int mtu) { simulator->world().placed(aidName).mtu = mtu; }

    void start(const Data& bytes, DFUFirmwareType type = DFUFirmwareType::type0)
    {
        auto configure = DFUConfigure::create()->with(DFUFirmware::create(bytes, type));
        configure->delegate = updates;
        configure->progressDelegate = updates;
        accessory->startOTA(configure);
    }
    const Data& installed() const
    {
        return dynamic_cast<const SimulatedAuriskAid&>(*simulator->aid(aidName)).firmwareImage();
    }

    std::shared_ptr<UpdateApplication> updates = std::make_shared<UpdateApplication>();
};

} // namespace aurisk::tests
