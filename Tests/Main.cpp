#include <gmock/gmock.h>

#include <memory>

namespace {

/// A fatal failure in a helper ends the test, not the helper alone: what comes next would use what is not there. Where
/// an exception has ended the test already, that is reported as a failure of no file.
class EndsTheTest final : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override
    {
        if (result.fatally_failed() && result.file_name())
            throw testing::AssertionException(result);
    }
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(std::make_unique<EndsTheTest>().release());
    return RUN_ALL_TESTS();
}
