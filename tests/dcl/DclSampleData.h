// Deterministic sample data of the kinds the codec meets: text, bitmaps,
// noise and long repeats.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace dcltest {

inline std::vector<uint8_t> RandomBytes(size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> data(size);
    for (uint8_t& byte : data) byte = static_cast<uint8_t>(random() >> 24);
    return data;
}

// Words of a small vocabulary with skewed frequencies, punctuation, line
// breaks and numbers, like captions, keyword lists and configuration text.
inline std::vector<uint8_t> TextLike(size_t size, uint32_t seed) {
    static const char* const kWords[] = {
        "the",     "of",     "and",       "a",        "to",      "in",      "is",       "picture",
        "gallery", "album",  "thumbnail", "browse",   "colour",  "palette", "window",   "control",
        "image",   "folder", "keyword",   "summer",   "holiday", "beach",   "mountain", "portrait",
        "family",  "camera", "exposure",  "aperture", "Lumbrel", "viewer",  "index",    "selection",
        "with",    "from",   "that",      "this",     "for",     "by",      "on",       "at",
    };
    constexpr size_t kWordCount = sizeof(kWords) / sizeof(kWords[0]);
    std::mt19937 random(seed);
    std::vector<uint8_t> data;
    data.reserve(size + 32);
    size_t lineLength = 0;
    while (data.size() < size) {
        // Squaring a uniform index favours the first words, as real text does.
        const uint32_t pick = random() % 1024;
        std::string word = kWords[(pick * pick / 1024) * kWordCount / 1024];
        if (random() % 11 == 0) word[0] = static_cast<char>(word[0] & ~0x20);
        if (random() % 17 == 0) word = std::to_string(random() % 10000);
        data.insert(data.end(), word.begin(), word.end());
        lineLength += word.size() + 1;
        const uint32_t separator = random() % 23;
        if (separator == 0) data.push_back(',');
        if (separator == 1) data.push_back('.');
        if (lineLength > 60 + random() % 20) {
            data.push_back('\r');
            data.push_back('\n');
            lineLength = 0;
        } else {
            data.push_back(' ');
        }
    }
    data.resize(size);
    return data;
}

// 24-bit rows of smooth gradients, flat areas and a little noise, like the
// pixel data of photographs and drawings.
inline std::vector<uint8_t> BitmapLike(size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> data;
    data.reserve(size + 3 * 512);
    constexpr unsigned kWidth = 512;
    unsigned row = 0;
    while (data.size() < size) {
        const bool flat = (row / 16) % 3 == 0;
        for (unsigned x = 0; x < kWidth; ++x) {
            const unsigned noise = flat ? 0 : (random() % 8 == 0 ? random() % 4 : 0);
            data.push_back(static_cast<uint8_t>(flat ? 0xF0 : (x / 4 + row + noise)));
            data.push_back(static_cast<uint8_t>(flat ? 0xE8 : (x / 2 + noise)));
            data.push_back(static_cast<uint8_t>(flat ? 0xD0 : (row * 2 + noise)));
        }
        ++row;
    }
    data.resize(size);
    return data;
}

// Long runs of single bytes and a short pattern repeated many times.
inline std::vector<uint8_t> HighlyRepetitive(size_t size) {
    std::vector<uint8_t> data;
    data.reserve(size);
    static const char kPattern[] = "AIAIAIAI-picture-";
    while (data.size() < size) {
        data.insert(data.end(), 3000, 'x');
        for (int i = 0; i < 200; ++i) data.insert(data.end(), kPattern, kPattern + sizeof(kPattern) - 1);
        data.insert(data.end(), 700, '\0');
    }
    data.resize(size);
    return data;
}

}  // namespace dcltest
