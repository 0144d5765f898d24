// A read-only binary file, opened so that other processes may keep the same
// file open for reading and writing. Seeks and reads throw FileException on a
// platform failure; a read at or past the end of the file is not a failure but
// returns fewer bytes, as callers of this layer expect.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace framework {

class FileException : public std::runtime_error {
public:
    explicit FileException(const std::string& message) : std::runtime_error(message) {}
};

class File {
public:
    File() = default;
    ~File();
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Opens for reading, sharing read and write access with others. On failure
    // returns false and puts the system's own text for the failure in `error`.
    bool OpenForReading(const std::string& path, std::string& error);
    bool IsOpen() const;
    void Close();

    // Moves to `offset` bytes from the start. A negative offset throws; an
    // offset beyond the end is allowed and later reads return nothing.
    void SeekFromStart(int64_t offset);
    // Reads up to `count` bytes; returns how many were read.
    size_t Read(void* buffer, size_t count);
    int64_t Position() const;
    int64_t Length() const;

private:
#ifdef _WIN32
    void* handle_ = nullptr;
#else
    int fd_ = -1;
#endif
    int64_t position_ = 0;
};

}  // namespace framework
