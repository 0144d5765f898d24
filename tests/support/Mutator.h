// Damaged variants of a file, for bounded mutation runs: one to three damages
// of the kinds files suffer (flipped bits, bytes set to boundary values, cut
// ends, inserted and removed runs, length fields set to boundary values).
// Deterministic for a given generator state, so a run sees the same variants
// every time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace mutation {

using Bytes = std::vector<uint8_t>;

// What a format's fields look like, so that the damages hit them.
struct Profile {
    // Values written over a 32-bit field.
    std::vector<uint32_t> boundaryWords;
    // Whether fields sit on even offsets (metafile records) or anywhere.
    bool evenOffsets;
    // The last kind of damage: a 0xFF marker byte followed by a random byte
    // (segment and chunk markers of JPEG, PNG and TIFF), or a small 16-bit
    // word at an even offset (counts and object indices of metafiles).
    enum class Marker { BigEndianMarker, SmallWord } lastDamage;
};

// Pictures of every format: markers anywhere.
inline Profile PictureProfile() {
    return {{0x7FFFFFFFu, 0xFFFFFFFFu, 0x00010000u, 0x80000000u, 0x4000u},
            false,
            Profile::Marker::BigEndianMarker};
}

// Word-aligned records (.thm files, metafiles): small counts and indices.
inline Profile RecordProfile() {
    return {{0x7FFFFFFFu, 0xFFFFFFFFu, 0x00010000u, 0x80000000u, 0x4000u, 0, 1, 2},
            true,
            Profile::Marker::SmallWord};
}

inline Bytes Mutate(const Bytes& seed, std::mt19937& random, const Profile& profile) {
    Bytes b = seed;
    const int damages = 1 + static_cast<int>(random() % 3);
    for (int d = 0; d < damages && !b.empty(); ++d) {
        const size_t at = random() % b.size();
        const size_t field = profile.evenOffsets ? (at & ~static_cast<size_t>(1)) : at;
        switch (random() % 7) {
            case 0:
                for (uint32_t i = random() % 4 + 1; i > 0; --i)
                    b[random() % b.size()] ^= static_cast<uint8_t>(1u << (random() % 8));
                break;
            case 1: {
                static const uint8_t values[] = {0x00, 0xFF, 0x7F, 0x80, 0x01, 0xFE};
                b[at] = values[random() % 6];
                break;
            }
            case 2: b.resize(at); break;
            case 3: {
                Bytes run(1 + random() % 16);
                for (uint8_t& x : run) x = static_cast<uint8_t>(random());
                b.insert(b.begin() + static_cast<std::ptrdiff_t>(at), run.begin(), run.end());
                break;
            }
            case 4: {
                const size_t count = std::min<size_t>(1 + random() % 16, b.size() - at);
                b.erase(b.begin() + static_cast<std::ptrdiff_t>(at),
                        b.begin() + static_cast<std::ptrdiff_t>(at + count));
                break;
            }
            case 5: {
                const uint32_t word = profile.boundaryWords[random() % profile.boundaryWords.size()];
                if (field + 4 <= b.size()) std::memcpy(b.data() + field, &word, 4);
                break;
            }
            default:
                if (profile.lastDamage == Profile::Marker::BigEndianMarker) {
                    if (at + 2 <= b.size()) {
                        b[at] = 0xFF;
                        b[at + 1] = static_cast<uint8_t>(random());
                    }
                } else {
                    const uint16_t word = static_cast<uint16_t>(random() % 64);
                    if (field + 2 <= b.size()) std::memcpy(b.data() + field, &word, 2);
                }
                break;
        }
    }
    return b;
}

}  // namespace mutation
