#pragma once

#include "mediafoundation/Picture.h"
#include "mediafoundation/StreamUnits.h"

#include <wels/codec_api.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>

namespace mediafoundation {

/// Decodes H.264 with OpenH264, and works around where it ends. One thread at a time.
class PictureDecoder {
public:
    /// A picture of whole macroblocks. What a stream crops is lost: the pixels on its edge stand there.
    struct Decoded {
        Picture picture;
        uint64_t tag; ///< of the access unit that held it
    };
    using Output = std::deque<Decoded>;

    /// One access unit of a byte stream.
    struct AccessUnit {
        std::span<const uint8_t> bytes; ///< up to 0x7fffffff of them; there may be no picture in them
        uint64_t tag;                   ///< goes with the picture
        std::optional<int64_t> time;    ///< of presentation
    };

    /// Decodes one access unit. Pictures that come out are appended in presentation order. One that is
    /// damaged is concealed, or left out. Throws std::bad_alloc.
    void Decode(const AccessUnit& unit, Output& output);
    /// Appends the pictures that wait, and begins anew. Throws std::bad_alloc.
    void Drain(Output& output);
    /// Begins anew: with a picture that needs no other, by the parameter sets that came so far.
    void Restart() { decoder_.reset(); }
    /// Begins anew without parameter sets.
    void Forget();

private:
    struct DestroyDecoder {
        void operator()(ISVCDecoder* decoder) const;
    };

    void Begin();
    bool IsLeading(bool isIdr, std::optional<int64_t> time);
    bool TakeWaiting(Output& output);

    std::unique_ptr<ISVCDecoder, DestroyDecoder> decoder_; ///< null until there is something to decode
    bool isDamaged_ = false;                               ///< it met with an error
    bool isAtBegin_ = false;                               ///< no picture came so far
    std::optional<int64_t> beginTime_; ///< of the picture at which it began if that is no IDR picture
    ParameterSets sets_;
};

} // namespace mediafoundation
