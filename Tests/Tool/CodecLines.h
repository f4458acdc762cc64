#pragma once

#include "Tools/aurisk/Codec.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace aurisk::tests {

/// Lines of input, each beside the line that answers it.
inline void expectAnswers(std::initializer_list<std::pair<std::string_view, std::string_view>> rows)
{
    for (const auto& [line, expected] : rows)
        EXPECT_EQ(codec::answer(line), expected) << line;
}

/// Lines of input that break a precondition, each beside what its text says.
inline void expectStops(std::initializer_list<std::pair<std::string, std::string>> rows)
{
    for (const auto& [line, part] : rows)
        EXPECT_THAT(codec::answer(line), testing::AllOf(testing::StartsWith(R"({"stop":")"), testing::HasSubstr(part)))
            << line;
}

/// Lines of input that cannot be used, each beside what its text says.
inline void expectErrors(std::initializer_list<std::pair<std::string, std::initializer_list<std::string>>> rows)
{
    for (const auto& [line, parts] : rows) {
        auto text = codec::answer(line);
        EXPECT_THAT(text, testing::StartsWith(R"({"error":")")) << line;
        std::erase(text, '\\');
        for (const auto& part : parts)
            EXPECT_THAT(text, testing::HasSubstr(part)) << line;
    }
}

} // namespace aurisk::tests
