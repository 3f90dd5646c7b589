#include "framework/CxAbstractAVCodec.h"

#include "host/Platform.h"

#include <new>

namespace {

/// Page-aligned memory that its last owner frees; null for lack of memory.
std::shared_ptr<uint8_t> NewBuffer(int32_t size) {
    void* const block = Platform::AllocMemAligned(size, Platform::GetMemoryPageSize());
    if (block == nullptr) return nullptr;
    try {
        return {static_cast<uint8_t*>(block), Platform::FreeMemAligned};
    } catch (const std::bad_alloc&) {
        return nullptr; // The block is freed already.
    }
}

} // namespace

uint8_t* CxAbstractAVCodec::GetDataBuffer() {
    if (dataBuffer != nullptr) return dataBuffer.get();
    if (dataSource == nullptr) return nullptr;
    dataBufferSize = dataSource->GetMaxSampleSize();
    dataBuffer = NewBuffer(dataBufferSize);
    return dataBuffer.get();
}

int32_t CxAbstractAVCodec::GetDataBufferSize() { return GetDataBuffer() != nullptr ? dataBufferSize : 0; }

CxAVError CxAbstractAVCodec::SetDataSource(CxAbstractDataSource* source) {
    dataSource = source;
    return Open();
}

CxAbstractDataSource*& CxAbstractAVCodec::getDataSource() { return dataSource; }

bool CxAbstractAVCodec::isTypeOf(const CxAbstractCodecFactory* maker) { return maker == factory; }
