#pragma once

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileType.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"
#include "AuriskSDK/Shared/Utils/RequestResult.h"

#include <concepts>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace aurisk {

/// What a device says when it does as asked, or of its own accord.
class AuriskResponse {
public:
    /// Volume: none where the reply tells the program alone.
    struct didReadProgram {
        int program = 0;
        std::optional<int> volume = {};
        static constexpr auto labels = labelled(
            "didReadProgram", label("program", &didReadProgram::program), label("volume", &didReadProgram::volume));
        friend bool operator==(const didReadProgram&, const didReadProgram&) = default;
    };
    struct didReadDsp {
        int program = 0;
        Data data = {};
        static constexpr auto labels
            = labelled("didReadDsp", label("program", &didReadDsp::program), label("data", &didReadDsp::data));
        friend bool operator==(const didReadDsp&, const didReadDsp&) = default;
    };
    struct didReadGlobal {
        Data data = {};
        static constexpr auto labels = labelled("didReadGlobal", label("data", &didReadGlobal::data));
        friend bool operator==(const didReadGlobal&, const didReadGlobal&) = default;
    };
    struct didReadProfile {
        Data data = {};
        AuriskProfileType type = AuriskProfileType::unknown;
        static constexpr auto labels
            = labelled("didReadProfile", label("data", &didReadProfile::data), label("type", &didReadProfile::type));
        friend bool operator==(const didReadProfile&, const didReadProfile&) = default;
    };
    struct didReadTransparency {
        int level = 0;
        static constexpr auto labels = labelled("didReadTransparency", label("level", &didReadTransparency::level));
        friend bool operator==(const didReadTransparency&, const didReadTransparency&) = default;
    };
    struct didReadOrientation {
        AccessoryOrientation orientation = AccessoryOrientation::unassigned;
        static constexpr auto labels
            = labelled("didReadOrientation", label("orientation", &didReadOrientation::orientation));
        friend bool operator==(const didReadOrientation&, const didReadOrientation&) = default;
    };
    struct didReadBrEdr {
        bool enable = false;
        bool continuousIfEnable = false;
        static constexpr auto labels = labelled("didReadBrEdr", label("enable", &didReadBrEdr::enable),
            label("continuousIfEnable", &didReadBrEdr::continuousIfEnable));
        friend bool operator==(const didReadBrEdr&, const didReadBrEdr&) = default;
    };
    struct didReadHearingTest {
        bool supported = false;
        static constexpr auto labels
            = labelled("didReadHearingTest", label("supported", &didReadHearingTest::supported));
        friend bool operator==(const didReadHearingTest&, const didReadHearingTest&) = default;
    };
    struct didReadPairCode {
        Data code = {};
        static constexpr auto labels = labelled("didReadPairCode", label("code", &didReadPairCode::code));
        friend bool operator==(const didReadPairCode&, const didReadPairCode&) = default;
    };
    /// The wearer changed program or volume; no answer to any request.
    struct didNotify {
        int program = 0;
        int volume = 0;
        static constexpr auto labels
            = labelled("didNotify", label("program", &didNotify::program), label("volume", &didNotify::volume));
        friend bool operator==(const didNotify&, const didNotify&) = default;
    };
    /// An acknowledgement that carries nothing further, with its frame.
    struct didRequest {
        AuriskRawData data = {};
        static constexpr auto labels = labelled("didRequest", label("data", &didRequest::data));
        friend bool operator==(const didRequest&, const didRequest&) = default;
    };
    /// A frame that says nothing known.
    struct unknown {
        AuriskRawData data = {};
        static constexpr auto labels = labelled("unknown", label("data", &unknown::data));
        friend bool operator==(const unknown&, const unknown&) = default;
    };

    using Case = std::variant<didReadProgram, didReadDsp, didReadGlobal, didReadProfile, didReadTransparency,
        didReadOrientation, didReadBrEdr, didReadHearingTest, didReadPairCode, didNotify, didRequest, unknown>;

    template <LabelledCase C>
    requires std::constructible_from<Case, C> AuriskResponse(C one)
        : _case(std::move(one))
    {
    }

    const Case& value() const { return _case; }

    /// The value if it is a `C`, else null.
    template <typename C> const C* as() const { return std::get_if<C>(&_case); }

    friend bool operator==(const AuriskResponse&, const AuriskResponse&) = default;

private:
    Case _case;
};

/// Why a request failed.
class AuriskResultError {
public:
    struct other {
        std::string message = {};
        static constexpr auto labels = labelled("other", label("message", &other::message));
        friend bool operator==(const other&, const other&) = default;
    };
    /// No reply came in time.
    struct timeout {
        static constexpr auto labels = labelled("timeout");
        friend bool operator==(const timeout&, const timeout&) = default;
    };
    /// The device refused a write.
    struct writeError {
        static constexpr auto labels = labelled("writeError");
        friend bool operator==(const writeError&, const writeError&) = default;
    };
    /// The device refused a read.
    struct readError {
        static constexpr auto labels = labelled("readError");
        friend bool operator==(const readError&, const readError&) = default;
    };
    /// The device refused a control.
    struct controlError {
        static constexpr auto labels = labelled("controlError");
        friend bool operator==(const controlError&, const controlError&) = default;
    };
    /// The device refused an auxiliary request.
    struct btError {
        static constexpr auto labels = labelled("btError");
        friend bool operator==(const btError&, const btError&) = default;
    };
    /// There is no connection; nothing was sent.
    struct disconnected {
        static constexpr auto labels = labelled("disconnected");
        friend bool operator==(const disconnected&, const disconnected&) = default;
    };

    using Case = std::variant<other, timeout, writeError, readError, controlError, btError, disconnected>;

    template <LabelledCase C>
    requires std::constructible_from<Case, C> AuriskResultError(C one)
        : _case(std::move(one))
    {
    }

    const Case& value() const { return _case; }

    /// The value if it is a `C`, else null.
    template <typename C> const C* as() const { return std::get_if<C>(&_case); }

    friend bool operator==(const AuriskResultError&, const AuriskResultError&) = default;

private:
    Case _case;
};

std::string description(const AuriskResponse& response);
std::string description(const AuriskResultError& error);

} // namespace aurisk
