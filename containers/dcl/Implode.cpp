#include <cstddef>
#include <cstdint>
#include <cstring>

#include "containers/dcl/Dcl.h"
#include "containers/dcl/DclTables.h"

namespace dcl {

namespace {

using detail::kDistanceCodeBits;
using detail::kDistanceCodes;
using detail::kEndLength;
using detail::kLengthEncode;
using detail::kLiteralCodeBits;
using detail::kLiteralCodes;
using detail::kMaxDistance;
using detail::kMaxMatch;
using detail::kMinMatch;

// The window keeps a full dictionary of history behind the position; once the
// position passes kSlideAt, everything moves down by kMaxDistance.
constexpr int kSlideAt = 2 * kMaxDistance;
constexpr int kWindowSize = kSlideAt + 640;
// A match of full length at the position and at the next one, for the lazy step.
constexpr int kLookahead = kMaxMatch + 1;
static_assert(kWindowSize - kLookahead >= kSlideAt, "a full window must be ready to slide");
// Match comparison reads 8 bytes at a time and may look past the data.
constexpr unsigned kCompareSlack = 8;

constexpr unsigned kHashBits = 12;
constexpr unsigned kPairHashBits = 12;
constexpr unsigned kChainMask = kMaxDistance - 1;
constexpr unsigned kOutputChunk = 2048;

// Search effort: chain links followed per position, the length that ends the
// search at once, and the length from which the next position is not tried.
constexpr unsigned kMaxChain = 128;
constexpr unsigned kNiceLength = 128;
constexpr unsigned kLazyLimit = 32;

struct ImplodeState {
    // Positions of the latest three-byte sequences by hash, and for each
    // position (modulo the largest dictionary) the previous one with the same
    // hash. Entry 0 doubles as "none": any candidate is checked byte by byte.
    uint16_t head[1u << kHashBits];
    uint16_t chain[kMaxDistance];
    // The latest position of each byte pair, for two-byte matches, which the
    // three-byte hash cannot find.
    uint16_t pairHead[1u << kPairHashBits];
    uint8_t window[kWindowSize + kCompareSlack];
    uint8_t output[kOutputChunk + 8];
};

struct Match {
    unsigned length;
    unsigned distance;
};

inline uint32_t Hash3(const uint8_t* p) {
    const uint32_t value =
        static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16;
    return (value * 2654435761u) >> (32 - kHashBits);
}

inline uint32_t Hash2(const uint8_t* p) {
    const uint32_t value = static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8;
    return (value * 2654435761u) >> (32 - kPairHashBits);
}

inline unsigned MatchLength(const uint8_t* a, const uint8_t* b, unsigned limit) {
    unsigned length = 0;
    while (length < limit) {
        const uint64_t difference =
            detail::LoadLittleEndian64(a + length) ^ detail::LoadLittleEndian64(b + length);
        if (difference != 0) {
            length += static_cast<unsigned>(__builtin_ctzll(difference)) >> 3;
            return length < limit ? length : limit;
        }
        length += 8;
    }
    return limit;
}

class Compressor {
public:
    Compressor(ImplodeState& state, ReadCallback read, WriteCallback write, void* param, bool ascii,
               unsigned dictionaryBits)
        : state_(state),
          read_(read),
          write_(write),
          param_(param),
          ascii_(ascii),
          dictionaryBits_(dictionaryBits),
          maxDistance_(1u << (dictionaryBits + 6)) {}

    void Run();

private:
    void Insert(int position) {
        const uint8_t* at = state_.window + position;
        const uint32_t hash = Hash3(at);
        state_.chain[static_cast<unsigned>(position) & kChainMask] = state_.head[hash];
        state_.head[hash] = static_cast<uint16_t>(position);
        state_.pairHead[Hash2(at)] = static_cast<uint16_t>(position);
    }

    Match FindMatch(int position, unsigned maxLength);
    bool Pays(const Match& match, int position) const;
    void Slide(int& position, int& end);
    void Fill(int& end);

