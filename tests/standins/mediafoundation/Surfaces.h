#pragma once

#include "standins/mediafoundation/Peer.h"

/// A picture as the decoder gives it: its size in whole macroblocks, filled by repeating the last column and
/// row.
PeerPicture SurfaceOf(const PeerPicture& picture);
/// The bytes of a picture in YUY2, each row of chroma standing twice.
Bytes YUY2Of(const PeerPicture& picture);
/// What a decoder is to give for pictures, in YUY2.
std::vector<Bytes> SurfacesOf(const std::vector<PeerPicture>& pictures);
