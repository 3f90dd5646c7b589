#include "cameraraw/RawResult.h"

#include "cameraraw/RawTestSupport.h"

namespace {

/// A call that gives one result after another.
class Results {
public:
    explicit Results(std::vector<HRESULT> results) : results_(std::move(results)) {}
    HRESULT operator()() const { return results_.at(count++); }

    mutable size_t count = 0;

private:
    std::vector<HRESULT> results_;
};

TEST(RawResult, ASuccessIsCalledOnceWithoutAWord) {
    const Results call({S_OK});
    EXPECT_EQ(WordsOf([&] { EXPECT_TRUE(RawSucceeds(call)); }), "");
    EXPECT_EQ(call.count, 1U);
}

TEST(RawResult, AFailureIsCalledTwiceAndReportedWithItsSecondValueAndNoNewline) {
    const Results call({E_FAIL, static_cast<HRESULT>(0x8000beefU)});
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(RawSucceeds(call)); }), "Vrel HRESULT = 0x8000beef");
    EXPECT_EQ(call.count, 2U);
}

TEST(RawResult, ACallThatFailsOnceFailsAndReports0) {
    const Results call({E_FAIL, S_OK});
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(RawSucceeds(call)); }), "Vrel HRESULT = 0x0");
}

TEST(RawResult, APositiveResultIsAFailureToo) {
    const Results call({S_FALSE, S_FALSE});
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(RawSucceeds(call)); }), "Vrel HRESULT = 0x1");
}

TEST(RawResult, AStepIsReportedWithItsName) {
    const Results call({E_FAIL, E_FAIL});
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(RawStepSucceeds("WaitForDecodeJob", call)); }),
              "Vrel (WaitForDecodeJob) HRESULT = 0x80004005");
    const Results success({S_OK});
    EXPECT_EQ(WordsOf([&] { EXPECT_TRUE(RawStepSucceeds("WaitForDecodeJob", success)); }), "");
}

TEST(RawResult, AnObjectThatIsMissingIsReportedWithoutANewline) {
    int object = 0;
    int* const missing = nullptr;
    EXPECT_EQ(WordsOf([&] {
                  EXPECT_TRUE(IsRawThere(&object));
                  EXPECT_FALSE(IsRawThere(missing));
              }),
              "Vrel NULL pointer");
}

TEST(RawResult, AnObjectThatComesWithTheSecondTryIsFound) {
    int object = 0;
    int* found = nullptr;
    const Results results({E_FAIL, S_OK});
    const auto call = [&] {
        const HRESULT result = results();
        found = result == S_OK ? &object : nullptr;
        return result;
    };
    EXPECT_EQ(WordsOf([&] { EXPECT_TRUE(RawFinds(found, call)); }), "Vrel HRESULT = 0x0");
}

TEST(RawResult, AnObjectThatIsNotFoundIsReportedOnceByItsFailureOrAsMissing) {
    const int* const missing = nullptr;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(RawFinds(missing, [] { return S_OK; })); }), "Vrel NULL pointer");
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(RawFinds(missing, [] { return E_FAIL; })); }),
              "Vrel HRESULT = 0x80004005");
}

} // namespace
