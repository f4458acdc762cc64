#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace aurisk {

/// The byte-stuffed frames of the PL3 family: the frame being sent, and the frame received last.
///
///     7E  length (2, high byte first)  command, bit 7: read  payload…
///
/// After the 7E, each 7D or 7E travels as 7D and the byte XOR 20. There is no end mark and no checksum. The two
/// directions count differently: the length of a frame that is sent counts the command, that of a received one does
/// not.
class CHDLC {
public:
    static constexpr std::uint8_t kFrameStart = 0x7E;
    static constexpr std::uint8_t kEscapeChar = 0x7D;
    static constexpr std::uint8_t kEscapeXOR = 0x20;
    static constexpr std::uint8_t kReadFlag = 0x80; ///< in the command of a frame that asks for an answer
    static constexpr std::size_t kBLEPacketLength = 20;

    /// The longest payload that a frame can carry when it is sent: its length has to fit in a byte.
    static constexpr std::size_t longestPayload = 254;

    // Sending

    /// Makes the frame to send; an empty payload is none. A longer payload than the longest is a broken precondition.
    void create(std::uint8_t command, DataView payload, bool read);

    /// The same from hexadecimal text: payload bytes lie between blanks, commas, full stops or colons, which are
    /// skipped in front of the command. A number may begin with 0x; the command ends at its first character that is no
    /// digit, a byte has to be a number as a whole. False where a number cannot be read: in the command's place the
    /// former frame is still there, in the payload's the frame so far, which is not to be sent. A number above 255 and
    /// more than 254 bytes are broken preconditions.
    bool create(std::string_view command, std::string_view payload);

    /// The next bytes of the frame, at most `kBLEPacketLength`: one write. Empty after the last. An escape may be
    /// split.
    Data getHDLC();
    bool moreData() const { return _bytesSent < _dataSent.size(); }

    /// The whole frame as it travels; does not count as handed out.
    Data getHDLCAll() const { return _dataSent; }
    const Data& sentPayload() const { return _dataSent; } ///< the same: the frame, deliberately, not its payload

    std::uint8_t sentCommand() const { return _commandSent; } ///< with the read flag, where it is set
    std::uint8_t sentPayloadLengthHigh() const { return highByte(_lengthSent); }
    std::uint8_t sentPayloadLengthLow() const { return lowByte(_lengthSent); }

    // Receiving

    /// Takes in what one notification holds: a frame from its start. Each call begins with a length byte even where
    /// there is no 7E, so a frame that comes in two is not put together. Never fails: bytes behind the payload are
    /// ignored, and a payload may be cut short. A length of 0 takes one byte, too.
    void parse(DataView data);

    std::uint8_t rcvdCommand() const { return _commandRcvd; } ///< without the read flag
    const Data& rcvdPayload() const { return _dataRcvd; }
    std::uint16_t rcvdLength() const { return _lengthRcvd; }
    std::uint8_t rcvdPayloadLengthHigh() const { return highByte(_lengthRcvd); }
    std::uint8_t rcvdPayloadLengthLow() const { return lowByte(_lengthRcvd); } ///< above 255 a broken precondition

    /// "{0:x2}" once for each byte, deliberately: so it has always been.
    std::string getSentDataString() const;
    std::string getRcvdDataString() const;

private:
    struct Receiver;

    static std::uint8_t highByte(std::uint16_t length) { return static_cast<std::uint8_t>(length >> 8); }
    static std::uint8_t lowByte(std::uint16_t length);

    void begin(std::uint8_t command, std::size_t payloadSize);
    void append(std::uint8_t byte);

    std::size_t _bytesSent = 0; ///< how many of `_dataSent` have been handed out
    Data _dataSent; ///< the frame as it travels
    std::uint16_t _lengthSent = 0;
    std::uint8_t _commandSent = 0;
    Data _dataRcvd; ///< the payload without escapes
    std::uint8_t _commandRcvd = 0;
    std::uint16_t _lengthRcvd = 0;
};

} // namespace aurisk
