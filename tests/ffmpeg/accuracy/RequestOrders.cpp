#include "ffmpeg/accuracy/RequestOrders.h"

#include <numeric>

namespace {

constexpr int randomRequests = 40;
constexpr int repeatedFrames = 8;
constexpr int mostWrongFrames = 12;

std::vector<int> RandomFrames(int frameCount, int count, std::mt19937& random) {
    std::uniform_int_distribution<int> anyFrame(0, frameCount - 1);
    std::vector<int> frames(count);
    for (int& frame : frames)
        frame = anyFrame(random);
    return frames;
}

std::vector<int> Repeated(int frameCount, std::mt19937& random) {
    std::vector<int> frames;
    for (const int frame : RandomFrames(frameCount, repeatedFrames, random)) {
        const int neighbour = frame + 1 < frameCount ? frame + 1 : frame - 1;
        frames.insert(frames.end(), {frame, frame, neighbour, frame, neighbour, neighbour});
    }
    return frames;
}

std::string AnswerText(int number) {
    if (number == MovieRoad::noFrame) return "none";
    return number == MovieRoad::unreadable ? "no number" : std::to_string(number);
}

} // namespace

std::vector<RequestOrder> RequestOrders(int frameCount, std::mt19937& random) {
    std::vector<int> forward(frameCount);
    std::iota(forward.begin(), forward.end(), 0);
    return {{"forward", forward},
            {"backward", {forward.rbegin(), forward.rend()}},
            {"random", RandomFrames(frameCount, randomRequests, random)},
            {"repeated", Repeated(frameCount, random)}};
}

std::string WrongFrames(MovieRoad& road, const RequestOrder& order, int firstNumber) {
    std::string wrong;
    int count = 0;
    for (const int frame : order.frames) {
        const int number = road.NumberOf(frame);
        if (number == firstNumber + frame) continue;
        if (++count <= mostWrongFrames)
            wrong += " " + std::to_string(frame) + " gave " + AnswerText(number) + ",";
    }
    return count == 0 ? "" : order.name + ": " + std::to_string(count) + " wrong:" + wrong;
}
