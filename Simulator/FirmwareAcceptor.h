#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace aurisk {

struct AidFrame;

/// How the updates of an aid go wrong.
enum class FirmwareFailure {
    none,
    init, ///< no start is taken
    space, ///< every image is too large
    sequence, ///< one data packet is not the one that should come
    crc, ///< no image is what it was announced to be
    boot, ///< an image that was taken does not boot
    bootError, ///< the same, said in an error frame
};

/// What an aid holds for its updates, and of them.
struct AuriskFirmware {
    std::int64_t diskSize = 1048576; ///< bytes: what a larger image does not fit on
    FirmwareFailure fails = FirmwareFailure::none;
    int failsAt = 1; ///< the data packet of a `sequence` failure, counted from 1
    Data image = {}; ///< the last one that was installed
    std::optional<int> imageType = {}; ///< of that image: 0 to 2
    std::int64_t updates = 0; ///< how many were installed

    friend bool operator==(const AuriskFirmware&, const AuriskFirmware&) = default;
};

/// The version that an image brings: what stands after "version " at its very beginning, 1 to 32 printable characters
/// that a line feed ends; for any other image "0.<high>.<low>", the two bytes of its CRC-16.
std::string versionOf(DataView image);

/// Takes a firmware image, packet by packet, and checks it. Its frames have command 1D and the identifiers 91 + the
/// type of the image (0 to 2) and opcode; numbers are little-endian:
///
///     1 start      size of the image (4), its CRC-16 (2), 00 00, size of a chunk (2)
///     2 data       sequence number (2), 1 first, counting on from 0 after FFFF; a chunk, full but for the last one
///     3 validate   nothing
///
/// An answer is a frame of command 9D, with the same identifiers and one byte, a status. After a failure, and after an
/// image that has been validated, it takes nothing until the next start.
class FirmwareAcceptor {
public:
    struct Image {
        int type = 0;
        Data bytes = {};
    };

    /// What the aid is to do about a frame.
    struct Reaction {
        std::vector<Data> answers = {}; ///< values to notify, in their order
        std::optional<Image> accepted = {}; ///< boots now
    };

    /// A frame has been written to the aid. What is no part of an update has no answer.
    Reaction didReceive(const AidFrame& request, const AuriskFirmware& firmware);

    /// The same, of a frame that is to fail whatever it holds.
    Reaction refuse(const AidFrame& request);

private:
    struct Transfer {
        Image image = {}; ///< what has come of it
        std::size_t size = 0;
        std::uint16_t crc = 0;
        std::size_t chunkSize = 0;
        std::int64_t packets = 0; ///< that have come

        static std::optional<Transfer> announcedBy(const AidFrame& start);
        bool isNext(const AidFrame& data) const;
        void append(const AidFrame& data);
        bool isComplete(const AidFrame& validate) const;
    };

    Reaction begin(const AidFrame& request, const AuriskFirmware& firmware);
    Reaction append(const AidFrame& request, const AuriskFirmware& firmware);
    Reaction validate(const AidFrame& request, const AuriskFirmware& firmware);

    std::optional<Transfer> _transfer;
};

} // namespace aurisk
