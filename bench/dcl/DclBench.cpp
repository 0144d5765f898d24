// Times our implode and explode against StormLib's on the same data in the
// same run, and prints the ratios the codec is held to.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "containers/dcl/Dcl.h"
#include "tests/dcl/DclSampleData.h"

// StormLib exports these without declaring them in its public header.
extern "C" unsigned int implode(unsigned int (*read)(char*, unsigned int*, void*),
                                void (*write)(char*, unsigned int*, void*), char* workBuffer, void* param,
                                unsigned int* type, unsigned int* dictionarySize);
extern "C" unsigned int explode(unsigned int (*read)(char*, unsigned int*, void*),
                                void (*write)(char*, unsigned int*, void*), char* workBuffer, void* param);

namespace {

using Bytes = std::vector<uint8_t>;

// Memory to memory, with the output preallocated so that only the codec is timed.
struct Stream {
    const uint8_t* input;
    size_t inputSize;
    size_t inputPosition;
    uint8_t* output;
    size_t outputCapacity;
    size_t outputSize;
};

unsigned int ReadStream(char* buffer, unsigned int* size, void* param) {
    Stream& stream = *static_cast<Stream*>(param);
    const size_t count = std::min<size_t>(*size, stream.inputSize - stream.inputPosition);
    std::memcpy(buffer, stream.input + stream.inputPosition, count);
    stream.inputPosition += count;
    return static_cast<unsigned int>(count);
}

void WriteStream(char* buffer, unsigned int* size, void* param) {
    Stream& stream = *static_cast<Stream*>(param);
    const size_t count = std::min<size_t>(*size, stream.outputCapacity - stream.outputSize);
    std::memcpy(stream.output + stream.outputSize, buffer, count);
    stream.outputSize += count;
}

enum class Codec { kOurs, kStormLib };

// StormLib's 64-bit state is larger than the 32-bit sizes it is known by.
std::vector<char> gWork(2 * dcl::kWorkBufferSize);

size_t Implode(Codec codec, const Bytes& data, Bytes& out, unsigned int type, unsigned int dictionarySize) {
    Stream stream{data.data(), data.size(), 0, out.data(), out.size(), 0};
    const unsigned int result =
        codec == Codec::kOurs
            ? dcl::implode(ReadStream, WriteStream, gWork.data(), &stream, &type, &dictionarySize)
            : ::implode(ReadStream, WriteStream, gWork.data(), &stream, &type, &dictionarySize);
    if (result != 0) std::printf("implode failed: %u\n", result);
    return stream.outputSize;
}

size_t Explode(Codec codec, const Bytes& packed, size_t packedSize, Bytes& out) {
    Stream stream{packed.data(), packedSize, 0, out.data(), out.size(), 0};
    const unsigned int result = codec == Codec::kOurs
                                    ? dcl::explode(ReadStream, WriteStream, gWork.data(), &stream)
                                    : ::explode(ReadStream, WriteStream, gWork.data(), &stream);
    if (result != 0) std::printf("explode failed: %u\n", result);
    return stream.outputSize;
}

template <typename Body>
double BestSeconds(int rounds, Body body) {
    double best = 1e30;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        body();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        best = std::min(best, elapsed.count());
    }
    return best;
}

struct Totals {
    double oursImplode = 0, theirsImplode = 0, oursExplode = 0, theirsExplode = 0;
    size_t bytes = 0;
};

void Measure(const char* name, const Bytes& data, unsigned int type, unsigned int dictionarySize, int rounds,
             Totals& totals) {
    Bytes ours(data.size() * 2 + 64), theirs(data.size() * 2 + 64), plain(data.size());
    size_t oursSize = 0, theirsSize = 0;
    double oursImplode = 1e30, theirsImplode = 1e30, oursExplode = 1e30, theirsExplode = 1e30;
    // Interleaved, so that a busy moment on the machine hits both sides alike.
    for (int round = 0; round < rounds; ++round) {
        oursImplode = std::min(oursImplode, BestSeconds(1, [&] {
                                   oursSize = Implode(Codec::kOurs, data, ours, type, dictionarySize);
                               }));
        theirsImplode = std::min(theirsImplode, BestSeconds(1, [&] {
                                     theirsSize =
                                         Implode(Codec::kStormLib, data, theirs, type, dictionarySize);
                                 }));
        oursExplode =
            std::min(oursExplode, BestSeconds(1, [&] { Explode(Codec::kOurs, ours, oursSize, plain); }));
        theirsExplode = std::min(theirsExplode,
                                 BestSeconds(1, [&] { Explode(Codec::kStormLib, ours, oursSize, plain); }));
    }
    const bool intact =
        plain == data && Explode(Codec::kOurs, theirs, theirsSize, plain) == data.size() && plain == data;
    const double megabytes = static_cast<double>(data.size()) / 1e6;
    std::printf("%s, %s, %u-byte dictionary, %.1f MB%s\n", name,
                type == dcl::kCompressionAscii ? "ascii" : "binary", dictionarySize, megabytes,
                intact ? "" : "  ** ROUND TRIP FAILED **");
    std::printf("  size:    ours %zu (%.1f%%), StormLib %zu (%.1f%%), ratio %.3f\n", oursSize,
                100.0 * static_cast<double>(oursSize) / static_cast<double>(data.size()), theirsSize,
                100.0 * static_cast<double>(theirsSize) / static_cast<double>(data.size()),
                static_cast<double>(oursSize) / static_cast<double>(theirsSize));
    std::printf("  implode: ours %.1f ms, StormLib %.1f ms, ratio %.2f (target <= 1.5)\n", oursImplode * 1e3,
                theirsImplode * 1e3, oursImplode / theirsImplode);
    std::printf("  explode: ours %.1f MB/s, StormLib %.1f MB/s, ratio %.2f (target >= 1.0)\n",
                megabytes / oursExplode, megabytes / theirsExplode, theirsExplode / oursExplode);
    totals.oursImplode += oursImplode;
    totals.theirsImplode += theirsImplode;
    totals.oursExplode += oursExplode;
    totals.theirsExplode += theirsExplode;
    totals.bytes += data.size();
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    const size_t size = 4u << 20;
    const Bytes text = dcltest::TextLike(size, 1);
    const Bytes bitmap = dcltest::BitmapLike(size, 2);
    Totals totals;
    Measure("text", text, dcl::kCompressionAscii, 4096, rounds, totals);
    Measure("text", text, dcl::kCompressionBinary, 4096, rounds, totals);
    Measure("bitmap", bitmap, dcl::kCompressionBinary, 4096, rounds, totals);
    Measure("bitmap", bitmap, dcl::kCompressionBinary, 1024, rounds, totals);
    Measure("bitmap", bitmap, dcl::kCompressionAscii, 2048, rounds, totals);
    const double megabytes = static_cast<double>(totals.bytes) / 1e6;
    std::printf("all data:\n");
    std::printf("  implode: ours %.1f ms, StormLib %.1f ms, ratio %.2f (target <= 1.5)\n",
                totals.oursImplode * 1e3, totals.theirsImplode * 1e3,
                totals.oursImplode / totals.theirsImplode);
    std::printf("  explode: ours %.1f MB/s, StormLib %.1f MB/s, ratio %.2f (target >= 1.0)\n",
                megabytes / totals.oursExplode, megabytes / totals.theirsExplode,
                totals.theirsExplode / totals.oursExplode);
    return 0;
}