    void Put(uint32_t value, unsigned count) {
        bits_ |= static_cast<uint64_t>(value) << bitCount_;
        bitCount_ += count;
        if (bitCount_ >= 32) {
            uint8_t* out = state_.output + used_;
            for (int i = 0; i < 4; ++i) out[i] = static_cast<uint8_t>(bits_ >> (8 * i));
            used_ += 4;
            bits_ >>= 32;
            bitCount_ -= 32;
            if (used_ >= kOutputChunk) FlushChunk();
        }
    }
    void PutLiteral(uint8_t byte) {
        if (ascii_)
            Put(static_cast<uint32_t>(kLiteralCodes[byte]) << 1, 1u + kLiteralCodeBits[byte]);
        else
            Put(static_cast<uint32_t>(byte) << 1, 9);
    }
    void PutMatch(const Match& match) {
        const detail::LengthEncodeEntry& length = kLengthEncode[match.length];
        const unsigned lowBits = match.length == kMinMatch ? detail::kLowBitsForShortMatch : dictionaryBits_;
        const unsigned distance = match.distance - 1;
        const unsigned high = distance >> lowBits;
        const uint32_t low = distance & ((1u << lowBits) - 1);
        const uint32_t distanceValue = kDistanceCodes[high] | low << kDistanceCodeBits[high];
        Put(length.value | distanceValue << length.bits, length.bits + kDistanceCodeBits[high] + lowBits);
    }
    void FlushChunk();
    void Finish();

    ImplodeState& state_;
    ReadCallback read_;
    WriteCallback write_;
    void* param_;
    const bool ascii_;
    const unsigned dictionaryBits_;
    const unsigned maxDistance_;
    bool inputEnded_ = false;

