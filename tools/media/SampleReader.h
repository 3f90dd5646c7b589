#pragma once

#include "media/Demuxer.h"
#include "media/FrameTable.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Gives the packets of a track in any order. Holds one packet at a time.
///
/// Packets in order are just read. For any other the file is sought by time and read forward to the packet,
/// which is told by its place in the file, size and decode time; where a container misses, the reader tries
/// the key sample, and then reads the file from its start.
class SampleReader {
public:
    /// @param table  of the same file; must outlive the reader
    SampleReader(std::string path, std::unique_ptr<Demuxer> demuxer, const FrameTable& table);

    /// @return the packet of a sample, valid until the next call; null if there is none, or the file can't be
    ///         read there or is no longer the one of the table
    AVPacket* Read(int32_t sample);

private:
    bool ReadFrom(int64_t ticks, int32_t sample);
    bool ReadFromStart(int32_t sample);
    bool ReadForwardTo(int32_t sample);
    bool IsSample(int32_t sample) const;
    int32_t Identify() const;

    std::string path;
    std::unique_ptr<Demuxer> demuxer; ///< null once the file could not be opened again
    const FrameTable& table;
    std::vector<std::pair<int64_t, int32_t>> byPosition; ///< place in the file and sample, sorted
    AvPacket packet = NewPacket();
    int32_t held = -1; ///< sample in `packet`; -1 none
    int32_t next = -1; ///< sample that the demuxer gives next; -1 not known
};
