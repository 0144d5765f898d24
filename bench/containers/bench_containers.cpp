// Reading a container against plain reads of the same bytes:
//  - every large rendition of a 1,000-item container, against one read of the
//    whole file;
//  - an item's deflated data read through the container, against zlib's own
//    uncompress of the same bytes in memory.
#include <zlib.h>

#include <cstdio>
#include <random>
#include <vector>

#include "containers/ArtContainer.h"
#include "containers/ContainerImage.h"
#include "support/BenchTimer.h"
#include "support/TempDir.h"

namespace {

std::vector<uint8_t> RenditionLike(std::mt19937& random) {
    // A 128-pixel JPEG thumbnail is a few kilobytes of high-entropy bytes.
    std::vector<uint8_t> bytes(3000 + random() % 9000);
    for (auto& b : bytes) b = static_cast<uint8_t>(random());
    return bytes;
}

std::vector<uint8_t> PictureLike(size_t size) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>((i % 640) / 5 + (i / 6400) % 7);
    return bytes;
}

}  // namespace

int main() {
    testsupport::TempDir dir;
    std::mt19937 random(1);
    bool allMet = true;

    {
        testsupport::ContainerImage image;
        std::vector<containers::ArtEntryRecord> entries;
        for (int i = 0; i < 1000; ++i) {
            auto entry = testsupport::MakeEntry(i, "item", "item.bmp");
            entry.renditionOffsets[3] = image.AppendRendition(RenditionLike(random));
            entry.renditionOffsets[4] = image.AppendRendition(RenditionLike(random));
            entries.push_back(entry);
        }
        image.AppendEntryTable(entries);
        const std::string path = dir.Write("bench.qlt", image.Bytes());

        size_t checksum = 0;
        const double ours = benchsupport::BestSeconds(
            [&] {
                containers::CArtContainer container;
                container.Open(path);
                for (int32_t item = 1; item <= container.GetItemCount(); ++item) {
                    int32_t size = 0;
                    auto payload = container.ReadRendition(item, 0x80, &size);
                    checksum += static_cast<size_t>(size);
                }
            },
            15);
        const double reference = benchsupport::BestSeconds(
            [&] {
                framework::File file;
                std::string error;
                file.OpenForReading(path, error);
                std::vector<uint8_t> all(static_cast<size_t>(file.Length()));
                checksum += file.Read(all.data(), all.size());
            },
            15);
        allMet &= benchsupport::ReportRatio("1,000 large renditions vs one file read", ours, reference, 3.0);
        if (checksum == 0) std::printf("nothing read\n");
    }

    {
        const std::vector<uint8_t> data = PictureLike(8 << 20);
        uLongf packedSize = compressBound(static_cast<uLong>(data.size()));
        std::vector<uint8_t> packed(packedSize);
        compress(packed.data(), &packedSize, data.data(), static_cast<uLong>(data.size()));
        packed.resize(packedSize);
        testsupport::ContainerImage image;
        auto entry = testsupport::MakeEntry(1, "big", "big.bmp");
        entry.dataOffset = image.AppendData(1, packed, static_cast<int32_t>(data.size()));
        image.AppendEntryTable({entry});
        const std::string path = dir.Write("data.qlt", image.Bytes());

        containers::CArtContainer container;
        container.Open(path);
        const double ours = benchsupport::BestSeconds(
            [&] {
                int32_t size = 0;
                auto out = container.ReadItemData(1, &size);
                if (size != static_cast<int32_t>(data.size())) std::printf("bad size\n");
            },
            7);
        std::vector<uint8_t> out(data.size());
        const double reference = benchsupport::BestSeconds(
            [&] {
                uLongf size = static_cast<uLongf>(out.size());
                uncompress(out.data(), &size, packed.data(), static_cast<uLong>(packed.size()));
            },
            7);
        allMet &= benchsupport::ReportRatio("8 MB deflated item vs zlib uncompress", ours, reference, 1.2);
    }
    return allMet ? 0 : 1;
}
