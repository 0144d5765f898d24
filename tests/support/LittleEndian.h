// Little-endian fields written into a file the test has already laid out,
// for tests that build or damage a binary format by hand. The caller keeps
// `at` inside the bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace testsupport {

inline void Set16(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    b[at] = static_cast<uint8_t>(v);
    b[at + 1] = static_cast<uint8_t>(v >> 8);
}

inline void Set32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    Set16(b, at, v & 0xFFFF);
    Set16(b, at + 2, v >> 16);
}

}  // namespace testsupport
