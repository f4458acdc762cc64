#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace aurisk {

/// JSON that does not hold what was to be read from it: one sentence that names the key, such as
/// `reservedField.modeConfig.mode1: 300 is outside 0 ... 255`.
class JsonError : public std::runtime_error {
public:
    explicit JsonError(const std::string& problem, const std::string& key = {})
        : std::runtime_error(key.empty() ? problem : key + ": " + problem)
        , _key(key)
        , _problem(problem)
    {
    }

    const std::string& key() const { return _key; } ///< empty: the whole value
    const std::string& problem() const { return _problem; }

    /// The same, told by the object that holds the value as `outer`.
    JsonError below(std::string_view outer) const
    {
        return JsonError(_problem, std::string(outer) + (_key.empty() ? "" : "." + _key));
    }

private:
    std::string _key;
    std::string _problem;
};

} // namespace aurisk
