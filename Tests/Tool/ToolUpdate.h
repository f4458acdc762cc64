#pragma once

#include "Tests/Tool/TemporaryPath.h"
#include "Tests/Tool/ToolScenario.h"

#include <filesystem>
#include <fstream>

namespace aurisk::tests {

/// The image has ten packets of 234 bytes (a write carries 244), of which the device takes one in 10 ms.
class ToolUpdate : public ToolScenario {
protected:
    void SetUp() override { write("version 2.4.0\n", 2340); }
    void TearDown() override { std::filesystem::remove(path); }

    void write(std::string text, std::size_t size)
    {
        text.resize(size, '.');
        image.assign(text.begin(), text.end());
        std::ofstream(path, std::ios::binary) << text;
    }

    std::string update(const std::string& device) const { return "update " + device + " " + path; }

    void setFirmware(const std::string& name, AuriskFirmware firmware)
    {
        auto state = aid(name).state();
        state.firmware = std::move(firmware);
        aid(name).setState(state);
    }

    /// Until the line has been told, or drawn.
    void untilTold(const std::string& text)
    {
        for (int i = 0; i < 10000 && sink.terminal.find(text) == std::string::npos; ++i)
            after(0.001);
        EXPECT_THAT(sink.terminal, HasSubstr(text));
    }

    std::string path = temporaryPath("image.bin");
    Data image;
};

} // namespace aurisk::tests
