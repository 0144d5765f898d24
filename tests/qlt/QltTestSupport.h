// Shared helpers of the writer and qlt tests: sample data, files in a
// per-test folder, and running qlt's commands in-process.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "containers/writer/ArtContainerWriter.h"
#include "support/TempDir.h"
#include "tools/qlt/QltCommands.h"

namespace qlttest {

inline std::vector<uint8_t> Bytes(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

// Text that compresses well, as picture files of vector formats do.
inline std::vector<uint8_t> TextData(size_t size, unsigned int seed = 1) {
    static const char* const kWords[] = {"MoveTo ",   "LineTo ", "Polygon ", "SetBkColor ",
                                         "0x00FF00 ", "128 ",    "\r\n"};
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < size) text += kWords[random() % 7];
    text.resize(size);
    return Bytes(text);
}

// Bytes that don't compress.
inline std::vector<uint8_t> RandomData(size_t size, unsigned int seed = 7) {
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

inline std::vector<uint8_t> ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::string ReadText(const std::string& path) {
    const std::vector<uint8_t> bytes = ReadFile(path);
    return std::string(bytes.begin(), bytes.end());
}

inline void WriteText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

// Builds the writer's container and writes it to `path`, failing the test if
// that doesn't work.
inline std::string WriteContainer(const containers::ArtContainerWriter& writer, const std::string& path,
                                  containers::ArtLayoutInfo* layout = nullptr) {
    std::vector<uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(writer.Build(bytes, error, layout)) << error;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
}

struct RunResult {
    int status = -1;
    std::string out;
    std::string err;
};

inline RunResult RunQlt(const std::vector<std::string>& args) {
    std::ostringstream out;
    std::ostringstream err;
    RunResult result;
    result.status = qlt::RunQlt(args, out, err);
    result.out = out.str();
    result.err = err.str();
    return result;
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

inline int32_t LongAt(const std::vector<uint8_t>& bytes, int64_t offset) {
    return containers::LoadLong(bytes.data() + offset);
}

inline void PutLong(std::vector<uint8_t>& bytes, int64_t offset, int32_t value) {
    containers::StoreLong(bytes.data() + offset, value);
}

}  // namespace qlttest
