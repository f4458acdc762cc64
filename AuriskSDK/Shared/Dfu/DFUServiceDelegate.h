#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <string>
#include <string_view>

namespace aurisk {

/// How far an update has come. The library reports `starting`, `enablingDfuMode`, `uploading` (again with every packet
/// that the device takes), `validating`, `validated`, `completed` and `aborted`; the others are for applications.
enum class DFUState : int {
    connecting,
    starting,
    enablingDfuMode,
    paired,
    needOta,
    uploading,
    validating,
    validated,
    disconnecting,
    reconnecting,
    completed,
    aborted,
};

template <>
inline constexpr auto enumCases<DFUState> = countingUp<DFUState::aborted>({
    { "connecting", "Connecting" },
    { "starting", "Starting" },
    { "enablingDfuMode", "Enabling DFU Mode" },
    { "paired", "Paired" },
    { "needOta", "need ota" },
    { "uploading", "Uploading" },
    { "validating", "Validating" },
    { "validated", "Validated" },
    { "disconnecting", "Disconnecting" },
    { "reconnecting", "reconnecting" },
    { "completed", "Completed" },
    { "aborted", "Aborted" },
});

/// "Uploading".
constexpr std::string_view description(DFUState state) { return enumCase(state)->label; }

/// Why an update failed. The numbers without a name of their own are never reported.
enum class DFUError : int {
    reserved0 = 0,
    reserved1,
    reserved2,
    reserved3,
    reserved4,
    characteristicsDiscoveryFailed = 5,
    requiredCharacteristicsMissing = 6, ///< not there, or not to be written without response, or without notifications
    reserved7,
    enablingNotificationsFailed = 8,
    reserved9,
    receivingNotificationFailed = 10, ///< or the link has gone
    unsupportedResponse = 11,
    reserved12,
    reserved13,
    reserved14,
    crcError = 15, ///< the device did not receive what was sent
    initFailure = 16, ///< the device does not start, or the library has lost the peripheral
    diskNotEnough = 17,
    sequenceFailure = 18, ///< the device missed a packet
    bootWriteFailed = 19, ///< the device could not install what it received
    reserved20,
};

template <>
inline constexpr auto enumCases<DFUError> = countingUp<DFUError::reserved20>({
    "reserved0",
    "reserved1",
    "reserved2",
    "reserved3",
    "reserved4",
    "characteristicsDiscoveryFailed",
    "requiredCharacteristicsMissing",
    "reserved7",
    "enablingNotificationsFailed",
    "reserved9",
    "receivingNotificationFailed",
    "unsupportedResponse",
    "reserved12",
    "reserved13",
    "reserved14",
    "crcError",
    "initFailure",
    "diskNotEnough",
    "sequenceFailure",
    "bootWriteFailed",
    "reserved20",
});

/// Hears what becomes of an update.
class DFUServiceDelegate {
public:
    virtual ~DFUServiceDelegate() = default;

    /// Called on the configuration's delegate queue.
    virtual void dfuStateDidChange(DFUState to) = 0;

    /// The update has failed. Another one begins only once this one has been aborted, and that after this call has
    /// returned: it takes back an abort from within. Called on the main queue, before states that are still waiting in
    /// the delegate queue.
    virtual void dfuError(DFUError error, const std::string& didOccurWithMessage) = 0;
};

/// Hears how much of an image the device has taken, at most about once a percent. Called on the configuration's
/// progress queue.
class DFUProgressDelegate {
public:
    virtual ~DFUProgressDelegate() = default;

    /// `to`: percent, first 0, and beyond 100 only where the device repeats itself. Bytes of the image a second: since
    /// the report before, and since the first packet. Both are 0 with the first report, and not finite where the clock
    /// has not moved.
    virtual void dfuProgressDidChange(int to, double currentSpeedBytesPerSecond, double avgSpeedBytesPerSecond) = 0;
};

} // namespace aurisk
