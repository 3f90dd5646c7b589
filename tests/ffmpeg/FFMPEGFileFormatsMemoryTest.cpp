// Who owns what: frames and packets come and go in pairs, and want of memory leaves an object usable.

#include "ffmpeg/FormatTestSupport.h"
#include "support/HeapSpy.h"

#include <atomic>
#include <new>

namespace {

/// Counts the frames and packets that the module has from FFmpeg during its life.
class OwnedObjects {
public:
    OwnedObjects()
        : allocateFrame_(&FFmpegFunctions::av_frame_alloc, AllocateFrame),
          freeFrame_(&FFmpegFunctions::av_frame_free, FreeFrame),
          allocatePacket_(&FFmpegFunctions::av_packet_alloc, AllocatePacket),
          freePacket_(&FFmpegFunctions::av_packet_free, FreePacket) {
        frames = packets = framesMade = 0;
    }

    static inline int frames = 0;
    static inline int packets = 0;
    static inline int framesMade = 0;

private:
    static AVFrame* AllocateFrame() {
        ++frames;
        ++framesMade;
        return av_frame_alloc();
    }
    static void FreeFrame(AVFrame** frame) {
        if (*frame != nullptr) --frames;
        av_frame_free(frame);
    }
    static AVPacket* AllocatePacket() {
        ++packets;
        return av_packet_alloc();
    }
    static void FreePacket(AVPacket** packet) {
        if (*packet != nullptr) --packets;
        av_packet_free(packet);
    }

