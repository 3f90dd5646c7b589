#pragma once

#include "ffmpeg/accuracy/NumberedMovie.h"

#include <vector>

/// Movies whose track a back-end of the registry decodes. Both roads give every frame of these.
const std::vector<NumberedMovie>& RegistryMovies();

/// Movies whose codec the registry does not claim. The format class gives every frame.
const std::vector<NumberedMovie>& FormatMovies();

/// The movie of either list that has this name.
/// @throw std::out_of_range
NumberedMovie FindMovie(const std::string& name);
