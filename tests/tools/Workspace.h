#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <vector>

/// What a program left behind.
struct ProgramRun {
    int status = -1; ///< exit status; 128 and the signal for one that was killed
    std::string out;
    std::string err;
};

/// A directory of its own for one test, removed with all that is in it. Programs run in it, so that files are
/// named without a directory.
class Workspace {
public:
    Workspace() {
        std::string name = (std::filesystem::temp_directory_path() / "corvexvf-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
        directory_ = name;
    }
    ~Workspace() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    std::string Path(const std::string& name) const { return (directory_ / name).string(); }

    /// Runs a line of the shell in the directory.
    ProgramRun Shell(const std::string& line) const {
        const std::string inside =
            "cd '" + directory_.string() + "' && (" + line + ") >.out 2>.err </dev/null";
        const int status = std::system(inside.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Read(".out"), Read(".err")};
    }

    bool Has(const std::string& name) const { return std::filesystem::exists(directory_ / name); }

    std::string Read(const std::string& name) const {
        std::ifstream file(directory_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::vector<uint8_t> ReadBytes(const std::string& name) const {
        const std::string text = Read(name);
        return {text.begin(), text.end()};
    }

    void Write(const std::string& name, const std::string& content) const {
        std::ofstream(directory_ / name, std::ios::binary) << content;
    }

private:
    std::filesystem::path directory_;
};
