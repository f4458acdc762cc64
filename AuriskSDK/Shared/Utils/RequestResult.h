#pragma once

#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <string>
#include <utility>
#include <variant>

namespace aurisk {

/// The outcome of a request: what the device says, or why it failed.
template <typename Response, typename Error> class RequestResult {
public:
    static RequestResult success(Response data) { return RequestResult(std::move(data)); }
    static RequestResult error(Error error) { return RequestResult(std::move(error)); }

    bool isSuccess() const { return data() != nullptr; }

    /// What the device says; null where the request failed.
    const Response* data() const { return std::get_if<Response>(&_outcome); }

    /// Why the request failed; null where it did not.
    const Error* error() const { return std::get_if<Error>(&_outcome); }

    friend bool operator==(const RequestResult&, const RequestResult&) = default;

private:
    explicit RequestResult(std::variant<Response, Error> outcome)
        : _outcome(std::move(outcome))
    {
    }
    std::variant<Response, Error> _outcome;
};

template <typename Response, typename Error> std::string description(const RequestResult<Response, Error>& result)
{
    return result.isSuccess() ? "success(data: " + description(*result.data()) + ")"
                              : "error(error: " + description(*result.error()) + ")";
}

} // namespace aurisk
