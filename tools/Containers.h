#pragma once

#include <string>
#include <vector>

/// A container in which FFmpeg saves movies.
struct Container {
    std::string name;                    ///< as the control of the host format has it
    std::vector<std::string> extensions; ///< of its files, each with its dot; none if it has no usual ones
    std::vector<std::string> encoders;   ///< labels of those whose streams it holds, in order
    bool isOneFile = true;               ///< else its muxer makes several files, or sends them somewhere
};

/// The containers of the FFmpeg in hand, by name. None if it is missing.
std::vector<Container> SaveContainers();

/// @throw ToolError  `Usage` if there is no such container or it has no such encoder, naming those that there
///                   are; `Unsupported` if it is not one file, or FFmpeg is missing
void CheckContainer(const std::string& container, const std::string& encoder);