    ReplacedFunction<decltype(av_frame_alloc)> allocateFrame_;
    ReplacedFunction<decltype(av_frame_free)> freeFrame_;
    ReplacedFunction<decltype(av_packet_alloc)> allocatePacket_;
    ReplacedFunction<decltype(av_packet_free)> freePacket_;
};

class FFMPEGFileFormatsMemory : public testing::Test {
protected:
    const Workspace workspace;
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
};

TEST_F(FFMPEGFileFormatsMemory, FramesAndPacketsAreReleasedOnEveryPath) {
    const OwnedObjects owned;
    {
        LoadedFormat loaded(movie);
        const std::string words = WordsOf([&] {
            for (const uint32_t frame : {0U, 1U, 20U, 5U, 3U, 3U, 23U, 24U, 99U, 7U, 0U, 23U})
                loaded.Load(frame);
        });
        EXPECT_GT(OwnedObjects::framesMade, 40);
        EXPECT_EQ(OwnedObjects::packets, 0) << "none is kept from call to call";
    }
    EXPECT_EQ(OwnedObjects::frames, 0);
}

TEST_F(FFMPEGFileFormatsMemory, AFrameThatIsGivenIsReleasedAndThoseOfTheCacheAreKept) {
    LoadedFormat loaded(movie);
    const OwnedObjects owned;
    EXPECT_EQ(loaded.Load(0), 0);
    EXPECT_EQ(OwnedObjects::frames, 0);
    EXPECT_EQ(loaded.Load(7), 7);
    EXPECT_EQ(OwnedObjects::frames, 7);
    EXPECT_EQ(loaded.Load(3), 3) << "a hit";
    EXPECT_EQ(loaded.Load(3), 3) << "the same again";
    EXPECT_EQ(OwnedObjects::frames, 7);
    EXPECT_TRUE(loaded.format.CloseFile());
    EXPECT_EQ(OwnedObjects::frames, 0);
}

TEST_F(FFMPEGFileFormatsMemory, FramesThatDoNotMatchAreReleasedByTheNextSearch) {
    LoadedFormat loaded(movie);
    const OwnedObjects owned;
    const std::string words = WordsOf([&] {
        const ChangedPackets same([](AVPacket& packet) {
            packet.pts = packet.dts = 40;
            return 0;
        });
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(loaded.Load(9), -1);
    });
    EXPECT_LE(OwnedObjects::frames, 2 * 32);
    EXPECT_EQ(loaded.Load(0), 0);
    EXPECT_EQ(OwnedObjects::frames, 0);
}

TEST_F(FFMPEGFileFormatsMemory, FramesWithoutATimeAreReleasedAtOnce) {
    LoadedFormat loaded(movie);
    const OwnedObjects owned;
    const std::string words = WordsOf([&] {
        const ChangedPackets unknown([](AVPacket& packet) {
            packet.pts = packet.dts = AV_NOPTS_VALUE;
            return 0;
        });
        EXPECT_EQ(loaded.Load(9), -1);
    });
    EXPECT_GE(OwnedObjects::framesMade, 24);
    EXPECT_EQ(OwnedObjects::frames, 0);
}

TEST_F(FFMPEGFileFormatsMemory, WithoutMemoryForAPacketAFrameFails) {
    LoadedFormat loaded(movie);
    {
        const ReplacedFunction allocate(&FFmpegFunctions::av_packet_alloc,
                                        []() -> AVPacket* { return nullptr; });
        EXPECT_EQ(loaded.Load(4), -1);
    }
    EXPECT_EQ(loaded.Load(4), 4);
}

/// Runs a call with memory for no allocation, then for one, for two, until it has enough.
/// @return calls that had not enough
template <typename Call>
int Starve(const Call& call) {
    for (int allocations = 0;; ++allocations) {
        const HeapSpy spy(allocations);
        call();
        if (!spy.RanOut()) return allocations;
    }
}

TEST_F(FFMPEGFileFormatsMemory, AHeaderThatFindsTooLittleMemoryLeavesTheObjectUsable) {
    const char* const path = movie.c_str();
    std::vector<std::unique_ptr<LoadedFormat>> objects(200);
    for (auto& object : objects)
        object = std::make_unique<LoadedFormat>();
    size_t next = 0;
    const int starved = Starve([&] {
        LoadedFormat& loaded = *objects.at(next++);
        loaded.format.LoadHeaderTagList(path, loaded.tags);
    });
    EXPECT_GT(starved, 0);
    for (size_t i = 0; i < next; ++i) {
        EXPECT_TRUE(objects[i]->Open(movie));
        EXPECT_EQ(objects[i]->Load(6), 6);
    }
}

TEST_F(FFMPEGFileFormatsMemory, AFrameThatFindsTooLittleMemoryLeavesTheObjectUsable) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.avi", GreyTrack()));
    loaded.tags.Set(0x100000d0, 0, false);
    const ImagePtr image = MakeImage(64, 48);
    Image* target = image.get();
    EXPECT_EQ(loaded.Load(8), 8);
    bool isLoaded = false;
    const int starved = Starve([&] { isLoaded = loaded.format.LoadFrameTagList(9, target, loaded.tags); });
    EXPECT_GT(starved, 0);
    EXPECT_TRUE(isLoaded);
    EXPECT_EQ(FrameOfImage(*image), 9);
    for (const uint32_t frame : {10U, 3U, 9U})
        EXPECT_EQ(loaded.Load(frame), static_cast<int32_t>(frame));
}

/// Loads a frame with memory for so many allocations.
/// @return whether a packet was read in vain, which is lost to the decoder then
bool LosesAPacket(LoadedFormat& loaded, uint32_t frame, int allocations) {
    const ImagePtr image = MakeImage(64, 48);
    Image* target = image.get();
    const ChangedPackets read([](AVPacket&) { return 0; });
    const HeapSpy spy(allocations);
    const bool isLoaded = loaded.format.LoadFrameTagList(frame, target, loaded.tags);
    return !isLoaded && ChangedPackets::count > 0;
}

TEST_F(FFMPEGFileFormatsMemory, AFrameWhosePacketIsLostForWantOfMemoryIsSoughtAnew) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.avi", GreyTrack()));
    int losses = 0;
    for (int allocations = 0; allocations < 30; ++allocations) {
        EXPECT_EQ(loaded.Load(8), 8);
        const bool isLost = LosesAPacket(loaded, 9, allocations);
        losses += isLost ? 1 : 0;
        const SoughtPlaces sought;
        EXPECT_EQ(loaded.Load(9), 9) << allocations;
        if (isLost) {
            EXPECT_GE(SoughtPlaces::Count(), 1) << allocations;
        }
        EXPECT_EQ(loaded.Load(10), 10) << allocations;
    }
    EXPECT_GT(losses, 0);
}

} // namespace
