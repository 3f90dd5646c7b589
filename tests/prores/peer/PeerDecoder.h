#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// FFmpeg's own decoder, against which the engine's pictures are held.

/// A frame as the peer decodes it: luma, Cb, Cr and, where there is one, alpha.
struct PeerFrame {
    struct Plane {
        int width = 0;
        int height = 0;
        std::vector<uint16_t> samples; ///< row by row
    };

    int width = 0;
    int height = 0;
    int depth = 0;           ///< bits of a sample
    int log2ChromaWidth = 0; ///< by which chroma planes are narrower
    std::vector<Plane> planes;

    bool HasAlpha() const { return planes.size() == 4; }
    int Sample(size_t plane, int x, int y) const {
        const Plane& from = planes[plane];
        return from
            .samples[static_cast<size_t>(y) * static_cast<size_t>(from.width) + static_cast<size_t>(x)];
    }
    /// Luma (0), Cb (1) or Cr (2) at a pixel, in codes of 10 bits; chroma at pixels that have a sample.
    double Code(size_t plane, int x, int y) const {
        const int shift = plane == 0 ? 0 : log2ChromaWidth;
        return Sample(plane, x >> shift, y) / static_cast<double>(1 << (depth - 10));
    }
};

/// A packet and its picture.
struct PeerPacket {
    std::vector<uint8_t> data;
    PeerFrame frame;
};

/// Reads a movie's packets and decodes each. Throws `std::runtime_error` if the peer fails.
std::vector<PeerPacket> DecodeByPeer(const std::string& path);

/// Decodes a single frame of a track with this FourCC. Throws `std::runtime_error` if the peer fails or has a
/// word of error about it.
PeerFrame DecodeFrameByPeer(std::span<const uint8_t> frame, uint32_t fourCC);
