#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "Simulator/AuriskAidState.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace aurisk::tests {

/// The aid that the contract asks for, at an address that the implementation chooses.
inline AuriskAidState contractAid(std::string address)
{
    return { .name = "X1-L", .address = std::move(address), .volumes = { 10, 11, 12 }, .battery = 80 };
}

/// What the contract of the Bluetooth port needs of an implementation: a radio, and one aid within its reach. For each
/// case the radio is on and the aid, as `contractAid` says, is on the air and without a link, whatever the case before
/// left behind.
class RadioUnderTest {
public:
    RadioUnderTest() = default;
    RadioUnderTest(const RadioUnderTest&) = delete;
    RadioUnderTest& operator=(const RadioUnderTest&) = delete;
    virtual ~RadioUnderTest() = default;

    virtual std::shared_ptr<BluetoothPlatform> platform() const = 0;
    virtual std::string aidAddress() const = 0; ///< "0A:1B:2C:3D:4E:5F", as the aid was given it

    /// Runs the main queue until `condition` holds; false where it does not within `limit`.
    virtual bool until(const std::function<bool()>& condition, Seconds limit) = 0;

    /// How long nothing has to come for nothing to be coming: several advertising intervals, and several times what
    /// any answer takes.
    virtual Seconds aWhile() const = 0;

    virtual void setRadioOn(bool on) = 0;

    /// The wearer does `action`, such as "battery 65".
    virtual void perform(const std::string& action) = 0;

    virtual void setAidOnAir(bool on) = 0; ///< called while it has no link
    virtual void endLink() = 0; ///< at the aid's end
};

/// One implementation: what the suite's instance of it is called, and how to make it.
struct RadioImplementation {
    const char* name;
    std::shared_ptr<RadioUnderTest> (*make)();

    friend std::ostream& operator<<(std::ostream& out, const RadioImplementation& one) { return out << one.name; }
};

} // namespace aurisk::tests
