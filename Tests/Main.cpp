#include <gmock/gmock.h>

#include <memory>

namespace {

/// A fatal failure in a helper ends the test, not the helper alone: what comes next would use what is not there.
class EndsTheTest final : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override
    {
        if (result.fatally_failed())
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
