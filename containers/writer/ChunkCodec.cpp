#include "containers/writer/ChunkCodec.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "containers/ArtFormat.h"
#include "containers/dcl/Dcl.h"

namespace containers {

namespace {

struct MemorySource {
    const uint8_t* data = nullptr;
    size_t size = 0;
    size_t position = 0;

    unsigned int Read(char* buffer, unsigned int* wanted) {
        const unsigned int count = static_cast<unsigned int>(std::min<size_t>(*wanted, size - position));
        if (count != 0) std::memcpy(buffer, data + position, count);
        position += count;
        return count;
    }
};

struct ImplodeState {
    MemorySource source;
    std::vector<uint8_t>* out = nullptr;
};

unsigned int ImplodeRead(char* buffer, unsigned int* size, void* param) {
    return static_cast<ImplodeState*>(param)->source.Read(buffer, size);
}

void ImplodeWrite(char* buffer, unsigned int* size, void* param) {
    std::vector<uint8_t>& out = *static_cast<ImplodeState*>(param)->out;
    const auto* bytes = reinterpret_cast<const uint8_t*>(buffer);
    out.insert(out.end(), bytes, bytes + *size);
}

// While decoding, the output is capped at what the chunk claims, so a stream
// that would expand without end stops as soon as it passes that size, and no
// more input is served after that.
struct ExplodeState {
    MemorySource source;
    std::vector<uint8_t>* out = nullptr;
    size_t limit = 0;
    bool overflow = false;
};

unsigned int ExplodeRead(char* buffer, unsigned int* size, void* param) {
    auto* state = static_cast<ExplodeState*>(param);
    return state->overflow ? 0 : state->source.Read(buffer, size);
}

void ExplodeWrite(char* buffer, unsigned int* size, void* param) {
    auto* state = static_cast<ExplodeState*>(param);
    if (state->overflow) return;
    if (*size > state->limit - state->out->size()) {
        state->overflow = true;
        return;
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(buffer);
    state->out->insert(state->out->end(), bytes, bytes + *size);
}

std::string SizeMismatch(size_t actual, int32_t expected) {
    return "the data is " + std::to_string(actual) + " bytes long, but the chunk says " +
           std::to_string(expected);
}

}  // namespace

bool CompressChunk(int32_t method, const std::vector<uint8_t>& data, const ImplodeSettings& implode,
                   std::vector<uint8_t>& payload, std::string& error) {
    payload.clear();
    if (data.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        error = "data of " + std::to_string(data.size()) + " bytes is too large for a container";
        return false;
    }
    static const uint8_t kNothing = 0;
    const uint8_t* source = data.empty() ? &kNothing : data.data();
    switch (method) {
        case kMethodStored: payload = data; return true;
        case kMethodZlib: {
            uLongf length = compressBound(static_cast<uLong>(data.size()));
            payload.resize(length);
            int status = compress(payload.data(), &length, source, static_cast<uLong>(data.size()));
            if (status != Z_OK) {
                payload.clear();
                error = "zlib compress failed with status " + std::to_string(status);
                return false;
            }
            payload.resize(length);
            return true;
        }
        case kMethodImplode: {
            if (implode.type != dcl::kCompressionAscii && implode.type != dcl::kCompressionBinary) {
                error = "implode type " + std::to_string(implode.type) + " is neither text nor binary";
                return false;
            }
            if (implode.dictionarySize != 1024 && implode.dictionarySize != 2048 &&
                implode.dictionarySize != 4096) {
                error = "implode dictionary size " + std::to_string(implode.dictionarySize) +
                        " is not 1024, 2048 or 4096";
                return false;
            }
            std::unique_ptr<char[]> work(new char[dcl::kWorkBufferSize]());
            ImplodeState state;
            state.source = {source, data.size(), 0};
            state.out = &payload;
            unsigned int type = implode.type;
            unsigned int dictionarySize = implode.dictionarySize;
            unsigned int status =
                dcl::implode(ImplodeRead, ImplodeWrite, work.get(), &state, &type, &dictionarySize);
            if (status != dcl::kOk) {
                payload.clear();
                error = "implode failed with status " + std::to_string(status);
                return false;
            }
            return true;
        }
        default:
            error = "method " + std::to_string(method) + " is not 0 (stored), 1 (zlib) or 2 (implode)";
            return false;
    }
}

bool DecompressChunk(int32_t method, const uint8_t* payload, size_t payloadSize, int32_t uncompressedSize,
                     std::vector<uint8_t>& data, std::string& error) {
    data.clear();
    if (uncompressedSize < 0) {
        error = "the uncompressed size " + std::to_string(uncompressedSize) + " is negative";
        return false;
    }
    const size_t expected = static_cast<size_t>(uncompressedSize);
    static const uint8_t kNothing = 0;
    if (payload == nullptr) payload = &kNothing;
    switch (method) {
        case kMethodStored:
            if (payloadSize != expected) {
                error = "the stored payload is " + std::to_string(payloadSize) +
                        " bytes, but the chunk says " + std::to_string(uncompressedSize);
                return false;
            }
            data.assign(payload, payload + payloadSize);
            return true;
        case kMethodZlib: {
            // One spare byte tells a stream that holds too much from one that fits.
            data.resize(expected + 1);
            uLongf length = static_cast<uLongf>(data.size());
            uLong sourceLength = static_cast<uLong>(payloadSize);
            int status = uncompress2(data.data(), &length, payload, &sourceLength);
            if (status == Z_BUF_ERROR && length == data.size()) {
                data.clear();
                error = "the zlib stream holds more than the " + std::to_string(uncompressedSize) +
                        " bytes that the chunk says";
                return false;
            }
            if (status != Z_OK) {
                data.clear();
                error = std::string("the zlib stream is damaged (") +
                        (zError(status) ? zError(status) : "?") + ")";
                return false;
            }
            data.resize(length);
            if (length != expected) {
                error = SizeMismatch(length, uncompressedSize);
                data.clear();
                return false;
            }
            return true;
        }
        case kMethodImplode: {
            std::unique_ptr<char[]> work(new char[dcl::kWorkBufferSize]());
            ExplodeState state;
            state.source = {payload, payloadSize, 0};
            state.out = &data;
            state.limit = expected;
            data.reserve(expected);
            unsigned int status = dcl::explode(ExplodeRead, ExplodeWrite, work.get(), &state);
            if (state.overflow) {
                data.clear();
                error = "the implode stream holds more than the " + std::to_string(uncompressedSize) +
                        " bytes that the chunk says";
                return false;
            }
            if (status != dcl::kOk) {
                data.clear();
                error = "the implode stream is damaged (explode status " + std::to_string(status) + ")";
                return false;
            }
            if (data.size() != expected) {
                error = SizeMismatch(data.size(), uncompressedSize);
                data.clear();
                return false;
            }
            return true;
        }
        default: error = "method " + std::to_string(method) + " is unknown"; return false;
    }
}

}  // namespace containers
