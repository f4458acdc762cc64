#pragma once

#include "Simulator/SimulatedAid.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <vector>

namespace aurisk::tests {

/// An aid "Odd-L" that is heard like any other, and of which nothing else is as it should be: what it answers, whoever
/// derives from it says.
class OddAid : public SimulatedAid {
public:
    explicit OddAid(std::vector<SimulatedService> services)
        : _services(std::move(services))
    {
    }

    std::string name() const override { return "Odd-L"; }
    std::string address() const override { return "0A:1B:2C:3D:4E:5F"; }
    CBAdvertisementData advertisement() const override
    {
        return { Data{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 }, name() };
    }
    std::vector<SimulatedService> gattTable() const override { return _services; }
    void refuse(const CBUUID&, DataView) override { }
    std::optional<Data> read(const CBUUID&) const override { return std::nullopt; }
    bool accepts(const WearerAction&) const override { return false; }
    bool perform(const WearerAction&) override { return false; }
    nlohmann::json toJson() const override // of a kind that worlds know
    {
        return { { "kind", "aurisk" }, { "name", name() }, { "address", address() } };
    }

private:
    std::vector<SimulatedService> _services;
};

} // namespace aurisk::tests
