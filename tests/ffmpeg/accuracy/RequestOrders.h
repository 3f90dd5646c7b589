#pragma once

#include "ffmpeg/accuracy/MovieRoad.h"

#include <random>
#include <string>
#include <vector>

/// The order in which frames are asked for.
struct RequestOrder {
    std::string name;
    std::vector<int> frames;
};

/// Orders for a movie of so many frames: forward, backward, random, and with frames asked again, at once and
/// after a neighbour.
std::vector<RequestOrder> RequestOrders(int frameCount, std::mt19937& random);

/// Asks for frames in an order, where frame 0 has the number `firstNumber` and each further one the next.
/// @return what is wrong, or an empty text
std::string WrongFrames(MovieRoad& road, const RequestOrder& order, int firstNumber);
