#include "standins/mediafoundation/EncoderDriver.h"

#include "standins/mediafoundation/Surfaces.h"

HRESULT EncoderDriver::SetProperty(const GUID& property, uint32_t number) {
    void* found = nullptr;
    if (FAILED(transform_->QueryInterface(IID_ICodecAPI, &found))) return E_NOINTERFACE;
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_UI4;
    value.ulVal = number;
    return Ptr<ICodecAPI>(static_cast<ICodecAPI*>(found))->SetValue(&property, &value);
}

HRESULT EncoderDriver::SetOutput(const EncoderCase& coding) {
    const Ptr<IMFMediaType> type = OutputTypeOf(*transform_, MFVideoFormat_H264);
    type->SetUINT32(MF_MT_AVG_BITRATE, coding.bitRate);
    type->SetUINT64(MF_MT_FRAME_RATE, coding.frameRate);
    type->SetUINT64(MF_MT_FRAME_SIZE, PairOf(coding.width, coding.height));
    type->SetUINT32(MF_MT_MAX_KEYFRAME_SPACING, coding.keyDistance);
    type->SetUINT32(MF_MT_INTERLACE_MODE, coding.structure);
    type->SetUINT32(MF_MT_MPEG2_PROFILE, coding.profile);
    const HRESULT result = transform_->SetOutputType(0, type.get(), 0);
    header = BlobOf(*type, MF_MT_MPEG_SEQUENCE_HEADER);
    return result;
}

HRESULT EncoderDriver::SetInput(const GUID& subtype) {
    const Ptr<IMFMediaType> type = InputTypeOf(*transform_, subtype);
    return type != nullptr ? transform_->SetInputType(0, type.get(), 0) : E_FAIL;
}

bool EncoderDriver::SetUp(const EncoderCase& coding) {
    return SUCCEEDED(SetOutput(coding)) && SUCCEEDED(SetInput(coding.input));
}

std::vector<TimedBytes> EncoderDriver::Encode(const std::vector<PeerPicture>& pictures) {
    std::vector<TimedBytes> samples;
    for (size_t number = 0; number < pictures.size(); ++number) {
        TimedBytes sample;
        const TimedBytes picture = {YUY2Of(pictures[number]), TimeOf(number), pictureDuration};
        if (FAILED(Feed(*transform_, picture)) || FAILED(TakeOne(*transform_, sample))) break;
        samples.push_back(std::move(sample));
    }
    return samples;
}
