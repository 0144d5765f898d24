// Puts fuzz input into a file, since the container reader reads files.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

inline std::string WriteFuzzFile(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/lumbrel-fuzz-" + std::to_string(getpid()) + ".qlt";
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return path;
    if (size != 0) std::fwrite(data, 1, size, file);
    std::fclose(file);
    return path;
}
