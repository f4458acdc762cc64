#pragma once

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/SimulatedAuriskAid.h"

#include <gmock/gmock.h>

#include <numeric>
#include <string>
#include <vector>

namespace aurisk::simulatortests {

using testing::ElementsAre;
using testing::IsEmpty;

inline const CBUUID requests(0xAE01), replies(0xAE02), batteryLevel(0x2A19);

inline AuriskAidState someState()
{
    AuriskAidState state;
    state.name = "X1-L";
    state.address = "0A:1B:2C:3D:4E:5F";
    state.volumes = { 8, 5, 10, 15 };
    state.program = 1;
    state.transparencyLevel = 3;
    state.battery = 77;
    return state;
}

/// An aid that somebody listens to.
struct AnAuriskAid : testing::Test {
    explicit AnAuriskAid()
    {
        aid.notify = [this](const CBUUID& characteristic, const Data& value) {
            said.push_back(characteristic.uuidString() + " " + ask_hexadecimal(value));
        };
        aid.didConnect();
        aid.didSubscribe(replies, true);
        aid.didSubscribe(batteryLevel, true);
    }

    std::vector<std::string> answersTo(const char* frame)
    {
        said.clear();
        aid.didReceive(requests, *ask_hexadecimal(frame));
        return said;
    }

    /// The command of the reply and its payload, such as "91 0a0b"; empty where there is none. Whatever the question,
    /// the reply has to be one frame that begins with its two identifiers.
    std::string ask(int command, int first, int second, const std::string& payload = "")
    {
        const auto asked = framed({ command, int(payload.size() / 2) + 2, first, second }, payload);
        const auto answers = answersTo(asked.c_str());
        if (answers.size() != 1)
            return "";
        const auto answer = answers[0].substr(5 + 2);
        const auto content = answer.size() < 16 ? "" : answer.substr(12, answer.size() - 16);
        const auto replied = std::stoi(answer.substr(4, 2), nullptr, 16);
        EXPECT_EQ(answer, framed({ replied, int(content.size() / 2) + 2, first, second }, content));
        return answer.substr(4, 2) + (content.empty() ? "" : " " + content);
    }

    std::string readBlock(int number) { return ask(0x11, number, 0x03); }
    std::string writeBlock(int number, const std::string& block) { return ask(0x14, number, 0x03, block); }
    std::string readField(int number) { return ask(0x11, number, 0x08); }
    std::string writeField(int number, const std::string& value) { return ask(0x14, number, 0x08, value); }

    /// Becomes an aid of that chip, as the factory makes it.
    void become(std::uint8_t chip, std::vector<int> volumes)
    {
        auto state = someState();
        state.chip = chip;
        state.program = 0;
        state.volumes = std::move(volumes);
        aid.setState(state);
    }

    static std::string framed(const std::vector<int>& header, const std::string& payload)
    {
        Data bytes(header.begin(), header.end());
        const auto rest = ask_hexadecimal(payload).value_or(Data{});
        bytes.insert(bytes.end(), rest.begin(), rest.end());
        const auto sum = std::accumulate(bytes.begin(), bytes.end(), 0x68);
        return "fe68" + ask_hexadecimal(bytes) + ask_hexadecimal(Data{ std::uint8_t(sum) }) + "16";
    }

    SimulatedAuriskAid aid{ someState() };
    std::vector<std::string> said;
};

} // namespace aurisk::simulatortests
