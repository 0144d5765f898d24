#include <cstddef>
#include <cstdint>
#include <cstring>

#include "containers/dcl/Dcl.h"
#include "containers/dcl/DclTables.h"

namespace dcl {

namespace {

using detail::kDistanceDecode;
using detail::kEndLength;
using detail::kLengthDecode;
using detail::kLiteralDecode;

// Output leaves in whole blocks of this size as they fill, which is what lets
// a consumer with a bounded output refuse a stream block by block.
constexpr unsigned kBlockSize = 0x1000;
constexpr unsigned kHistorySize = detail::kMaxDistance;
constexpr unsigned kInputChunk = 2048;
// Room for the 8-byte stores that copy a match past its last byte.
constexpr unsigned kCopySlack = 8;

struct ExplodeState {
    // The history, the block being produced, and room for a match that starts
    // at the block's last byte.
    uint8_t window[kHistorySize + kBlockSize + detail::kMaxMatch + kCopySlack];
    uint8_t input[kInputChunk];
};

// The bit buffer lives in registers in the decoding loop; it is handed to the
// slow refill by value for the same reason.
struct Bits {
    uint64_t buffer;       // bits above `count` may hold the next input bytes
    int count;             // negative once more bits were used than the input held
    const uint8_t* next;   // next input byte
    const uint8_t* limit;  // end of the buffered input
};

struct Input {
    ReadCallback read;
    void* param;
    uint8_t* buffer;
    bool ended;
};

// Whole bytes up to at least 56 bits, from at least 8 buffered input bytes.
inline void RefillFromBuffer(Bits& bits) {
    bits.buffer |= detail::LoadLittleEndian64(bits.next) << bits.count;
    bits.next += (63 - bits.count) >> 3;
    bits.count |= 56;
}

// Reads once fewer than 8 bytes are buffered, until 8 are or the input has
// ended; after that, takes what is left byte by byte.
__attribute__((noinline)) Bits RefillSlow(Bits bits, Input& input) {
    for (;;) {
        size_t left = static_cast<size_t>(bits.limit - bits.next);
        if (left >= 8) {
            RefillFromBuffer(bits);
            return bits;
        }
        if (input.ended) break;
        std::memmove(input.buffer, bits.next, left);
        unsigned int size = static_cast<unsigned int>(kInputChunk - left);
        const unsigned int got = input.read(reinterpret_cast<char*>(input.buffer + left), &size, input.param);
        if (got == 0) {
            // Never asked again: a consumer that ran out of room stops serving reads.
            input.ended = true;
        } else {
            left += got < kInputChunk - left ? got : kInputChunk - left;
        }
        bits.next = input.buffer;
        bits.limit = input.buffer + left;
    }
    while (bits.count <= 56 && bits.next < bits.limit) {
        bits.buffer |= static_cast<uint64_t>(*bits.next++) << bits.count;
        bits.count += 8;
    }
    return bits;
}

// Cheap enough to run before every token, so that a token needs no check for
// input of its own: the longest token takes 30 bits.
inline void Refill(Bits& bits, Input& input) {
    if (bits.limit - bits.next >= 8) {
        RefillFromBuffer(bits);
    } else {
        bits = RefillSlow(bits, input);
    }
}

inline void Drop(Bits& bits, unsigned n) {
    bits.buffer >>= n;
    bits.count -= static_cast<int>(n);
}

inline void CopyMatch(uint8_t* to, unsigned distance, unsigned length) {
    // Whole 8-byte steps may run up to 7 bytes past the match; the window has room.
    if (distance >= 8) {
        const uint8_t* from = to - distance;
        for (unsigned done = 0; done < length; done += 8) std::memcpy(to + done, from + done, 8);
        return;
    }
    if (distance == 1) {
        std::memset(to, to[-1], length);
        return;
    }
    // A short pattern repeats: once a whole number of its periods spanning 8
    // bytes lies behind, 8-byte steps can copy from that far back.
    const unsigned step = (8 + distance - 1) / distance * distance;
    const unsigned lead = step - distance;
    unsigned done = 0;
    for (; done < lead && done < length; ++done) to[done] = *(to + done - distance);
    for (; done < length; done += 8) std::memcpy(to + done, to + done - step, 8);
}

void WriteOut(WriteCallback write, void* param, uint8_t* data, unsigned size) {
    unsigned int length = size;
    write(reinterpret_cast<char*>(data), &length, param);
}

}  // namespace

unsigned int explode(ReadCallback read, WriteCallback write, char* workBuffer, void* param) {
    ExplodeState* state = detail::PlaceInWorkBuffer<ExplodeState, kWorkBufferSize>(workBuffer);
    Input input{read, param, state->input, false};
    Bits bits{0, 0, state->input, state->input};

    Refill(bits, input);
    if (bits.count >= 8 && (bits.buffer & 0xFF) > kCompressionAscii) return kInvalidMode;
    if (bits.count < 16) return kBadData;
    const bool ascii = (bits.buffer & 0xFF) == kCompressionAscii;
    const unsigned dictionaryBits = (bits.buffer >> 8) & 0xFF;
    if (dictionaryBits < detail::kMinDictionaryBits || dictionaryBits > detail::kMaxDictionaryBits)
        return kInvalidDictionarySize;
    Drop(bits, 16);

    uint8_t* const window = state->window;
    unsigned position = kHistorySize;
    // Until the first block has gone out, the window holds no history below
    // this point, and no distance may reach there.
    unsigned historyStart = kHistorySize;
    for (;;) {
        Refill(bits, input);
        if ((bits.buffer & 1) == 0) {
            unsigned literal;
            if (ascii) {
                const unsigned entry =
                    kLiteralDecode[(bits.buffer >> 1) & ((1u << detail::kLiteralCodeMaxBits) - 1)];
                literal = entry >> 4;
                Drop(bits, 1 + (entry & 15));
            } else {
                literal = (bits.buffer >> 1) & 0xFF;
                Drop(bits, 9);
            }
            if (bits.count < 0) return kAbort;
            window[position++] = static_cast<uint8_t>(literal);
        } else {
            const detail::LengthDecodeEntry entry =
                kLengthDecode[(bits.buffer >> 1) & ((1u << detail::kLengthCodeMaxBits) - 1)];
            Drop(bits, 1 + entry.codeBits);
            const unsigned length =
                entry.base + static_cast<unsigned>(bits.buffer & ((1u << entry.extraBits) - 1));
            Drop(bits, entry.extraBits);
            if (length == kEndLength) {
                if (bits.count < 0) return kAbort;
                break;
            }
            const unsigned high = kDistanceDecode[bits.buffer & ((1u << detail::kDistanceCodeMaxBits) - 1)];
            Drop(bits, high & 15);
            const unsigned lowBits =
                length == detail::kMinMatch ? detail::kLowBitsForShortMatch : dictionaryBits;
            const unsigned distance =
                ((high >> 4) << lowBits | static_cast<unsigned>(bits.buffer & ((1u << lowBits) - 1))) + 1;
            Drop(bits, lowBits);
            if (bits.count < 0) return kAbort;
            if (distance > position - historyStart) return kBadData;
            CopyMatch(window + position, distance, length);
            position += length;
        }
        if (position >= kHistorySize + kBlockSize) {
            WriteOut(write, param, window + kHistorySize, kBlockSize);
            std::memmove(window, window + kBlockSize, position - kBlockSize);
            position -= kBlockSize;
            historyStart = 0;
        }
    }
    if (position > kHistorySize) WriteOut(write, param, window + kHistorySize, position - kHistorySize);
    return kOk;
}

}  // namespace dcl
