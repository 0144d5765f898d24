// Reading a container against plain reads of the same bytes:
//  - every large rendition of a 1,000-item container, against one read of the
//    whole file;
//  - an item's deflated data read through the container, against zlib's own
//    uncompress of the same bytes in memory;
//  - the keywords of the one item that a 22 KB keyword map names 83,200
//    times, against building the same text straight from the file's bytes,
//    and the same for a map four times as long: a cost above linear in the
//    text would show as a larger ratio there. Both run near 5 on a quiet
//    machine; a text copied at every append ran over a thousand.
#include <zlib.h>

#include <cstdio>
#include <random>
#include <vector>

#include "containers/ArtContainer.h"
#include "containers/ContainerImage.h"
#include "containers/writer/ArtContainerWriter.h"
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

// A container of one item whose 16 keywords share one list that names the
// item `repeats` times.
std::string HostileKeywordContainer(testsupport::TempDir& dir, int32_t repeats, const std::string& name,
                                    containers::ArtLayoutInfo& layout) {
    containers::ArtContainerWriter writer;
    containers::ArtItemSource item;
    item.name = "one";
    item.path = "one.bmp";
    writer.AddItem(item);
    containers::KeywordIndexPlan index;
    index.lists.push_back(std::vector<int32_t>(static_cast<size_t>(repeats), 1));
    for (int k = 0; k < 16; ++k) {
        containers::KeywordPair pair;
        pair.key = containers::MapText::Narrow("keyword" + std::to_string(100 + k));
        pair.listIndex = 0;
        index.pairs.push_back(pair);
    }
    writer.SetKeywordIndex(index);
    std::vector<uint8_t> bytes;
    std::string error;
    if (!writer.Build(bytes, error, &layout)) std::printf("writer: %s\n", error.c_str());
    return dir.Write(name, bytes);
}

// The item's keyword text built with nothing but appends, from one read of
// the file: the least that any reader has to do for it. The keywords come in
// the order of the two map walks that the reader makes, one map of 16 keys
// filled from the other.
std::string KeywordsByHand(const std::string& path, const containers::ArtLayoutInfo& layout) {
    framework::File file;
    std::string error;
    file.OpenForReading(path, error);
    std::vector<uint8_t> all(static_cast<size_t>(file.Length()));
    file.Read(all.data(), all.size());
    const int32_t count = containers::LoadLong(&all[static_cast<size_t>(layout.listOffsets[0])]);
    framework::StringMap read;
    for (int k = 0; k < 16; ++k) read.SetAt("keyword" + std::to_string(100 + k), "");
    framework::StringMap walked;
    read.ForEach([&](const std::string& keyword, const std::string&) { walked.SetAt(keyword, ""); });
    std::string text = ",";
    walked.ForEach([&](const std::string& keyword, const std::string&) {
        for (int32_t i = 0; i < count; ++i) text.append(keyword).append(",");
    });
    return text;
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

    {
        containers::ArtLayoutInfo small;
        containers::ArtLayoutInfo large;
        const std::string smallPath = HostileKeywordContainer(dir, 5200, "hostile.qlt", small);
        const std::string largePath = HostileKeywordContainer(dir, 4 * 5200, "hostile4.qlt", large);
        containers::CArtContainer container;
        container.Open(smallPath);
        const std::string expected = KeywordsByHand(smallPath, small);
        if (container.GetItemKeywords(1) != expected) std::printf("keyword texts differ\n");
        const double ours = benchsupport::BestSeconds([&] { container.GetItemKeywords(1); }, 15);
        const double reference = benchsupport::BestSeconds([&] { KeywordsByHand(smallPath, small); }, 15);
        allMet &= benchsupport::ReportRatio("22 KB hostile keyword map vs appends", ours, reference, 20.0);

        containers::CArtContainer larger;
        larger.Open(largePath);
        const double fourTimes = benchsupport::BestSeconds([&] { larger.GetItemKeywords(1); }, 15);
        const double largeReference =
            benchsupport::BestSeconds([&] { KeywordsByHand(largePath, large); }, 15);
        std::printf("  (4x the map: ours %.2fx, appends %.2fx the time of the 22 KB map)\n", fourTimes / ours,
                    largeReference / reference);
        allMet &= benchsupport::ReportRatio("88 KB hostile keyword map vs appends", fourTimes, largeReference,
                                            20.0);
    }
    return allMet ? 0 : 1;
}
