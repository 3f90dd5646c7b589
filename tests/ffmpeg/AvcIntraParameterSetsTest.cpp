#include "ffmpeg/AvcIntraParameterSets.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace {

using CxFFMPEG::AvcIntraParameterSets;

std::string Hex(std::span<const uint8_t> bytes) {
    std::ostringstream text;
    for (const uint8_t byte : bytes)
        text << std::hex << std::setw(2) << std::setfill('0') << unsigned{byte};
    return text.str();
}

/// First bytes of the units that start codes of four bytes begin.
std::vector<int> UnitStarts(std::span<const uint8_t> bytes) {
    std::vector<int> starts;
    for (size_t i = 0; i + 4 < bytes.size(); ++i)
        if (bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 0 && bytes[i + 3] == 1)
            starts.push_back(bytes[i + 4]);
    return starts;
}

TEST(AvcIntraParameterSets, ProgressiveAndInterlacedPicturesOf1920HaveTheirOwn) {
    EXPECT_EQ(Hex(AvcIntraParameterSets(1920, 1)),
              "00000001677a1029b6d420223319c6632321011198ce331918210256b93d7d7e4fe33f11f19e08b88c5443c078"
              "0227e2701e30101014000003000400000300ca10000000000000000000000168ce3348d0");
    EXPECT_EQ(Hex(AvcIntraParameterSets(1920, 2)),
              "00000001677a1029b6d420223319c6632321011198ce33191821033a46656a6524ade91232141a2634ada44182"
              "2301502b1a24694830402e111208c68c0441284c34f01e0113f2e03c6020202800000300080000030194000000"
              "000168ce3348d0");
}

TEST(AvcIntraParameterSets, OneServes1440InEveryFieldOrder) {
    for (const int32_t fieldOrder : {0, 1, 2, 3})
        EXPECT_EQ(Hex(AvcIntraParameterSets(1440, fieldOrder)),
                  "00000001676e1028a6d42032330c7118886210191986388c44302102564e6e61873e734d980c03069c0b73e6c0"
                  "b518630d39e05b02d4c6191a798c323424f0168113f7ff8001800271808080a000000300200000065080000000"
                  "000168ee311211");
}

TEST(AvcIntraParameterSets, OneServes1280InEveryFieldOrder) {
    for (const int32_t fieldOrder : {0, 1, 2, 3})
        EXPECT_EQ(Hex(AvcIntraParameterSets(1280, fieldOrder)),
                  "00000001677a1029b6d4202a331dc762a1084054663b8ec542021025642c89e885e4214b90830695d106469720"
                  "c8d7430811c21e4c910f014016ec078c040405000003000100000300648400000000000000000168ce311211");
}

TEST(AvcIntraParameterSets, EveryFieldOrderButProgressiveIsInterlaced) {
    for (const int32_t fieldOrder : {-1, 0, 3, 4, 5, 6})
        EXPECT_EQ(AvcIntraParameterSets(1920, fieldOrder).data(), AvcIntraParameterSets(1920, 2).data());
}

TEST(AvcIntraParameterSets, EachIsASequenceAndAPictureParameterSet) {
    for (const int32_t width : {1280, 1440, 1920})
        for (const int32_t fieldOrder : {1, 2})
            EXPECT_EQ(UnitStarts(AvcIntraParameterSets(width, fieldOrder)), (std::vector<int>{0x67, 0x68}))
                << width;
}

TEST(AvcIntraParameterSets, AnotherWidthHasNone) {
    for (const int32_t width : {-1920, 0, 960, 1279, 1921, 3840})
        EXPECT_TRUE(AvcIntraParameterSets(width, 1).empty()) << width;
}

} // namespace
