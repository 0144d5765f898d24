// Two properties of the codec on every input:
//  - explode takes arbitrary bytes as a stream and ends, with its output
//    bounded, every write inside its work buffer and no read after the end;
//  - implode, in the mode and dictionary size the first byte picks, of the
//    remaining bytes explodes back to exactly those bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "containers/dcl/Dcl.h"

namespace {

constexpr size_t kOutputLimit = 1 << 20;

struct Channel {
    Channel(const uint8_t* bytes, size_t count, size_t limit)
        : input(bytes), inputSize(count), readLimit(limit) {}

    const uint8_t* input;
    size_t inputSize;
    size_t position = 0;
    size_t readLimit;  // varies how much each read hands out
    bool ended = false;
    std::vector<uint8_t> output;
    size_t outputLimit = kOutputLimit;
    bool overflow = false;
    const char* workBegin = nullptr;
    const char* workEnd = nullptr;
};

unsigned int Read(char* buffer, unsigned int* size, void* param) {
    Channel& channel = *static_cast<Channel*>(param);
    if (channel.ended) std::abort();  // asked again after the end of the input
    if (channel.overflow) return 0;
    size_t count = *size;
    if (count > channel.inputSize - channel.position) count = channel.inputSize - channel.position;
    if (count > channel.readLimit) count = channel.readLimit;
    if (count == 0) {
        channel.ended = true;
        return 0;
    }
    std::memcpy(buffer, channel.input + channel.position, count);
    channel.position += count;
    return static_cast<unsigned int>(count);
}

void Write(char* buffer, unsigned int* size, void* param) {
    Channel& channel = *static_cast<Channel*>(param);
    if (channel.workBegin != nullptr && (buffer < channel.workBegin || buffer + *size > channel.workEnd))
        std::abort();
    if (channel.overflow || *size > channel.outputLimit - channel.output.size()) {
        channel.overflow = true;
        return;
    }
    channel.output.insert(channel.output.end(), buffer, buffer + *size);
}

// Exactly kWorkBufferSize bytes at the end of an allocation, so that the
// sanitizer sees any step past them, at a misalignment the input picks.
struct WorkBuffer {
    explicit WorkBuffer(size_t misalignment)
        : storage(new char[dcl::kWorkBufferSize + misalignment]), data(storage.get() + misalignment) {}
    std::unique_ptr<char[]> storage;
    char* data;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const size_t misalignment = size > 0 ? data[0] % 8 : 0;
    const size_t readLimit = size > 1 ? 1 + data[size - 1] % 64 * 64 : 2048;

    {
        WorkBuffer work(misalignment);
        Channel channel(data, size, readLimit);
        channel.workBegin = work.data;
        channel.workEnd = work.data + dcl::kWorkBufferSize;
        dcl::explode(Read, Write, work.data, &channel);
    }

    if (size == 0) return 0;
    unsigned int type = data[0] & 1 ? dcl::kCompressionAscii : dcl::kCompressionBinary;
    unsigned int dictionarySize = 1024u << ((data[0] >> 1) % 3);
    const uint8_t* plain = data + 1;
    const size_t plainSize = size - 1;

    WorkBuffer work(misalignment);
    Channel packing(plain, plainSize, readLimit);
    packing.outputLimit = SIZE_MAX;
    if (dcl::implode(Read, Write, work.data, &packing, &type, &dictionarySize) != dcl::kOk) std::abort();

    Channel unpacking(packing.output.data(), packing.output.size(), readLimit);
    unpacking.outputLimit = SIZE_MAX;
    if (dcl::explode(Read, Write, work.data, &unpacking) != dcl::kOk) std::abort();
    if (unpacking.output.size() != plainSize) std::abort();
    if (plainSize != 0 && std::memcmp(unpacking.output.data(), plain, plainSize) != 0) std::abort();
    return 0;
}
