#pragma once

#include <memory>
#include <string>

/// A road to the frames of a movie of numbered pictures.
class MovieRoad {
public:
    static constexpr int noFrame = -1;    ///< the road gives no such frame
    static constexpr int unreadable = -2; ///< it gives one that has no number

    virtual ~MovieRoad() = default;
    /// Frames that the road tells of.
    virtual int FrameCount() = 0;
    /// The number in the picture that the road gives as frame `frame`.
    virtual int NumberOf(int frame) = 0;
};

/// The registry's decoder on the movie's track; null if no back-end takes it.
/// @throw ToolError  if the movie can't be read
std::unique_ptr<MovieRoad> OpenRegistryRoad(const std::string& path);

/// The format class that the host asks first for the file's extension; null if it can't load the header.
std::unique_ptr<MovieRoad> OpenFormatRoad(const std::string& path);
