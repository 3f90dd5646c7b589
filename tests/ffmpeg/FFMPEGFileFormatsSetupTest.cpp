// What a save makes of the controls, as the encoder is told it.

#include "ffmpeg/SaveTestSupport.h"

#include <utility>

namespace {

using namespace CxFFMPEG;

using Options = EncoderOptions;

/// Sees the options that encoders are given during its life.
class GivenOptions {
public:
    GivenOptions() : replaced_(&FFmpegFunctions::av_opt_set, Set) { all.clear(); }

    static inline Options all;

private:
    static int Set(void* object, const char* key, const char* value, int flags) {
        all.emplace_back(key, value);
        return av_opt_set(object, key, value, flags);
    }

    ReplacedFunction<decltype(av_opt_set)> replaced_;
};

/// A document whose frame rates are divided.
class DividedRates {
public:
    explicit DividedRates(int32_t divisor) { CorvexDoc::Get()->SetFrameRateDivisor(divisor); }
    ~DividedRates() { CorvexDoc::Get()->SetFrameRateDivisor(0); }
    DividedRates(const DividedRates&) = delete;
    DividedRates& operator=(const DividedRates&) = delete;
};

/// A save that gets as far as its encoder, which is not opened.
class SetupSave : public testing::Test {
protected:
    /// Begins the save.
    /// @return what the encoder was told
    const AVCodecContext& Told() {
        OpenedDecoders::result = AVERROR(EINVAL);
        const std::string words =
            WordsOf([&] { EXPECT_FALSE(saver.Start(workspace.Path("movie.mkv"), *image)); });
        EXPECT_EQ(words, "Could not open codec\n");
        return OpenedDecoders::asGiven;
    }
    /// The time of a frame at a rate of the control, as a fraction that is not reduced.
    std::pair<int, int> FrameTimeAt(double rate) {
        saver.Set("FrameRateFps", rate);
        const AVRational time = Told().time_base;
        return {time.num, time.den};
    }
    const Options& ToldOptions(const std::string& text) {
        saver.SetOptions(text);
        GivenOptions::all.clear();
        Told();
        return GivenOptions::all;
    }

    const Workspace workspace;
    const ImagePtr image = GreyImage(0);
    Saver saver;
    const OpenedDecoders opened;
    const GivenOptions options;
};

using Pair = std::pair<int, int>;

TEST_F(SetupSave, FilmAndVideoRatesBecomeTheirFractions) {
    EXPECT_EQ(FrameTimeAt(23.976), Pair(1001, 24000));
    EXPECT_EQ(FrameTimeAt(23.98), Pair(1001, 24000));
    EXPECT_EQ(FrameTimeAt(29.97), Pair(1001, 30000));
    EXPECT_EQ(FrameTimeAt(59.94), Pair(1001, 60000));
}

TEST_F(SetupSave, WholeRatesCountInHundredths) {
    EXPECT_EQ(FrameTimeAt(24.0), Pair(100, 2400));
    EXPECT_EQ(FrameTimeAt(25.0), Pair(100, 2500));
    EXPECT_EQ(FrameTimeAt(30.0), Pair(100, 3000));
    EXPECT_EQ(FrameTimeAt(50.0), Pair(100, 5000));
    EXPECT_EQ(FrameTimeAt(60.0), Pair(100, 6000));
}

TEST_F(SetupSave, OtherRatesCountInThousandths) {
    EXPECT_EQ(FrameTimeAt(15.0), Pair(1000, 15000));
    EXPECT_EQ(FrameTimeAt(0.01), Pair(1000, 10));
}

TEST_F(SetupSave, TheDocumentDividesTheRateBeforeItIsMapped) {
    const DividedRates halved(2);
    EXPECT_EQ(FrameTimeAt(50.0), Pair(100, 2500));
    const DividedRates divided(20);
    EXPECT_EQ(FrameTimeAt(0.01), Pair(1000, 1)) << "below a thousandth";
}

TEST_F(SetupSave, WithoutADocumentNothingIsDivided) {
    const DividedRates halved(2);
    Request request(0.0);
    saver.format.SetupSave(nullptr, &request);
    EXPECT_EQ(saver.format.GetAttr(FFmpegTag_FrameRate, 0.0), 24.0);
}

TEST_F(SetupSave, TheFrameRateBecomesTheFormatsOwn) {
    saver.Set("FrameRateFps", 29.97);
    saver.Setup();
    EXPECT_EQ(saver.format.GetAttr(FFmpegTag_FrameRate, 0.0), 30000.0 / 1001.0);
}

TEST_F(SetupSave, TheDataRateCountsInKilobytesOf1024Bytes) {
    EXPECT_EQ(Told().bit_rate, 4194304);
    saver.Set("DataRateK", 0.0);
    EXPECT_EQ(Told().bit_rate, 0);
    saver.Set("DataRateK", 1.5);
    EXPECT_EQ(Told().bit_rate, 12288);
}

TEST_F(SetupSave, KeyFramesBeyondTheirRangeAreLimitedToIt) {
    EXPECT_EQ(Told().gop_size, 1);
    saver.Set("KeyFrames", 65.0);
    EXPECT_EQ(Told().gop_size, 64);
    saver.Set("KeyFrames", -1.0);
    EXPECT_EQ(Told().gop_size, 0);
    saver.Set("KeyFrames", 12.9);
    EXPECT_EQ(Told().gop_size, 12);
}

TEST_F(SetupSave, OptionsReachTheEncoderInTheirOrder) {
    EXPECT_EQ(ToldOptions("b=2,a=1,b=3,"), (Options{{"b", "2"}, {"a", "1"}, {"b", "3"}}));
}

TEST_F(SetupSave, AnOptionThatNothingEndsIsLost) {
    EXPECT_EQ(ToldOptions("preset=slow,crf=18"), (Options{{"preset", "slow"}}));
    EXPECT_EQ(ToldOptions("preset=slow,crf=18,"), (Options{{"preset", "slow"}, {"crf", "18"}}));
    EXPECT_EQ(ToldOptions("preset=slow"), Options());
}

TEST_F(SetupSave, OptionsMayHaveEmptyKeysAndFurtherEqualsSignsButNoColons) {
    EXPECT_EQ(ToldOptions("=x;a=b=c;x=1:2;novalue;"), (Options{{"", "x"}, {"a", "b=c"}, {"x", "1"}}));
}

TEST_F(SetupSave, ATextOfSeparatorsHasNoOptions) {
    EXPECT_EQ(ToldOptions("\n|:,;;;:::|||,,,\n\n" + std::string(5000, ':')), Options());
}

TEST_F(SetupSave, EachSetupReplacesTheOptionsOfTheOneBefore) {
    EXPECT_EQ(ToldOptions("a=1,").size(), 1U);
    EXPECT_EQ(ToldOptions("").size(), 0U);
}

TEST_F(SetupSave, ANullRequestLeavesWhatWasReadBefore) {
    saver.Set("KeyFrames", 7.0);
    saver.Setup();
    saver.Set("KeyFrames", 9.0);
    saver.format.SetupSave(&saver.tool, nullptr);
    const std::string words = WordsOf([&] {
        OpenedDecoders::result = AVERROR(EINVAL);
        EXPECT_FALSE(
            saver.format.SaveHeaderTagList(workspace.Path("movie.mkv").c_str(), image.get(), saver.tags));
    });
    EXPECT_EQ(OpenedDecoders::asGiven.gop_size, 7);
}

} // namespace
