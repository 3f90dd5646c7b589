#include "cameraraw/RawResult.h"

#include <cstdio>

void ReportRawResult(HRESULT result) {
    std::fprintf(stderr, "Vrel HRESULT = 0x%x", static_cast<unsigned>(result));
}

void ReportRawStep(const char* step, HRESULT result) {
    std::fprintf(stderr, "Vrel (%s) HRESULT = 0x%x", step, static_cast<unsigned>(result));
}

void ReportRawNull() { std::fputs("Vrel NULL pointer", stderr); }
