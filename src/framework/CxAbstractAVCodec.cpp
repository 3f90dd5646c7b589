#include "framework/CxAbstractAVCodec.h"

uint8_t* CxAbstractAVCodec::GetDataBuffer() {
    if (dataBuffer != nullptr) return dataBuffer;
    if (dataSource == nullptr) return nullptr;
    dataBufferSize = dataSource->GetMaxSampleSize();
    dataBuffer =
        static_cast<uint8_t*>(Platform::AllocMemAligned(dataBufferSize, Platform::GetMemoryPageSize()));
    return dataBuffer;
}

int32_t CxAbstractAVCodec::GetDataBufferSize() { return GetDataBuffer() != nullptr ? dataBufferSize : 0; }

CxAVError CxAbstractAVCodec::SetDataSource(CxAbstractDataSource* source) {
    dataSource = source;
    return Open();
}

CxAbstractDataSource*& CxAbstractAVCodec::getDataSource() { return dataSource; }

bool CxAbstractAVCodec::isTypeOf(const CxAbstractCodecFactory* maker) { return maker == factory; }
