// References, attributes, buffers and samples.

#include "standins/mediafoundation/MFLibrary.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr auto wrongType = static_cast<HRESULT>(0xC00D36BD);
constexpr auto wrongIndex = static_cast<HRESULT>(0xC00D36BF);
constexpr auto unexpected = static_cast<HRESULT>(0x8000FFFF);

/// Asks for an interface; the reference that comes with it goes again.
void* Asked(IUnknown* object, REFIID id) {
    void* found = nullptr;
    if (SUCCEEDED(object->QueryInterface(id, &found))) object->Release();
    return found;
}

Ptr<IMFMediaBuffer> BufferOf(const Bytes& bytes, DWORD capacity) {
    Ptr<IMFMediaBuffer> buffer = NewBuffer(capacity);
    BYTE* memory = nullptr;
    buffer->Lock(&memory, nullptr, nullptr);
    std::copy(bytes.begin(), bytes.end(), memory);
    buffer->Unlock();
    buffer->SetCurrentLength(static_cast<DWORD>(bytes.size()));
    return buffer;
}

TEST(References, KeepAnObjectAliveToTheLast) {
    const Ptr<IMFSample> sample = NewSample();
    EXPECT_EQ(sample->AddRef(), 2u);
    EXPECT_EQ(sample->Release(), 1u);
    EXPECT_FALSE(IsLibraryUnused());
}

