#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A file that is written as PATH.part and gets its name when it is whole. Keeps the first error of the disk,
/// so that it can be told even where a library in between has swallowed it.
class OutputFile {
public:
    /// Creates PATH.part, in place of one left behind.
    /// @throw ToolError  `CannotWrite`
    explicit OutputFile(const std::string& path);
    /// Without a `Commit` that returned, removes PATH.part and leaves PATH as it was.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& Path() const { return path; }
    /// PATH.part, for who writes the file by its name.
    const std::string& PartPath() const { return partPath; }
    /// `errno` of the first call that failed; 0 if none has.
    int Error() const { return error; }
    /// Writes at the present place; false on an error.
    bool Write(const uint8_t* data, size_t size);
    /// As `lseek`: the new place in bytes, or -1.
    int64_t Seek(int64_t offset, int whence);
    /// Bytes of the file, or -1.
    int64_t Size();
    /// @throw ToolError  `CannotWrite` if a call has failed
    void Check() const;
    /// Writes some more behind the file's end and takes it away again. A disk that was full for who wrote the
    /// file by its name is so still.
    /// @throw ToolError  `CannotWrite` if that fails
    void CheckRoom();
    /// Brings the file to the disk and gives it its name, in place of one that is there.
    /// @throw ToolError  `CannotWrite`
    void Commit();

private:
    bool Note(bool done);
    void Require(bool done);

    std::string path;
    std::string partPath;
    int file = -1;
    int error = 0;
    bool isCommitted = false;
};
