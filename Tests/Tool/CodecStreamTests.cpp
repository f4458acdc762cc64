#include "Tools/aurisk/Codec.h"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace aurisk::tests {
namespace {

/// Two ends: what is written to one is read from the other.
struct Pipe {
    Pipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
    ~Pipe()
    {
        closeReader();
        closeWriter();
    }
    int reader() const { return ends[0]; }
    int writer() const { return ends[1]; }
    void closeReader() { close(ends[0]); }
    void closeWriter() { close(ends[1]); }

    void write(std::string_view text) const
    {
        EXPECT_EQ(::write(writer(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    /// The next line, or what there is of it when nothing comes any more.
    std::string line() const
    {
        std::string text;
        pollfd ready{ reader(), POLLIN, 0 };
        for (char next; ::poll(&ready, 1, 5000) > 0 && ::read(reader(), &next, 1) == 1 && next != '\n';)
            text += next;
        return text;
    }

    /// All that comes until its writer is closed.
    std::string all() const
    {
        std::string text;
        std::array<char, 4096> chunk;
        for (ssize_t count; (count = ::read(reader(), chunk.data(), chunk.size())) > 0;)
            text.append(chunk.data(), static_cast<std::size_t>(count));
        return text;
    }

    std::array<int, 2> ends{ -1, -1 };

private:
    static void close(int& end)
    {
        if (end >= 0)
            ::close(std::exchange(end, -1));
    }
};

/// Everything that is answered to an input.
std::string answersTo(std::string_view input)
{
    Pipe in, out;
    std::thread asking([&] {
        in.write(input);
        in.closeWriter();
    });
    std::thread codec([&] {
        EXPECT_EQ(codec::runCodec(in.reader(), out.writer()), 0);
        out.closeWriter();
    });
    const auto answers = out.all();
    asking.join();
    codec.join();
    return answers;
}

constexpr std::string_view question = R"({"op":"hex.toBytes","text":"a"})";
constexpr std::string_view reply = R"({"ok":"0a"})";

TEST(CodecStream, AnswersEveryLineInItsPlace)
{
    EXPECT_EQ(answersTo(""), "");
    EXPECT_EQ(answersTo("\n \n\r\n"), "");
    const std::string line(question), answer(reply);
    EXPECT_EQ(answersTo(line + "\n"), answer + "\n");
    EXPECT_EQ(answersTo(line), answer + "\n"); // the last line need not end
    EXPECT_EQ(answersTo("\r\n" + line + "\r\n\n" + R"({"id":2,"op":"hex.toBytes","text":"b"})"),
        answer + "\n" + R"({"id":2,"ok":"0b"})" + "\n");
    EXPECT_THAT(answersTo("{\n" + line + "\n"), testing::EndsWith("\"}\n" + answer + "\n"));
}

TEST(CodecStream, AnswersALineOfAnyLength)
{
    const std::string digits(1'000'000, 'a');
    EXPECT_TRUE(answersTo(R"({"op":"hex.fromBytes","bytes":")" + digits + "\"}\n" + std::string(question))
        == R"({"ok":")" + digits + "\"}\n" + std::string(reply) + "\n");
}

TEST(CodecStream, AnswersWhileItsInputPauses)
{
    Pipe in, out;
    int status = -1;
    std::thread codec([&] { status = codec::runCodec(in.reader(), out.writer()); });
    for (int i = 0; i < 3; ++i) {
        in.write(question);
        in.write("\n");
        EXPECT_EQ(out.line(), reply);
    }
    // A line may come in pieces, and two may come together.
    in.write(question.substr(0, 7));
    in.write(std::string(question.substr(7)) + "\n" + std::string(question) + "\n{");
    EXPECT_EQ(out.line(), reply);
    EXPECT_EQ(out.line(), reply);
    in.closeWriter();
    EXPECT_THAT(out.line(), testing::StartsWith(R"({"error":)"));
    codec.join();
    EXPECT_EQ(status, 0);
}

TEST(CodecStream, WaitsForDescriptorsThatDoNotBlock)
{
    constexpr int count = 3'000; // more than a pipe holds
    Pipe in, out;
    ASSERT_EQ(::fcntl(in.reader(), F_SETFL, O_NONBLOCK), 0);
    ASSERT_EQ(::fcntl(out.writer(), F_SETFL, O_NONBLOCK), 0);
    std::thread codec([&] { codec::runCodec(in.reader(), out.writer()); });
    std::thread asking([&] {
        for (int i = 0; i < count; ++i)
            in.write(R"({"id":")" + std::string(100, 'x') + R"("})" + '\n');
        in.closeWriter();
    });
    int answered = 0;
    while (answered < count && !out.line().empty())
        ++answered;
    EXPECT_EQ(answered, count);
    asking.join();
    codec.join();
}

TEST(CodecStream, EndsQuietlyWhenNobodyReadsItsAnswers)
{
    Pipe in, out;
    in.write(std::string(question) + "\n");
    in.closeWriter();
    out.closeReader();
    EXPECT_EQ(codec::runCodec(in.reader(), out.writer()), 0);
}

TEST(CodecStream, SaysWhenItsInputCannotBeRead)
{
    const int folder = ::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Pipe out;
    testing::internal::CaptureStderr();
    EXPECT_EQ(codec::runCodec(folder, out.writer()), 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("directory"));
    out.closeWriter();
    EXPECT_EQ(out.all(), "");
    ::close(folder);
}

} // namespace
} // namespace aurisk::tests
