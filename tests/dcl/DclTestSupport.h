// Callbacks, guarded work buffers and stream builders for the codec tests.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "containers/dcl/Dcl.h"
#include "containers/dcl/DclTables.h"

namespace dcltest {

using Bytes = std::vector<uint8_t>;

// Both directions of one codec call, shaped like the container reader's
// stream: reads come from `input`, writes go to `output` up to `outputLimit`.
// A write that would pass the limit is not copied, and from then on every
// read reports the end of the input.
struct Channel {
    const uint8_t* input = nullptr;
    size_t inputSize = 0;
    size_t inputPosition = 0;
    size_t readChunkLimit = SIZE_MAX;  // most bytes handed out per read
    size_t reads = 0;
    size_t readsAfterEnd = 0;
    bool inputEnded = false;

    Bytes output;
    size_t outputLimit = SIZE_MAX;
    bool overflow = false;
    std::vector<size_t> writeSizes;
    // Every write must point inside [bufferBegin, bufferEnd) when set.
    const char* bufferBegin = nullptr;
    const char* bufferEnd = nullptr;
    bool writeOutsideBuffer = false;
};

inline unsigned int ReadFromChannel(char* buffer, unsigned int* size, void* param) {
    Channel& channel = *static_cast<Channel*>(param);
    ++channel.reads;
    if (channel.inputEnded) ++channel.readsAfterEnd;
    if (channel.overflow) return 0;
    size_t count = std::min<size_t>(*size, channel.inputSize - channel.inputPosition);
    count = std::min(count, channel.readChunkLimit);
    if (count == 0) {
        channel.inputEnded = true;
        return 0;
    }
    std::memcpy(buffer, channel.input + channel.inputPosition, count);
    channel.inputPosition += count;
    return static_cast<unsigned int>(count);
}

inline void WriteToChannel(char* buffer, unsigned int* size, void* param) {
    Channel& channel = *static_cast<Channel*>(param);
    channel.writeSizes.push_back(*size);
    if (channel.bufferBegin != nullptr &&
        (buffer < channel.bufferBegin || buffer + *size > channel.bufferEnd || buffer + *size < buffer))
        channel.writeOutsideBuffer = true;
    if (channel.overflow || *size > channel.outputLimit - channel.output.size()) {
        channel.overflow = true;
        return;
    }
    channel.output.insert(channel.output.end(), buffer, buffer + *size);
}

// A work buffer with guard bytes on both sides and a chosen misalignment.
class GuardedWorkBuffer {
public:
    explicit GuardedWorkBuffer(size_t misalignment = 0, size_t size = dcl::kWorkBufferSize)
        : offset_(kGuard + misalignment), size_(size), storage_(offset_ + size + kGuard + 16, kPattern) {}

    char* data() { return reinterpret_cast<char*>(storage_.data() + offset_); }
    const char* begin() const { return reinterpret_cast<const char*>(storage_.data() + offset_); }
    const char* end() const { return begin() + size_; }
    bool GuardsIntact() const {
        for (size_t i = 0; i < offset_; ++i)
            if (storage_[i] != kPattern) return false;
        for (size_t i = offset_ + size_; i < storage_.size(); ++i)
            if (storage_[i] != kPattern) return false;
        return true;
    }

private:
    static constexpr size_t kGuard = 64;
    static constexpr uint8_t kPattern = 0xA5;
    size_t offset_;
    size_t size_;
    Bytes storage_;
};

struct CodecRun {
    unsigned int result = 0;
    Bytes output;
    std::vector<size_t> writeSizes;
    bool overflow = false;
    bool guardsIntact = true;
    bool writeOutsideBuffer = false;
    size_t readsAfterEnd = 0;
};

inline CodecRun RunImplode(const Bytes& data, unsigned int type, unsigned int dictionarySize,
                           size_t readChunkLimit = SIZE_MAX, size_t misalignment = 0) {
    GuardedWorkBuffer work(misalignment);
    Channel channel;
    channel.input = data.data();
    channel.inputSize = data.size();
    channel.readChunkLimit = readChunkLimit;
    CodecRun run;
    run.result = dcl::implode(ReadFromChannel, WriteToChannel, work.data(), &channel, &type, &dictionarySize);
    run.output = std::move(channel.output);
    run.writeSizes = std::move(channel.writeSizes);
    run.guardsIntact = work.GuardsIntact();
    run.readsAfterEnd = channel.readsAfterEnd;
    return run;
}

inline CodecRun RunExplode(const Bytes& stream, size_t outputLimit = SIZE_MAX,
                           size_t readChunkLimit = SIZE_MAX, size_t misalignment = 0) {
    GuardedWorkBuffer work(misalignment);
    Channel channel;
    channel.input = stream.data();
    channel.inputSize = stream.size();
    channel.readChunkLimit = readChunkLimit;
    channel.outputLimit = outputLimit;
    channel.bufferBegin = work.begin();
    channel.bufferEnd = work.end();
    CodecRun run;
    run.result = dcl::explode(ReadFromChannel, WriteToChannel, work.data(), &channel);
    run.output = std::move(channel.output);
    run.writeSizes = std::move(channel.writeSizes);
    run.overflow = channel.overflow;
    run.guardsIntact = work.GuardsIntact();
    run.writeOutsideBuffer = channel.writeOutsideBuffer;
    run.readsAfterEnd = channel.readsAfterEnd;
    return run;
}

// Writes streams token by token, for streams that implode would never make.
class StreamBuilder {
public:
    StreamBuilder(unsigned int literalCoding, unsigned int dictionaryBits)
        : dictionaryBits_(dictionaryBits), ascii_(literalCoding == dcl::kCompressionAscii) {
        bytes_.push_back(static_cast<uint8_t>(literalCoding));
        bytes_.push_back(static_cast<uint8_t>(dictionaryBits));
    }

    StreamBuilder& Literal(uint8_t byte) {
        Put(0, 1);
        if (ascii_)
            Put(dcl::detail::kLiteralCodes[byte], dcl::detail::kLiteralCodeBits[byte]);
        else
            Put(byte, 8);
        return *this;
    }
    StreamBuilder& Literals(const char* text) {
        for (; *text != '\0'; ++text) Literal(static_cast<uint8_t>(*text));
        return *this;
    }
    StreamBuilder& Match(unsigned length, unsigned distance) {
        PutLength(length);
        const unsigned lowBits = length == 2 ? 2 : dictionaryBits_;
        const unsigned high = (distance - 1) >> lowBits;
        Put(dcl::detail::kDistanceCodes[high], dcl::detail::kDistanceCodeBits[high]);
        Put((distance - 1) & ((1u << lowBits) - 1), lowBits);
        return *this;
    }
    StreamBuilder& End() {
        PutLength(dcl::detail::kEndLength);
        return *this;
    }
    Bytes Finish() const {
        Bytes bytes = bytes_;
        if (bitCount_ > 0) bytes.push_back(static_cast<uint8_t>(pending_));
        return bytes;
    }

private:
    void PutLength(unsigned length) {
        const dcl::detail::LengthEncodeEntry& entry = dcl::detail::kLengthEncode[length];
        Put(entry.value, entry.bits);
    }
    void Put(uint32_t value, unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            pending_ |= ((value >> i) & 1u) << bitCount_;
            if (++bitCount_ == 8) {
                bytes_.push_back(static_cast<uint8_t>(pending_));
                pending_ = 0;
                bitCount_ = 0;
            }
        }
    }

    unsigned dictionaryBits_;
    bool ascii_;
    Bytes bytes_;
    uint32_t pending_ = 0;
    unsigned bitCount_ = 0;
};

}  // namespace dcltest
