#include "containers/ItemDataBounds.h"

#include "containers/ArtFormat.h"
#include "containers/dcl/DclTables.h"

namespace containers {

namespace {

// Deflate's longest match and the fewest bits of a length and a distance.
constexpr int64_t kDeflateLongestMatch = 258;
constexpr int64_t kDeflateShortestPairBits = 2;

// A stream is never denser than its densest token, whatever bits its header
// and end code take; the margin covers a decoder that stops late.
constexpr int64_t kMarginDivisor = 64;
constexpr int64_t kMarginBytes = 1024;

constexpr StreamDensity DensestImplode() {
    using namespace dcl::detail;
    unsigned shortestDistanceCode = kDistanceCodeBits[0];
    for (unsigned bits : kDistanceCodeBits)
        if (bits < shortestDistanceCode) shortestDistanceCode = bits;
    StreamDensity densest;
    for (unsigned symbol = 0; symbol < kLengthCodeCount; ++symbol) {
        unsigned longest = kLengthBase[symbol] + (1u << kLengthExtraBits[symbol]) - 1;
        if (longest > kMaxMatch) longest = kMaxMatch;  // the next length ends the stream
        const unsigned lowBits = longest == kMinMatch ? kLowBitsForShortMatch : kMinDictionaryBits;
        const int64_t bits =
            1 + kLengthCodeBits[symbol] + kLengthExtraBits[symbol] + shortestDistanceCode + lowBits;
        if (int64_t{longest} * densest.bits > densest.bytes * bits) densest = {int64_t{longest}, bits};
    }
    // Literals need not be looked at: one byte for five bits at best.
    return densest;
}

int64_t DenseStreamLimit(const StreamDensity& densest, int64_t payloadSize) {
    const int64_t limit = payloadSize * 8 / densest.bits * densest.bytes + densest.bytes;
    return limit + limit / kMarginDivisor + kMarginBytes;
}

}  // namespace

StreamDensity DensestDeflateToken() {
    return {kDeflateLongestMatch, kDeflateShortestPairBits};
}

StreamDensity DensestImplodeToken() {
    return DensestImplode();
}

int64_t MaxItemDataSize(int32_t method, int64_t payloadSize) {
    if (payloadSize < 0) return 0;
    int64_t limit = kMaxItemDataSize;
    switch (method) {
        case kMethodStored: limit = payloadSize; break;
        case kMethodZlib: limit = DenseStreamLimit(DensestDeflateToken(), payloadSize); break;
        case kMethodImplode: limit = DenseStreamLimit(DensestImplodeToken(), payloadSize); break;
        default: break;
    }
    return limit < kMaxItemDataSize ? limit : kMaxItemDataSize;
}

}  // namespace containers
