#include "ffmpeg/accuracy/MovieList.h"

#include <stdexcept>
#include <utility>

namespace {

constexpr PictureRate r12_5{25, 2};
constexpr PictureRate r23_976{24000, 1001};
constexpr PictureRate r25{25, 1};
constexpr PictureRate r29_97{30000, 1001};
constexpr PictureRate r59_94{60000, 1001};

constexpr PictureSize pal{720, 576};
constexpr PictureSize ntsc{720, 480};

// Groups of 12 pictures. The scene cuts are off, as every picture of these movies looks like one.
const std::string h264 = "-c:v libx264 -preset veryfast -threads 1 -g 12 -x264-params scenecut=0:b-adapt=0:";
const std::string h264Closed = h264 + "open-gop=0:bframes=2:b-pyramid=none";
const std::string h264Open = h264 + "open-gop=1:bframes=3:b-pyramid=none";
const std::string h264Pyramid = h264 + "open-gop=0:bframes=7:b-pyramid=normal:ref=4";
const std::string h264Fields = h264 + "open-gop=0:bframes=2:tff=1";
const std::string h264Plain = h264 + "bframes=0";
const std::string h264Long = "-c:v libx264 -preset veryfast -threads 1 -g 250";

const std::string hevc =
    "-c:v libx265 -preset ultrafast -tag:v hvc1 -x265-params "
    "log-level=none:pools=1:frame-threads=1:scenecut=0:b-adapt=0:bframes=4:keyint=12:min-keyint=12:";
const std::string hevcClosed = hevc + "open-gop=0";
const std::string hevcOpen = hevc + "open-gop=1";

const std::string mpeg2 = "-c:v mpeg2video -threads 1 -q:v 3 -g 12 -bf 2 -sc_threshold 1000000000";
const std::string mpeg2Closed = mpeg2 + " -flags +cgop";
const std::string mpeg2Fields = mpeg2 + " -flags +ildct+ilme -top 1";
const std::string mpeg4 = "-c:v mpeg4 -threads 1 -q:v 3 -g 12 -bf 2";

// Packets that hold a hidden picture beside the shown one.
const std::string vp9 = "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -threads 1 -g 15 -b:v 500k";
const std::string vp9Alternate =
    "-c:v libvpx-vp9 -deadline good -cpu-used 5 -threads 1 -g 30 -b:v 500k -auto-alt-ref 1 -lag-in-frames 16";

const std::string mjpeg = "-c:v mjpeg -q:v 3 -pix_fmt yuvj420p";
const std::string dv = "-c:v dvvideo";
const std::string dvNtsc = "-c:v dvvideo -pix_fmt yuv411p";
const std::string prores = "-c:v prores_ks";
const std::string ffv1 = "-c:v ffv1";
const std::string ffv1Groups = "-c:v ffv1 -context 1 -g 10";
const std::string gif = "-pix_fmt gray";

/// A movie of one track, by the encoder's and the muxer's options.
NumberedMovie Movie(std::string name, const std::string& file, PictureRate rate, const std::string& options) {
    return {std::move(name), file, rate, "$make $pictures " + options + " " + file};
}

/// The track of sound comes first in the file.
NumberedMovie AfterSound(std::string name, const std::string& file, PictureRate rate,
                         const std::string& options) {
    return {std::move(name), file, rate, "$make $sound $pictures -map 0 -map 1 " + options + " " + file};
}

/// Written to a pipe, so that the muxer can't go back and put lengths into the header.
NumberedMovie Piped(std::string name, const std::string& file, PictureRate rate, const std::string& options) {
    return {std::move(name), file, rate, "$make $pictures " + options + " pipe: | cat >" + file};
}

NumberedMovie Interlaced(NumberedMovie movie) {
    movie.isInterlaced = true;
    return movie;
}

NumberedMovie Sized(NumberedMovie movie, PictureSize size, int pictureCount) {
    movie.size = size;
    movie.pictureCount = pictureCount;
    return movie;
}

/// The first 25 pictures are cut off without encoding anew, so that an edit list hides what comes between the
/// last key picture and the cut.
/// @param listed  pictures that the file has, the hidden ones included
NumberedMovie Trimmed(std::string name, const std::string& options, int listed) {
    NumberedMovie movie{std::move(name), "movie.mp4", r25,
                        "$make $pictures " + options +
                            " whole.mp4\n"
                            "$make -ss 1 -i whole.mp4 -c copy movie.mp4"};
    movie.firstNumber = 25;
    movie.toldCount = listed;
    return movie;
}

std::vector<NumberedMovie> H264Movies() {
    return {
        Movie("H264ClosedMp4At23_976", "movie.mp4", r23_976, h264Closed),
        Movie("H264OpenMp4At25", "movie.mp4", r25, h264Open),
        Movie("H264ClosedMp4At12_5", "movie.mp4", r12_5, h264Closed),
        Movie("H264PyramidMovAt29_97", "movie.mov", r29_97, h264Pyramid),
        Movie("H264OpenMkvAt23_976", "movie.mkv", r23_976, h264Open),
        Movie("H264PyramidMkvAt59_94", "movie.mkv", r59_94, h264Pyramid),
        Movie("H264PyramidMtsAt25", "movie.mts", r25, h264Pyramid),
        Movie("H264OpenMtsAt29_97", "movie.mts", r29_97, h264Open),
        Movie("H264ClosedM2tsAt59_94", "movie.m2ts", r59_94, h264Closed),
        Movie("H264ClosedFlvAt29_97", "movie.flv", r29_97, h264Closed),
        Movie("H264OpenFlvAt23_976", "movie.flv", r23_976, h264Open),
        Sized(Movie("H264LongGroupMp4At25", "movie.mp4", r25, h264Long), {}, 100),
        Sized(Movie("H264LongGroupMtsAt23_976", "movie.mts", r23_976, h264Long), {}, 100),
        Interlaced(Movie("H264FieldsMovAt25", "movie.mov", r25, h264Fields)),
        Interlaced(Movie("H264FieldsMp4At29_97", "movie.mp4", r29_97, h264Fields)),
        Interlaced(Movie("H264FieldsMtsAt25", "movie.mts", r25, h264Fields)),
        Movie("H264StartsAt10sMp4", "movie.mp4", r25, h264Closed + " -output_ts_offset 10"),
        Movie("H264StartsAt5sMkv", "movie.mkv", r59_94, h264Open + " -output_ts_offset 5"),
        Movie("H264FragmentedMp4", "movie.mp4", r25, h264Pyramid + " -movflags frag_keyframe+empty_moov"),
        AfterSound("H264AfterSoundFragmentedMp4", "movie.mp4", r29_97,
                   h264Closed + " -c:a aac -movflags frag_keyframe+empty_moov"),
        AfterSound("H264AfterSoundMov", "movie.mov", r29_97, h264Pyramid + " -c:a pcm_s16le"),
        AfterSound("H264AfterSoundMts", "movie.mts", r25, h264Open + " -c:a mp2"),
        AfterSound("H264AfterSoundFlv", "movie.flv", r12_5, h264Closed + " -c:a libmp3lame -ar 44100"),
        Piped("H264PipedMkvAt29_97", "movie.mkv", r29_97, h264Open + " -f matroska"),
        Piped("H264PipedFlvAt25", "movie.flv", r25, h264Pyramid + " -f flv"),
        Trimmed("H264ClosedTrimmedMp4", h264Closed, 36),
        Trimmed("H264OpenTrimmedMp4", h264Open, 39),
    };
}

std::vector<NumberedMovie> GroupMovies() {
    return {
        Movie("HevcClosedMp4At25", "movie.mp4", r25, hevcClosed),
        Movie("HevcOpenMovAt29_97", "movie.mov", r29_97, hevcOpen),
        Movie("HevcOpenMkvAt59_94", "movie.mkv", r59_94, hevcOpen),
        Movie("HevcOpenMtsAt25", "movie.mts", r25, hevcOpen),
        Movie("HevcClosedM2tsAt23_976", "movie.m2ts", r23_976, hevcClosed),
        Movie("Mpeg2OpenMovAt29_97", "movie.mov", r29_97, mpeg2),
        Movie("Mpeg2ClosedMp4At23_976", "movie.mp4", r23_976, mpeg2Closed),
        Movie("Mpeg2OpenMkvAt25", "movie.mkv", r25, mpeg2),
        Movie("Mpeg2OpenM2tsAt29_97", "movie.m2ts", r29_97, mpeg2),
        Interlaced(Movie("Mpeg2FieldsMtsAt25", "movie.mts", r25, mpeg2Fields)),
        Movie("Mpeg4Mp4At25", "movie.mp4", r25, mpeg4),
        Movie("Mpeg4MovAt59_94", "movie.mov", r59_94, mpeg4),
        Movie("Mpeg4MkvAt12_5", "movie.mkv", r12_5, mpeg4),
        Movie("Mpeg4AviAt23_976", "movie.avi", r23_976, mpeg4),
        Movie("Mpeg2OpenAviAt25", "movie.avi", r25, mpeg2),
        AfterSound("Mpeg4AfterSoundAvi", "movie.avi", r59_94, mpeg4 + " -c:a pcm_s16le"),
        Movie("H264PlainAviAt25", "movie.avi", r25, h264Plain),
        Movie("H264ClosedAviAt29_97", "movie.avi", r29_97, h264Closed),
        Movie("H264PyramidAviAt25", "movie.avi", r25, h264Pyramid),
        Movie("Vp9WebmAt25", "movie.webm", r25, vp9),
        Movie("Vp9AlternateWebmAt59_94", "movie.webm", r59_94, vp9Alternate),
        Movie("Vp9Mp4At29_97", "movie.mp4", r29_97, vp9),
        Piped("Vp9PipedWebmAt23_976", "movie.webm", r23_976, vp9 + " -f webm"),
    };
}

std::vector<NumberedMovie> PictureMovies() {
    return {
        Movie("MjpegMovAt25", "movie.mov", r25, mjpeg),
        Movie("MjpegAviAt29_97", "movie.avi", r29_97, mjpeg),
        AfterSound("MjpegAfterSoundAvi", "movie.avi", r12_5, mjpeg + " -c:a pcm_s16le"),
        Sized(Movie("DvAviAt25", "movie.avi", r25, dv), pal, 12),
        Sized(Movie("DvMovAt29_97", "movie.mov", r29_97, dvNtsc), ntsc, 12),
        Sized(Movie("DvMkvAt25", "movie.mkv", r25, dv), pal, 12),
        Movie("ProResMovAt23_976", "movie.mov", r23_976, prores),
        Movie("ProResMkvAt59_94", "movie.mkv", r59_94, prores),
    };
}

/// FFmpeg decodes these, but they have no code in the table of the registry's back-end.
std::vector<NumberedMovie> UnclaimedMovies() {
    return {
        Movie("Ffv1MkvAt25", "movie.mkv", r25, ffv1),
        Movie("Ffv1GroupsAviAt29_97", "movie.avi", r29_97, ffv1Groups),
        Movie("Ffv1GroupsMkvAt59_94", "movie.mkv", r59_94, ffv1Groups),
        Movie("GifAt12_5", "movie.gif", r12_5, gif),
        Movie("GifAt25", "movie.gif", r25, gif),
        Movie("GifAt23_976", "movie.gif", r23_976, gif),
    };
}

std::vector<NumberedMovie> ClaimedMovies() {
    std::vector<NumberedMovie> all = H264Movies();
    for (const auto& movies : {GroupMovies(), PictureMovies()})
        all.insert(all.end(), movies.begin(), movies.end());
    return all;
}

} // namespace

const std::vector<NumberedMovie>& RegistryMovies() {
    static const std::vector<NumberedMovie> movies = ClaimedMovies();
    return movies;
}

const std::vector<NumberedMovie>& FormatMovies() {
    static const std::vector<NumberedMovie> movies = UnclaimedMovies();
    return movies;
}

NumberedMovie FindMovie(const std::string& name) {
    for (const auto* movies : {&RegistryMovies(), &FormatMovies()})
        for (const NumberedMovie& movie : *movies)
            if (movie.name == name) return movie;
    throw std::out_of_range("no movie " + name);
}
