// A fresh directory for one test, removed with everything in it afterwards.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace testsupport {

class TempDir {
public:
    TempDir() {
        std::random_device seed;
        std::mt19937_64 random(seed());
        path_ = std::filesystem::temp_directory_path() / ("lumbrel-test-" + std::to_string(random()));
        std::filesystem::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

    std::string Write(const std::string& name, const std::vector<uint8_t>& bytes) const {
        std::string path = File(name);
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path;
    }

private:
    std::filesystem::path path_;
};

}  // namespace testsupport
