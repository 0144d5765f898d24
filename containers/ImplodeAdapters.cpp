#include "containers/ImplodeAdapters.h"

#include <cstring>
#include <memory>
#include <new>

#include "containers/dcl/Dcl.h"

namespace containers {

namespace {

constexpr unsigned int kDictionarySize = 4096;

std::unique_ptr<char[]> AllocateWorkBuffer() {
    return std::unique_ptr<char[]>(new (std::nothrow) char[dcl::kWorkBufferSize]);
}

void UpdateCrc(ImplodeStream& stream, const char* bytes, unsigned int count) {
    stream.crc = dcl::crc32(bytes, &count, &stream.crc);
}

}  // namespace

unsigned int ImplodeReadCallback(char* buffer, unsigned int* size, void* param) {
    auto& stream = *static_cast<ImplodeStream*>(param);
    if (stream.overflow == 1) return 0;
    MemoryCursor& input = stream.mode == kModeCompress ? stream.source : stream.middle;
    unsigned int delivered = 0;
    if (input.position < input.size) {
        const uint32_t left = input.size - input.position;
        if (*size > left) *size = left;
        std::memcpy(buffer, input.data + input.position, *size);
        input.position += *size;
        delivered = *size;
    }
    if (stream.mode == kModeCompress) UpdateCrc(stream, buffer, delivered);
    return delivered;
}

void ImplodeWriteCallback(char* buffer, unsigned int* size, void* param) {
    auto& stream = *static_cast<ImplodeStream*>(param);
    if (stream.overflow == 1) return;
    MemoryCursor* output = &stream.target;
    if (stream.mode == kModeCompress) {
        output = &stream.middle;
        stream.totalWritten += *size;
    }
    if (output->position >= output->size || output->size - output->position < *size) {
        // Never a partial block: the caller must not see half of one.
        stream.overflow = 1;
        return;
    }
    std::memcpy(output->data + output->position, buffer, *size);
    output->position += *size;
    if (stream.mode == kModeDecompress) UpdateCrc(stream, buffer, *size);
}

int ImplodeMemory(uint32_t* crc, uint32_t* compressedSize, const uint8_t* source, uint8_t* target,
                  uint32_t sourceSize) {
    auto work = AllocateWorkBuffer();
    if (!work) return 0;
    ImplodeStream stream{};
    stream.mode = kModeCompress;
    stream.crc = 0xFFFFFFFFu;
    stream.source = MemoryCursor{const_cast<uint8_t*>(source), 0, sourceSize};
    stream.middle = MemoryCursor{target, 0, sourceSize};
    unsigned int type = dcl::kCompressionAscii;
    unsigned int dictionarySize = kDictionarySize;
    unsigned int code =
        dcl::implode(ImplodeReadCallback, ImplodeWriteCallback, work.get(), &stream, &type, &dictionarySize);
    if (code != dcl::kOk || stream.overflow != 0) return 0;
    *crc = ~stream.crc;
    *compressedSize = stream.totalWritten;
    return 1;
}

int ExplodeMemory(uint32_t* crc, const uint8_t* source, uint32_t sourceSize, uint8_t* target,
                  uint32_t targetSize) {
    auto work = AllocateWorkBuffer();
    if (!work) return 0;
    ImplodeStream stream{};
    stream.mode = kModeDecompress;
    stream.crc = 0xFFFFFFFFu;
    stream.middle = MemoryCursor{const_cast<uint8_t*>(source), 0, sourceSize};
    stream.target = MemoryCursor{target, 0, targetSize};
    unsigned int code = dcl::explode(ImplodeReadCallback, ImplodeWriteCallback, work.get(), &stream);
    if (code != dcl::kOk || stream.overflow != 0) return 0;
    *crc = ~stream.crc;
    return 1;
}

int ImplodeBuffer(uint8_t* target, const uint8_t* source, uint32_t* size) {
    if (size == nullptr) return 1;
    std::unique_ptr<uint8_t[]> copy(new (std::nothrow) uint8_t[*size == 0 ? 1 : *size]);
    if (copy && source != nullptr && *size != 0) std::memcpy(copy.get(), source, *size);
    int result = 1;
    if (copy && target != nullptr && source != nullptr) {
        uint32_t crc = 0;
        uint32_t compressedSize = 0;
        if (ImplodeMemory(&crc, &compressedSize, copy.get(), target, *size) == 0)
            result = 0;
        else
            *size = compressedSize;
    }
    return result;
}

int ExplodeBuffer(const uint8_t* source, uint32_t sourceSize, uint8_t* target, const uint32_t* targetSize) {
    int result = 1;
    if (source != nullptr && target != nullptr && targetSize != nullptr) {
        uint32_t crc = 0;
        if (ExplodeMemory(&crc, source, sourceSize, target, *targetSize) == 0) result = 0;
    }
    return result;
}

}  // namespace containers