    uint64_t bits_ = 0;
    unsigned bitCount_ = 0;
    unsigned used_ = 0;
};

Match Compressor::FindMatch(int position, unsigned maxLength) {
    const uint8_t* const window = state_.window;
    const uint8_t* const current = window + position;
    const uint32_t hash = Hash3(current);
    int candidate = state_.head[hash];
    state_.chain[static_cast<unsigned>(position) & kChainMask] = static_cast<uint16_t>(candidate);
    state_.head[hash] = static_cast<uint16_t>(position);
    const uint32_t pairHash = Hash2(current);
    const int pairCandidate = state_.pairHead[pairHash];
    state_.pairHead[pairHash] = static_cast<uint16_t>(position);

    Match best{0, 0};
    if (maxLength < kMinMatch) return best;
    const int lowest = position - static_cast<int>(maxDistance_);
    const unsigned nice = maxLength < kNiceLength ? maxLength : kNiceLength;
    // Chain matches must beat two bytes: a two-byte match further back than
    // 256 cannot be coded, and a near one is the pair table's business.
    unsigned bestLength = kMinMatch;
    for (unsigned depth = kMaxChain; candidate < position && candidate >= lowest;) {
        const uint8_t* const at = window + candidate;
        if (at[bestLength] == current[bestLength] && at[0] == current[0] && at[1] == current[1]) {
            const unsigned length = MatchLength(at, current, maxLength);
            if (length > bestLength) {
                bestLength = length;
                best = {length, static_cast<unsigned>(position - candidate)};
                if (length >= nice) break;
            }
        }
        if (--depth == 0) break;
        // Links that do not lead further back are stale: the slot was reused.
        const int next = state_.chain[static_cast<unsigned>(candidate) & kChainMask];
        if (next >= candidate) break;
        candidate = next;
    }
    if (best.length == 0 && pairCandidate < position &&
        position - pairCandidate <= static_cast<int>(detail::kMaxShortMatchDistance) &&
        window[pairCandidate] == current[0] && window[pairCandidate + 1] == current[1])
        best = {kMinMatch, static_cast<unsigned>(position - pairCandidate)};
    return best;
}

// In text mode a short match can cost more bits than its bytes as literals.
bool Compressor::Pays(const Match& match, int position) const {
    if (!ascii_ || match.length > 3) return match.length >= kMinMatch;
    const unsigned lowBits = match.length == kMinMatch ? detail::kLowBitsForShortMatch : dictionaryBits_;
    const unsigned matchBits =
        kLengthEncode[match.length].bits + kDistanceCodeBits[(match.distance - 1) >> lowBits] + lowBits;
    unsigned literalBits = 0;
    for (unsigned i = 0; i < match.length; ++i)
        literalBits += 1u + kLiteralCodeBits[state_.window[position + static_cast<int>(i)]];
    return matchBits < literalBits;
}

void Compressor::Slide(int& position, int& end) {
    std::memmove(state_.window, state_.window + kMaxDistance, static_cast<size_t>(end) - kMaxDistance);
    position -= static_cast<int>(kMaxDistance);
    end -= static_cast<int>(kMaxDistance);
    // Positions that fall out of the window become 0, a real position whose
    // bytes are checked like any other candidate's.
    auto rebase = [](uint16_t* entries, size_t count) {
        for (size_t i = 0; i < count; ++i)
            entries[i] = static_cast<uint16_t>(entries[i] >= kMaxDistance ? entries[i] - kMaxDistance : 0);
    };
    rebase(state_.head, sizeof(state_.head) / sizeof(state_.head[0]));
    rebase(state_.chain, sizeof(state_.chain) / sizeof(state_.chain[0]));
    rebase(state_.pairHead, sizeof(state_.pairHead) / sizeof(state_.pairHead[0]));
}

// Reads until the window is full or the input has ended.
void Compressor::Fill(int& end) {
    while (end < kWindowSize && !inputEnded_) {
        const unsigned int room = static_cast<unsigned int>(kWindowSize - end);
        unsigned int size = room;
        const unsigned int got = read_(reinterpret_cast<char*>(state_.window + end), &size, param_);
        if (got == 0)
            inputEnded_ = true;
        else
            end += static_cast<int>(got < room ? got : room);
    }
}

void Compressor::FlushChunk() {
    unsigned int size = kOutputChunk;
    write_(reinterpret_cast<char*>(state_.output), &size, param_);
    std::memmove(state_.output, state_.output + kOutputChunk, used_ - kOutputChunk);
    used_ -= kOutputChunk;
}

void Compressor::Finish() {
    Put(kLengthEncode[kEndLength].value, kLengthEncode[kEndLength].bits);
    // The last byte is padded with zero bits.
    while (bitCount_ > 0) {
        state_.output[used_++] = static_cast<uint8_t>(bits_);
        bits_ >>= 8;
        bitCount_ = bitCount_ > 8 ? bitCount_ - 8 : 0;
    }
    if (used_ > 0) {
        unsigned int size = used_;
        write_(reinterpret_cast<char*>(state_.output), &size, param_);
    }
}

void Compressor::Run() {
    std::memset(state_.head, 0, sizeof(state_.head));
    std::memset(state_.chain, 0, sizeof(state_.chain));
    std::memset(state_.pairHead, 0, sizeof(state_.pairHead));
    std::memset(state_.window, 0, sizeof(state_.window));
    Put((ascii_ ? kCompressionAscii : kCompressionBinary) | dictionaryBits_ << 8, 16);

    const uint8_t* const window = state_.window;
    int position = 0;
    int end = 0;
    // Lazy matching: the match found at position - 1 is held back until the
    // one at position is known; a clearly longer one there turns it into a
    // literal.
    bool pending = false;
    Match held{0, 0};
    for (;;) {
        if (!inputEnded_ && end - position < kLookahead) {
            if (position >= kSlideAt) Slide(position, end);
            Fill(end);
        }
        if (position >= end) break;
        const unsigned available = static_cast<unsigned>(end - position);
        const unsigned maxLength = available < kMaxMatch ? available : kMaxMatch;
        Match current{0, 0};
        if (pending && held.length >= kLazyLimit) {
            Insert(position);
        } else {
            current = FindMatch(position, maxLength);
            if (current.length != 0 && !Pays(current, position)) current = {0, 0};
        }
        if (pending) {
            // Giving up the held match costs a literal, which a match only
            // one byte longer seldom wins back.
            if (held.length >= kMinMatch && current.length <= held.length + 1) {
                PutMatch(held);
                const int matchEnd = position - 1 + static_cast<int>(held.length);
                for (int skipped = position + 1; skipped < matchEnd; ++skipped) Insert(skipped);
                position = matchEnd;
                pending = false;
                continue;
            }
            PutLiteral(window[position - 1]);
        }
        pending = true;
        held = current;
        ++position;
    }
    if (pending) {
        if (held.length >= kMinMatch)
            PutMatch(held);
        else
            PutLiteral(window[position - 1]);
    }
    Finish();
}

}  // namespace

unsigned int implode(ReadCallback read, WriteCallback write, char* workBuffer, void* param,
                     unsigned int* type, unsigned int* dictionarySize) {
    unsigned dictionaryBits;
    switch (*dictionarySize) {
        case 1024: dictionaryBits = 4; break;
        case 2048: dictionaryBits = 5; break;
        case 4096: dictionaryBits = 6; break;
        default: return kInvalidDictionarySize;
    }
    if (*type != kCompressionBinary && *type != kCompressionAscii) return kInvalidMode;
    ImplodeState* state = detail::PlaceInWorkBuffer<ImplodeState, kWorkBufferSize>(workBuffer);
    Compressor compressor(*state, read, write, param, *type == kCompressionAscii, dictionaryBits);
    compressor.Run();
    return kOk;
}

}  // namespace dcl
