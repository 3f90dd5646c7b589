#include "cameraraw/automation/Utf8.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <iconv.h>
#include <string>
#include <vector>

namespace {

std::u16string Wide(const std::string& text, DWORD flags = 0) {
    const int length = static_cast<int>(text.size());
    std::u16string wide(MultiByteToWideChar(CP_UTF8, flags, text.data(), length, nullptr, 0), u'\0');
    const int written =
        MultiByteToWideChar(CP_UTF8, flags, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    EXPECT_EQ(written, static_cast<int>(wide.size()));
    return wide;
}

std::string Narrow(const std::u16string& wide, DWORD flags = 0) {
    const int length = static_cast<int>(wide.size());
    std::string text(WideCharToMultiByte(CP_UTF8, flags, wide.data(), length, nullptr, 0, nullptr, nullptr),
                     0);
    const int written = WideCharToMultiByte(CP_UTF8, flags, wide.data(), length, text.data(),
                                            static_cast<int>(text.size()), nullptr, nullptr);
    EXPECT_EQ(written, static_cast<int>(text.size()));
    return text;
}

/// The C library's conversion; empty if it refuses the text.
std::u16string PeerWide(std::string text) {
    const iconv_t peer = iconv_open("UTF-16LE", "UTF-8");
    std::u16string wide(text.size(), u'\0');
    char* input = text.data();
    char* output = reinterpret_cast<char*>(wide.data());
    size_t inputLeft = text.size();
    size_t outputLeft = wide.size() * 2;
    const bool valid = iconv(peer, &input, &inputLeft, &output, &outputLeft) != static_cast<size_t>(-1);
    iconv_close(peer);
    wide.resize(valid ? wide.size() - outputLeft / 2 : 0);
    return wide;
}

TEST(Utf8, ConvertsSequencesOfEveryLength) {
    EXPECT_EQ(Wide("a\u00e9\u20ac\U0001F3A5"), u"a\u00e9\u20ac\U0001F3A5");
    EXPECT_EQ(Narrow(u"a\u00e9\u20ac\U0001F3A5"), "a\u00e9\u20ac\U0001F3A5");
}

TEST(Utf8, ConvertsTheFirstAndTheLastPointOfEveryLength) {
    const std::string text = "\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                             "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    const std::u16string wide = u"\x01\x7F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF";
    EXPECT_EQ(Wide(text, MB_ERR_INVALID_CHARS), wide);
    EXPECT_EQ(Narrow(wide, WC_ERR_INVALID_CHARS), text);
}

TEST(Utf8, ReplacesWhatIsNoUtf8ByOneMarkEach) {
    EXPECT_EQ(Wide("a\x80z"), u"a\uFFFDz");                           // a continuation alone
    EXPECT_EQ(Wide("a\xE2\x82z"), u"a\uFFFDz");                       // breaks off before another character
    EXPECT_EQ(Wide("a\xE2\x82"), u"a\uFFFD");                         // breaks off at the end
    EXPECT_EQ(Wide("\xC0\xAF"), u"\uFFFD\uFFFD");                     // overlong
    EXPECT_EQ(Wide("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");           // a surrogate
    EXPECT_EQ(Wide("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD"); // too high
    EXPECT_EQ(Wide("\xFF"), u"\uFFFD");
}

TEST(Utf8, ReplacesSurrogatesWithoutTheirOtherHalf) {
    const std::u16string high(1, 0xD83C);
    const std::u16string low(1, 0xDFA5);
    EXPECT_EQ(Narrow(high + u"z"), "\uFFFDz");
    EXPECT_EQ(Narrow(high), "\uFFFD");
    EXPECT_EQ(Narrow(low), "\uFFFD");
    EXPECT_EQ(Narrow(low + high), "\uFFFD\uFFFD");
}

TEST(Utf8, RefusesWhatIsNotValidIfToldTo) {
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "a\x80", 2, nullptr, 0), 0);
    const std::u16string high(1, 0xD83C);
    EXPECT_EQ(
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, high.data(), 1, nullptr, 0, nullptr, nullptr), 0);
}

TEST(Utf8, ConvertsTheZeroTooIfTheTextEndsWithIt) {
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
    OLECHAR wide[3] = {1, 1, 1};
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, wide, 3), 3);
    EXPECT_EQ(std::u16string(wide, 3), std::u16string(u"ab\0", 3));
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"ab", -1, nullptr, 0, nullptr, nullptr), 3);
}

TEST(Utf8, WritesNothingThatDoesNotFit) {
    OLECHAR wide[2] = {7, 7};
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 3, wide, 2), 0);
    EXPECT_EQ(wide[0], 7);
    char text[2] = {7, 7};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"\u20ac", 1, text, 2, nullptr, nullptr), 0);
    EXPECT_EQ(text[0], 7);
}

TEST(Utf8, RefusesArgumentsThatAreNotValid) {
    OLECHAR wide[4];
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "a", 1, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 1, "a", 1, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", -2, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 1, wide, -1), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 4), 0);
    char text[4];
    BOOL used = 0;
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, text, 4, "?", nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, text, 4, nullptr, &used), 0);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a", 1, text, 4, nullptr, nullptr), 0);
}

TEST(Utf8, AgreesWithTheCLibraryOnRandomBytes) {
    std::mt19937 random = MakeRandom();
    // Bytes near the limits of the sequences, so that many of them are valid.
    const std::string bytes = "aZ\x7F\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF3\xF4\xF5";
    int valid = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text(1 + random() % 4, '\0');
        for (char& byte : text)
            byte = bytes[random() % bytes.size()];
        const std::u16string peer = PeerWide(text);
        valid += !peer.empty();
        ASSERT_EQ(Wide(text, MB_ERR_INVALID_CHARS), peer);
        if (!peer.empty()) {
            ASSERT_EQ(Narrow(peer, WC_ERR_INVALID_CHARS), text);
        }
    }
    EXPECT_GT(valid, 500);
}

} // namespace