TEST(References, AreCountedFromManyThreads) {
    IMFSample* const sample = NewSample().release();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([sample] {
            for (int time = 0; time < 1000; ++time) {
                sample->AddRef();
                sample->Release();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sample->Release(), 0u);
    EXPECT_TRUE(IsLibraryUnused());
}

TEST(References, ComeWithEachInterfaceThatIsAskedFor) {
    const Ptr<IMFSample> sample = NewSample();
    void* attributes = nullptr;
    ASSERT_EQ(sample->QueryInterface(IID_IMFAttributes, &attributes), S_OK);
    EXPECT_EQ(static_cast<IMFAttributes*>(attributes)->Release(), 1u);
}

TEST(Interfaces, OfAnObjectAreTheSameObject) {
    const Ptr<IMFSample> sample = NewSample();
    EXPECT_EQ(Asked(sample.get(), IID_IUnknown), sample.get());
    EXPECT_EQ(Asked(sample.get(), IID_IMFSample), sample.get());
    EXPECT_EQ(Asked(sample.get(), IID_IMFMediaBuffer), nullptr);
    EXPECT_EQ(sample->QueryInterface(IID_IMFSample, nullptr), E_POINTER);
}

TEST(Interfaces, OfATransformLeadToEachOther) {
    const ComThread com;
    const Ptr<IMFTransform> transform = NewTransform(MFT_CATEGORY_VIDEO_DECODER);
    void* found = nullptr;
    ASSERT_EQ(transform->QueryInterface(IID_ICodecAPI, &found), S_OK);
    const Ptr<ICodecAPI> properties(static_cast<ICodecAPI*>(found));
    EXPECT_EQ(Asked(properties.get(), IID_IMFTransform), transform.get());
    EXPECT_EQ(Asked(properties.get(), IID_IUnknown), Asked(transform.get(), IID_IUnknown));
}

class AttributesOfASample : public testing::Test {
protected:
    const GUID key_ = MF_MT_FRAME_SIZE;
    const Ptr<IMFSample> sample_ = NewSample();
};

TEST_F(AttributesOfASample, AreMissingAtFirst) {
    UINT32 number = 5;
    UINT32 size = 6;
    EXPECT_EQ(sample_->GetUINT32(key_, &number), MF_E_ATTRIBUTENOTFOUND);
    EXPECT_EQ(sample_->GetBlobSize(key_, &size), MF_E_ATTRIBUTENOTFOUND);
    EXPECT_EQ(number, 5u);
    EXPECT_EQ(size, 6u);
}

TEST_F(AttributesOfASample, GiveWhatWasSet) {
    UINT32 number = 0;
    UINT64 pair = 0;
    double real = 0;
    GUID identifier = {};
    sample_->SetUINT32(MF_MT_AVG_BITRATE, 7);
    sample_->SetUINT64(MF_MT_FRAME_SIZE, PairOf(8, 9));
    sample_->SetDouble(MF_MT_FRAME_RATE, 2.5);
    sample_->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_H264);
    EXPECT_EQ(sample_->GetUINT32(MF_MT_AVG_BITRATE, &number), S_OK);
    EXPECT_EQ(sample_->GetUINT64(MF_MT_FRAME_SIZE, &pair), S_OK);
    EXPECT_EQ(sample_->GetDouble(MF_MT_FRAME_RATE, &real), S_OK);
    EXPECT_EQ(sample_->GetGUID(MF_MT_SUBTYPE, &identifier), S_OK);
    EXPECT_EQ(number, 7u);
    EXPECT_EQ(pair, PairOf(8, 9));
    EXPECT_EQ(real, 2.5);
    EXPECT_EQ(identifier, MFVideoFormat_H264);
}

TEST_F(AttributesOfASample, TellTheirTypes) {
    MF_ATTRIBUTE_TYPE type = {};
    sample_->SetUINT64(key_, 1);
    EXPECT_EQ(sample_->GetItemType(key_, &type), S_OK);
    EXPECT_EQ(type, MF_ATTRIBUTE_UINT64);
    UINT32 number = 0;
    EXPECT_EQ(sample_->GetUINT32(key_, &number), wrongType);
}

TEST_F(AttributesOfASample, AreReplacedAndDeleted) {
    UINT32 count = 0;
    sample_->SetUINT64(key_, 1);
    sample_->SetUINT32(key_, 2);
    sample_->SetUINT32(MF_MT_AVG_BITRATE, 3);
    EXPECT_EQ(NumberOf(*sample_, key_), 2u);
    EXPECT_EQ(sample_->GetCount(&count), S_OK);
    EXPECT_EQ(count, 2u);
    sample_->DeleteItem(key_);
    EXPECT_EQ(NumberOf(*sample_, key_), std::nullopt);
    EXPECT_EQ(NumberOf(*sample_, MF_MT_AVG_BITRATE), 3u);
    sample_->DeleteAllItems();
    EXPECT_EQ(NumberOf(*sample_, MF_MT_AVG_BITRATE), std::nullopt);
}

TEST_F(AttributesOfASample, HoldCopiesOfBlobs) {
    Bytes blob = {1, 2, 3};
    EXPECT_EQ(sample_->SetBlob(key_, blob.data(), 3), S_OK);
    blob[0] = 9;
    EXPECT_EQ(BlobOf(*sample_, key_), (Bytes{1, 2, 3}));
    UINT8 room[2] = {};
    EXPECT_EQ(sample_->GetBlob(key_, room, 2, nullptr), MF_E_BUFFERTOOSMALL);
    EXPECT_EQ(room[0], 0);
}

TEST_F(AttributesOfASample, GiveBlobsInMemoryOfTheCaller) {
    const UINT8 blob[] = {1, 2, 3};
    sample_->SetBlob(key_, blob, 3);
    UINT8* bytes = nullptr;
    UINT32 size = 0;
    ASSERT_EQ(sample_->GetAllocatedBlob(key_, &bytes, &size), S_OK);
    EXPECT_EQ(Bytes(bytes, bytes + size), (Bytes{1, 2, 3}));
    MF().CoTaskMemFree(bytes);
}

TEST_F(AttributesOfASample, MayBeEmptyBlobs) {
    EXPECT_EQ(sample_->SetBlob(key_, nullptr, 0), S_OK);
    EXPECT_EQ(sample_->SetBlob(key_, nullptr, 1), E_POINTER);
    UINT32 size = 9;
    EXPECT_EQ(sample_->GetBlobSize(key_, &size), S_OK);
    EXPECT_EQ(size, 0u);
}

TEST_F(AttributesOfASample, AreCopiedInThePlaceOfOthers) {
    const UINT8 blob[] = {1, 2, 3};
    const Ptr<IMFSample> copy = NewSample();
    copy->SetUINT32(MF_MT_AVG_BITRATE, 1);
    sample_->SetUINT32(MF_MT_MPEG2_PROFILE, 77);
    sample_->SetBlob(key_, blob, 3);
    EXPECT_EQ(sample_->CopyAllItems(copy.get()), S_OK);
    EXPECT_EQ(NumberOf(*copy, MF_MT_AVG_BITRATE), std::nullopt);
    EXPECT_EQ(NumberOf(*copy, MF_MT_MPEG2_PROFILE), 77u);
    EXPECT_EQ(BlobOf(*copy, key_), (Bytes{1, 2, 3}));
}

TEST_F(AttributesOfASample, HaveNoStringsAndObjects) {
    EXPECT_EQ(sample_->SetString(key_, u"text"), E_NOTIMPL);
    EXPECT_EQ(sample_->SetUnknown(key_, sample_.get()), E_NOTIMPL);
}

TEST(MemoryBuffers, HaveTheirCapacityAndNoLength) {
    const Ptr<IMFMediaBuffer> buffer = NewBuffer(100);
    BYTE* bytes = nullptr;
    DWORD capacity = 0;
    DWORD length = 1;
    EXPECT_EQ(buffer->Lock(&bytes, &capacity, &length), S_OK);
    EXPECT_NE(bytes, nullptr);
    EXPECT_EQ(capacity, 100u);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(buffer->Unlock(), S_OK);
}

TEST(MemoryBuffers, HaveNoMoreLengthThanRoom) {
    const Ptr<IMFMediaBuffer> buffer = NewBuffer(100);
    DWORD length = 0;
    EXPECT_EQ(buffer->SetCurrentLength(101), E_INVALIDARG);
    EXPECT_EQ(buffer->SetCurrentLength(100), S_OK);
    EXPECT_EQ(buffer->GetCurrentLength(&length), S_OK);
    EXPECT_EQ(length, 100u);
}

TEST(MemoryBuffers, MayBeEmpty) {
    const Ptr<IMFMediaBuffer> buffer = NewBuffer(0);
    DWORD capacity = 1;
    EXPECT_EQ(buffer->GetMaxLength(&capacity), S_OK);
    EXPECT_EQ(capacity, 0u);
    EXPECT_EQ(buffer->Lock(nullptr, nullptr, nullptr), E_POINTER);
}

TEST(Samples, HaveNoTimeUntilItIsSet) {
    const Ptr<IMFSample> sample = NewSample();
    LONGLONG value = 5;
    EXPECT_EQ(sample->GetSampleTime(&value), MF_E_NO_SAMPLE_TIMESTAMP);
    EXPECT_EQ(sample->GetSampleDuration(&value), MF_E_NO_SAMPLE_DURATION);
    EXPECT_EQ(value, 5);
    sample->SetSampleTime(-1);
    sample->SetSampleDuration(0);
    EXPECT_EQ(sample->GetSampleTime(&value), S_OK);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(sample->GetSampleDuration(&value), S_OK);
    EXPECT_EQ(value, 0);
}

TEST(Samples, KeepTheirBuffersAlive) {
    const Ptr<IMFSample> sample = NewSample();
    IMFMediaBuffer* buffer = NewBuffer(10).release();
    EXPECT_EQ(sample->AddBuffer(buffer), S_OK);
    EXPECT_EQ(buffer->Release(), 1u);
    IMFMediaBuffer* found = nullptr;
    EXPECT_EQ(sample->GetBufferByIndex(0, &found), S_OK);
    EXPECT_EQ(found, buffer);
    EXPECT_EQ(sample->RemoveAllBuffers(), S_OK);
    EXPECT_EQ(found->Release(), 0u);
}

TEST(Samples, GiveTheirOneBufferAsAWhole) {
    const Ptr<IMFSample> sample = NewSample();
    const Ptr<IMFMediaBuffer> buffer = NewBuffer(10);
    sample->AddBuffer(buffer.get());
    IMFMediaBuffer* whole = nullptr;
    ASSERT_EQ(sample->ConvertToContiguousBuffer(&whole), S_OK);
    EXPECT_EQ(whole, buffer.get());
    whole->Release();
}

TEST(Samples, JoinTheirBuffers) {
    const Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(BufferOf({1, 2}, 10).get());
    sample->AddBuffer(BufferOf({}, 10).get());
    sample->AddBuffer(BufferOf({3, 4, 5}, 3).get());
    DWORD length = 0;
    EXPECT_EQ(sample->GetTotalLength(&length), S_OK);
    EXPECT_EQ(length, 5u);
    EXPECT_EQ(ContentOf(*sample).bytes, (Bytes{1, 2, 3, 4, 5}));
    DWORD count = 0;
    sample->GetBufferCount(&count);
    EXPECT_EQ(count, 1u);
}

TEST(Samples, CopyOnlyWhatFits) {
    const Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(BufferOf({1, 2}, 2).get());
    sample->AddBuffer(BufferOf({3, 4}, 2).get());
    EXPECT_EQ(sample->CopyToBuffer(NewBuffer(3).get()), MF_E_BUFFERTOOSMALL);
    EXPECT_EQ(sample->CopyToBuffer(NewBuffer(4).get()), S_OK);
}

TEST(Samples, RefuseWhatTheyDoNotHave) {
    const Ptr<IMFSample> sample = NewSample();
    IMFMediaBuffer* buffer = nullptr;
    EXPECT_EQ(sample->ConvertToContiguousBuffer(&buffer), unexpected);
    EXPECT_EQ(sample->GetBufferByIndex(0, &buffer), wrongIndex);
    EXPECT_EQ(sample->RemoveBufferByIndex(0), wrongIndex);
    EXPECT_EQ(sample->AddBuffer(nullptr), E_POINTER);
    EXPECT_EQ(buffer, nullptr);
}

} // namespace
