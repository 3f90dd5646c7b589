#pragma once

#include "codecs/DNXRecords.h"

#include <string>

/// Name under which the host is asked for the library.
inline constexpr const char* dnxLibraryName = "DNxHR.dll";

/// The twelve functions of the library, without their prefix.
#define CORVEX_DNX_FUNCTIONS(apply)                                                                          \
    apply(Initialize) apply(Finalize) apply(GetVersion) apply(GetErrorString)                                \
        apply(GetInfoFromCompressedFrame) apply(CreateDecoder) apply(DecodeFrame) apply(DeleteDecoder)       \
            apply(CreateEncoder) apply(GetCompressedBufferSize) apply(EncodeFrame) apply(DeleteEncoder)

/// Where they are; null before they are bound. Each is documented in codecs/DNXRecords.h.
struct DNXFunctions {
#define CORVEX_DNX_POINTER(name) decltype(&DNX_##name) name = nullptr;
    CORVEX_DNX_FUNCTIONS(CORVEX_DNX_POINTER)
#undef CORVEX_DNX_POINTER
};

/// Loads the library and finds its functions. If one is missing, none may be called, and the library is
/// unloaded again. Throws std::bad_alloc, with the library unloaded.
/// @param failure  receives in words what is missing if not null; unchanged after a success
bool BindDNXFunctions(DNXFunctions& functions, std::string* failure = nullptr);

/// Binds on the first call, and gives the outcome of that from then on; nothing unloads the library once it
/// is bound. Says nothing. Any thread; throws std::bad_alloc, and then the next call is the first again.
bool LoadDNX();

/// The functions of the process, to be called once `LoadDNX` has returned true. The table lives until the
/// process has ended: it has no destructor.
const DNXFunctions& DNX();
