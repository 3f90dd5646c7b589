#pragma once

struct DNXFrameInformation;
class Image;

/// Writes what is known of a frame into the image's table "Metadata". Throws std::bad_alloc.
void WriteDNXMetadata(const DNXFrameInformation& information, Image& image);
