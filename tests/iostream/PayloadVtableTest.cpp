// The virtual operations of the payload classes keep their slots: callers that were compiled apart reach them
// by number.

#include "iostream/PayloadProbe.h"
#include "support/VtableSlots.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace IOStream;
using Log = std::vector<std::string>;

class PayloadVtable : public testing::Test {
protected:
    void SetUp() override { PayloadProbe::log.clear(); }
};

TEST_F(PayloadVtable, TheDestructorsTakeSlots0And1) {
    CallSlot<void>(PayloadProbe::New(), 1); // frees the object, too; the leak check sees to that
    IOH264NALPayload* const payload = PayloadProbe::New();
    CallSlot<void>(payload, 0);
    ::operator delete(payload);
    EXPECT_EQ(PayloadProbe::log, (Log{"destroyed", "destroyed"}));
}

TEST_F(PayloadVtable, TheOperationsOfAFramesDataTakeSlots2To6) {
    const std::unique_ptr<IOH264NALPayload> payload(PayloadProbe::New());
    EXPECT_EQ(CallSlot<uint8_t*>(payload.get(), 2), nullptr);
    EXPECT_EQ(CallSlot<uint32_t>(payload.get(), 3), 3u);
    CallSlot<void, uint16_t>(payload.get(), 4, 40);
    EXPECT_EQ(CallSlot<uint32_t>(payload.get(), 5), 5u);
    EXPECT_FALSE(CallSlot<bool>(payload.get(), 6));
    EXPECT_EQ(PayloadProbe::log,
              (Log{"GetData", "GetDataSize", "SetStreamID 40", "GetFrameType", "ScanData"}));
}

TEST_F(PayloadVtable, WhatIsKnownOfTheStreamTakesSlots7And8) {
    const std::unique_ptr<IOH264NALPayload> payload(PayloadProbe::New());
    std::vector<uint8_t> record;
    uint32_t fourCC = 0;
    EXPECT_EQ(CallSlot<const IOElementaryStreamInfo&>(payload.get(), 7).width, 0);
    EXPECT_TRUE((CallSlot<bool, std::vector<uint8_t>&, uint32_t&>(payload.get(), 8, record, fourCC)));
    EXPECT_EQ(PayloadProbe::log, (Log{"GetStreamInfo", "GetConfigRecord"}));
}

TEST_F(PayloadVtable, TheOperationsOfUnitsTakeSlots9To14) {
    const std::unique_ptr<IOH264NALPayload> payload(PayloadProbe::New());
    const std::vector<uint8_t> record;
    const uint8_t byte = 0;
    BitBuffer reader(&byte, 1);
    EXPECT_EQ((CallSlot<uint32_t, const std::vector<uint8_t>&, uint32_t>(payload.get(), 9, record, 0)), 9u);
    EXPECT_FALSE((CallSlot<bool, const uint8_t*, uint32_t, uint32_t>(payload.get(), 10, &byte, 1, 4)));
    EXPECT_EQ((CallSlot<uint8_t, uint8_t>(payload.get(), 11, 110)), 110);
    CallSlot<void, uint8_t, const uint8_t*, uint32_t>(payload.get(), 12, 7, &byte, 1);
    EXPECT_TRUE((CallSlot<bool, BitBuffer&, uint32_t>(payload.get(), 13, reader, 0)));
    EXPECT_TRUE((CallSlot<bool, BitBuffer&>(payload.get(), 14, reader)));
    EXPECT_EQ(PayloadProbe::log,
              (Log{"ParseConfigRecord", "AppendSample", "GetNALType", "ParseNAL", "ParseVUI", "ParseHRD"}));
}

} // namespace
