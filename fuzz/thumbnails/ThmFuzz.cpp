// Fuzzes the .thm reader with arbitrary bytes: no read outside the input
// (ASan), no allocation beyond what the input holds, and a complete read
// that survives writing it out again.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "thumbnails/ThmFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A copy of exactly the input's size, so that any overrun is seen.
    const std::vector<uint8_t> bytes(data, data + size);
    thumbnails::ThmMemorySource source(bytes.empty() ? nullptr : bytes.data(), bytes.size());
    thumbnails::ThmContents contents;
    const thumbnails::ThmReadStatus status = thumbnails::ReadThmContents(source, contents);

    if (contents.path.size() + contents.name.size() + contents.image.size() > size) std::abort();
    if (contents.path.find('\0') != std::string::npos || contents.name.find('\0') != std::string::npos)
        std::abort();
    if (status != thumbnails::ThmReadStatus::kComplete) {
        if (!contents.image.empty()) std::abort();
        return 0;
    }
    if (!contents.pathRead || !contents.nameRead) std::abort();

    // What was read, written and read again, is the same.
    const std::vector<uint8_t> again =
        thumbnails::EncodeThm(contents.path, contents.name, contents.image.data(), contents.image.size());
    thumbnails::ThmMemorySource reread(again.data(), again.size());
    thumbnails::ThmContents second;
    if (thumbnails::ReadThmContents(reread, second) != thumbnails::ThmReadStatus::kComplete) std::abort();
    if (second.path != contents.path || second.name != contents.name || second.image != contents.image)
        std::abort();
    return 0;
}
