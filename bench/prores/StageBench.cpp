// Where the time of decoding goes, stage by stage, and what memory it takes. Not beside a peer: the counters
// tell.

#include "prores/DecodeMaterial.h"
#include "prores/PrxFrameSetup.h"
#include "prores/PrxSliceHeader.h"

#include <benchmark/benchmark.h>

#include <x86intrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr uint32_t mbPerSlice = 8; ///< of the material: its rows are whole slices
constexpr uint32_t mostBlocks = mbPerSlice * 12;

/// Time stamp counts of the stages.
struct StageCycles {
    uint64_t entropy = 0; ///< with the clearing of the coefficients
    uint64_t transform = 0;
    uint64_t writing = 0;
    uint64_t codedBits = 0;

    double All() const { return static_cast<double>(entropy + transform + writing); }

    void KeepLeast(const StageCycles& other) {
        entropy = std::min(entropy, other.entropy);
        transform = std::min(transform, other.transform);
        writing = std::min(writing, other.writing);
    }
    void Add(const StageCycles& other) {
        entropy += other.entropy;
        transform += other.transform;
        writing += other.writing;
        codedBits += other.codedBits;
    }
};

template <typename Function>
void Clock(uint64_t* cycles, const Function& function) {
    const uint64_t start = __rdtsc();
    function();
    *cycles += __rdtsc() - start;
}

/// Decodes a frame into a format that has a direct writer, two slices at a time as a worker does.
class StageDecoder {
public:
    StageDecoder(const AVPacket& packet, const PrxPixelBuffer& buffer) {
        PrxOutputTarget target = {};
        target.baseAddress = buffer.baseAddress;
        target.rowBytes = buffer.rowBytes;
        target.pixelFormat = buffer.pixelFormat;
        target.width = buffer.width;
        target.height = buffer.height;
        const PrxBufferPiece input = {packet.data, static_cast<uint64_t>(packet.size), nullptr};
        frameSize_ = PrxSetUpFrame(input, target, 1, true, &setup_);
    }

    bool Decode() {
        const PrxPictureLayout& layout = setup_.pictures[0].layout;
        if (frameSize_ <= 0 || layout.mbWidth % mbPerSlice != 0 || layout.sliceCount % 2 != 0) return false;
        PrxBufferPiece data = PrxAdvance(layout.sliceTable, uint64_t{2} * layout.sliceCount);
        const bool first = least_.empty();
        for (uint32_t slice = 0; slice < layout.sliceCount; slice += 2) {
            StageCycles cycles;
            if (!DecodePair(slice, &data, &cycles)) return false;
            if (first) least_.push_back(cycles);
            least_[slice / 2].KeepLeast(cycles);
        }
        return true;
    }

    /// The least that each pair of slices took in any decode, added up: what else ran meanwhile hardly
    /// counts.
    StageCycles Cycles() const {
        StageCycles sum;
        for (const StageCycles& pair : least_)
            sum.Add(pair);
        return sum;
    }

private:
    uint32_t ChromaBlocks() const { return setup_.pictures[0].chromaBlocksPerMb; }
    uint32_t BlocksPerMb() const { return 4 + ChromaBlocks(); }

    bool DecodePair(uint32_t slice, PrxBufferPiece* data, StageCycles* cycles) {
        const PrxPictureContext& picture = setup_.pictures[0];
        for (uint32_t i = 0; i < 2; ++i)
            if (!Open(slice + i, i, data, cycles)) return false;
        Clock(&cycles->entropy, [&] { ReadCoefficients(); });
        for (uint32_t i = 0; i < 2; ++i) {
            PrxUpdateQuantTables(state_, picture.lumaMatrix, picture.chromaMatrix, headers_[i].quantiser);
            Clock(&cycles->transform, [&] { Transform(coefficients_[i]); });
            Clock(&cycles->writing, [&] { Write(slice + i); });
        }
        return true;
    }

    bool Open(uint32_t slice, uint32_t i, PrxBufferPiece* data, StageCycles* cycles) {
        const PrxPictureContext& picture = setup_.pictures[0];
        const uint32_t size = PrxRead16At(picture.layout.sliceTable, uint64_t{2} * slice);
        PrxSliceHeader& header = headers_[i];
        if (PrxReadSliceHeader(*data, size, picture.streamHasAlpha, &header) == 0) return false;
        const uint8_t* luma = data->data + header.headerSize;
        const uint8_t* cb = luma + header.lumaSize;
        const uint32_t log2Chroma = static_cast<uint32_t>(std::countr_zero(mbPerSlice * ChromaBlocks() / 2));
        int16_t* chroma = coefficients_[i] + mbPerSlice * 4 * 64;
        components_[i] = {luma, header.lumaSize, coefficients_[i], 5, 6};
        components_[2 + i] = {cb, header.cbSize, chroma, log2Chroma, 7};
        components_[4 + i] = {cb + header.cbSize, header.crSize, chroma + 64, log2Chroma, 7};
        cycles->codedBits += uint64_t{8} * (header.lumaSize + header.cbSize + header.crSize);
        *data = PrxAdvance(*data, size);
        return true;
    }

