// Writes a handful of small valid streams, one per mode and dictionary size,
// as the starting corpus of fuzz_explode.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "containers/dcl/Dcl.h"

namespace {

struct Channel {
    explicit Channel(const std::string* data) : input(data) {}

    const std::string* input;
    size_t position = 0;
    std::vector<uint8_t> output;
};

unsigned int Read(char* buffer, unsigned int* size, void* param) {
    Channel& channel = *static_cast<Channel*>(param);
    size_t count = channel.input->size() - channel.position;
    if (count > *size) count = *size;
    std::memcpy(buffer, channel.input->data() + channel.position, count);
    channel.position += count;
    return static_cast<unsigned int>(count);
}

void Write(char* buffer, unsigned int* size, void* param) {
    Channel& channel = *static_cast<Channel*>(param);
    channel.output.insert(channel.output.end(), buffer, buffer + *size);
}

bool Save(const std::string& directory, const std::string& name, const std::vector<uint8_t>& bytes) {
    const std::string path = directory + "/" + name;
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    const std::string directory = argv[1];
    bool ok = Save(directory, "classic-aiai", {0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f});

    std::string text;
    for (int line = 0; line < 12; ++line)
        text += "Picture " + std::to_string(line) + ": summer holiday, beach and mountain views\r\n";
    std::string pixels;
    for (int x = 0; x < 600; ++x) pixels += {static_cast<char>(x / 3), static_cast<char>(0xF0), '\0'};
    const struct {
        const char* name;
        const std::string* data;
        unsigned int type;
        unsigned int dictionarySize;
    } seeds[] = {
        {"text-ascii-1024", &text, dcl::kCompressionAscii, 1024},
        {"text-binary-2048", &text, dcl::kCompressionBinary, 2048},
        {"pixels-binary-4096", &pixels, dcl::kCompressionBinary, 4096},
        {"pixels-ascii-2048", &pixels, dcl::kCompressionAscii, 2048},
        {"empty-binary-4096", nullptr, dcl::kCompressionBinary, 4096},
    };
    const std::string empty;
    std::vector<char> work(dcl::kWorkBufferSize);
    for (const auto& seed : seeds) {
        Channel channel(seed.data != nullptr ? seed.data : &empty);
        unsigned int type = seed.type;
        unsigned int dictionarySize = seed.dictionarySize;
        ok = dcl::implode(Read, Write, work.data(), &channel, &type, &dictionarySize) == dcl::kOk &&
             Save(directory, seed.name, channel.output) && ok;
    }
    return ok ? 0 : 1;
}
