// The one place where back-ends register, while the module loads.

#include "cameraraw/VrelFileFormat.h"
#include "codecs/DNXCodec.h"
#include "codecs/ProResCodec.h"
#include "codecs/UncompressedCodecs.h"
#include "codecs/WMFCodec.h"
#include "ffmpeg/FFMPEGCodecs.h"
#include "ffmpeg/FFMPEGFileFormats.h"
#include "framework/CxAVCodecRegistry.h"

#include <new>

namespace {

template <typename Codec>
CxAbstractCodecFactory* Register() {
    return CxAVCodecRegistry::getInstance()->AddCodec(new (std::nothrow) CxAVCodecFactory<Codec>);
}

/// One line for each back-end, followed by the host format classes that go with it. The order is part of the
/// interface: of two back-ends that claim one code, the first to register is asked first.
bool RegisterAll() {
    CxFFMPEG::g_FFmpegFactory = Register<CxFFMPEG::FFMPEGCodecs>();
    CxFFMPEG::RegisterFFMPEGFileFormats();
    g_DNXFactory = Register<DNXCodec>();
    g_ProResFactory = Register<ProResCodec>();
    g_UncompressedFactory = Register<UncompressedCodecs>();
    CxWMF::g_WMFFactory = Register<CxWMF::WMFCodec>();
    RegisterVrelFileFormat();
    return true;
}

[[maybe_unused]] const bool registered = RegisterAll();

} // namespace