    void ReadCoefficients() {
        for (auto& coefficients : coefficients_)
            std::memset(coefficients, 0, mbPerSlice * BlocksPerMb() * 64 * sizeof(int16_t));
        PrxDecodeSliceComponents(components_, setup_.pictures[0].order);
    }

    void Transform(const int16_t* coefficients) {
        const PrxPictureContext& picture = setup_.pictures[0];
        const int16_t* chroma = coefficients + mbPerSlice * 4 * 64;
        for (uint32_t mb = 0; mb < mbPerSlice; ++mb) {
            int16_t* samples = samples_ + mb * BlocksPerMb() * 64;
            picture.idct(coefficients + mb * 4 * 64, samples, 4, picture.idctDepth, state_.lumaTable);
            picture.idct(chroma + mb * ChromaBlocks() * 64, samples + 4 * 64,
                         static_cast<int32_t>(ChromaBlocks()), picture.idctDepth, state_.chromaTable);
        }
    }

    void Write(uint32_t slice) {
        const PrxPictureContext& picture = setup_.pictures[0];
        const uint32_t row = slice / picture.layout.slicesPerRow;
        const uint32_t firstMb = slice % picture.layout.slicesPerRow * mbPerSlice;
        uint8_t* dst = picture.outBase + ptrdiff_t{16} * row * picture.rowBytes;
        const int32_t rows = std::min(16, picture.height - 16 * static_cast<int32_t>(row));
        for (uint32_t mb = 0; mb < mbPerSlice; ++mb)
            picture.converter.writer({samples_ + mb * BlocksPerMb() * 64, nullptr, 0,
                                      dst + size_t{firstMb + mb} * picture.converter.mbBytes,
                                      picture.rowBytes, rows},
                                     picture.writerSetup);
    }

    std::vector<StageCycles> least_; ///< of each pair of slices
    PrxFrameSetup setup_;
    int32_t frameSize_;
    PrxSliceState state_;
    std::array<PrxSliceHeader, 2> headers_;
    std::array<PrxSliceComponent, prxComponentsAtOnce> components_;
    alignas(64) int16_t coefficients_[2][mostBlocks * 64];
    alignas(64) int16_t samples_[mostBlocks * 64];
};

uint32_t FormatOf(const Material& material) { return material.profile.is444 ? prxFormatY416 : prxFormatV216; }

void Stages(benchmark::State& state, Material material) {
    const Picture picture(material.size, FormatOf(material), 0);
    const auto decoder = std::make_unique<StageDecoder>(*material.Packets()[0], *picture.Buffer());
    for (auto _ : state)
        if (!decoder->Decode()) return state.SkipWithError("refused");
    const StageCycles cycles = decoder->Cycles();
    state.counters["entropy_%"] = 100 * static_cast<double>(cycles.entropy) / cycles.All();
    state.counters["transform_%"] = 100 * static_cast<double>(cycles.transform) / cycles.All();
    state.counters["writing_%"] = 100 * static_cast<double>(cycles.writing) / cycles.All();
    const auto bits = static_cast<double>(cycles.codedBits);
    state.counters["cycles_per_bit"] = cycles.All() / bits;
    state.counters["entropy_cycles_per_bit"] = static_cast<double>(cycles.entropy) / bits;
}

/// A number of kB from the kernel's account of this process.
double StatusEntry(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double value = 0;
        if (word == name + ":" && status >> value) return value;
    }
    return 0;
}

/// What a decoder of one worker takes beside the packet and the picture, from its making to the end of a
/// frame. The first one in a process takes the constant tables, too.
void PeakMemory(benchmark::State& state, Material material) {
    const Picture picture(material.size, FormatOf(material), 0);
    const PrxPixelBuffer& buffer = *picture.Buffer();
    std::memset(buffer.baseAddress, 0,
                static_cast<size_t>(buffer.rowBytes) * static_cast<size_t>(buffer.height));
    const AVPacket& packet = *material.Packets()[0];
    for (auto _ : state) {
        std::ofstream("/proc/self/clear_refs") << "5"; // forgets the peak so far
        const double before = StatusEntry("VmRSS");
        const std::unique_ptr<PrxDecoderHandle, DeleteDecoder> decoder(PrxCreateDecoder(1, nullptr));
        if (PrxDecodeFrame(decoder.get(), packet.data, packet.size, &buffer, 0, 0) <= 0)
            state.SkipWithError("refused");
        state.counters["peak_kB"] = std::max(0.0, StatusEntry("VmHWM") - before);
    }
}

void RegisterAll() {
    for (const PeerProfile& profile : peerProfiles) {
        const std::string name = profile.name;
        benchmark::RegisterBenchmark(("prores/stages_" + name + "_1080").c_str(), Stages,
                                     Material{profile, sizes[0]})
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("prores/memory_" + name + "_2160").c_str(), PeakMemory,
                                     Material{profile, sizes[1]})
            ->Iterations(1);
    }
}

[[maybe_unused]] const bool registered = (RegisterAll(), true);

} // namespace
