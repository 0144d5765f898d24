// Writes the starting corpora of fuzz_thm and fuzz_metafile_check into
// <directory>/corpus_thm and <directory>/corpus_metafile_check: small .thm
// files and metafiles of each kind with a spread of record kinds.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "MetafileBuilder.h"
#include "thumbnails/ThmFile.h"

using metafilebuilder::Bytes;

namespace {

bool Write(const std::string& path, const Bytes& bytes) {
    FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool ok = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && ok;
}

// A whole 24-bit BMP file of width x height.
Bytes Bmp(uint32_t width, uint32_t height) {
    const uint32_t stride = (width * 3 + 3) / 4 * 4;
    Bytes out = {'B', 'M'};
    metafilebuilder::Put32(out, 54 + stride * height);
    metafilebuilder::Put32(out, 0);
    metafilebuilder::Put32(out, 54);
    for (uint32_t v : {40u, width, height}) metafilebuilder::Put32(out, v);
    metafilebuilder::Put16(out, 1);
    metafilebuilder::Put16(out, 24);
    for (uint32_t v : {0u, stride * height, 2835u, 2835u, 0u, 0u}) metafilebuilder::Put32(out, v);
    for (uint32_t i = 0; i < stride * height; ++i) out.push_back(static_cast<uint8_t>(i * 13));
    return out;
}

Bytes RegionEmf() {
    using namespace metafilebuilder;
    const Bytes region = Concat({Words32({32, 1, 1, 16}), Words32({0, 0, 8, 8}), Words32({1, 1, 7, 7})});
    Bytes gradient = Words32({0, 0, 10, 10, 3, 1, 2});
    for (int i = 0; i < 3; ++i)
        gradient = Concat({gradient, Words32({static_cast<uint32_t>(i * 4), 0, 0xFF00, 0})});
    gradient = Concat({gradient, Words32({0, 1, 2})});
    EmfBuilder emf(3);
    emf.Record(39, EmrCreateBrush(1, 2, 3))
        .Record(75, Concat({Words32({static_cast<uint32_t>(region.size()), 1}), region}))
        .Record(71, Concat({Words32({0, 0, 10, 10, static_cast<uint32_t>(region.size()), 1}), region}))
        .Record(118, gradient)
        .Record(8, Words32({0, 0, 10, 10, 2, 5, 3, 2, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4}))
        .Record(83, EmrExtTextOutW("ab", true))
        .Record(40, EmrObject(1));
    return emf.Finish();
}

Bytes RegionWmf() {
    using namespace metafilebuilder;
    const Dib dib = MakeDib(8, 8, 1);
    Bytes brush;
    Put16(brush, 5);
    Put16(brush, 0);
    brush.insert(brush.end(), dib.info.begin(), dib.info.end());
    brush.insert(brush.end(), dib.bits.begin(), dib.bits.end());
    WmfBuilder wmf(3);
    wmf.Record(0x06FF, {0, 6, 0, 0, 0, 1, 2, 0, 0, 10, 10, 2, 0, 10, 0, 10, 2})
        .RecordBytes(0x0142, brush)
        .Record(0x0228, {0, 1})
        .Record(0x0538, {2, 2, 1, 0, 0, 1, 1, 2, 2})
        .Record(0x0A32, {10, 20, 2, 4, 0, 0, 9, 9, 0x4241})
        .Record(0x012C, {0})
        .Record(0x01F0, {0});
    return wmf.Finish();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <fuzz/thumbnails directory>\n", argv[0]);
        return 2;
    }
    const std::string thm = std::string(argv[1]) + "/corpus_thm/";
    const std::string metafile = std::string(argv[1]) + "/corpus_metafile_check/";
    const Bytes bmp = Bmp(3, 2);
    bool ok = true;
    ok &= Write(thm + "path-and-bmp", thumbnails::EncodeThm("c:\\art\\boat.bmp", "", bmp.data(), bmp.size()));
    ok &= Write(thm + "name-and-bmp", thumbnails::EncodeThm("", "art\\boat.bmp", bmp.data(), bmp.size()));
    ok &= Write(thm + "empty-texts", thumbnails::EncodeThm("", "", bmp.data(), bmp.size()));
    ok &= Write(thm + "no-image", thumbnails::EncodeThm("c:\\a.bmp", "a.bmp", nullptr, 0));
    ok &= Write(thm + "two-zero-lengths", Bytes(8, 0));

    using namespace metafilebuilder;
    ok &= Write(metafile + "emf-empty", EmfBuilder().Finish());
    ok &= Write(metafile + "emf-sample", SampleEmf());
    ok &= Write(metafile + "emf-regions", RegionEmf());
    ok &= Write(metafile + "wmf-empty", WmfBuilder().Finish());
    ok &= Write(metafile + "wmf-sample", SampleWmf());
    ok &= Write(metafile + "wmf-regions", RegionWmf());
    ok &= Write(metafile + "wmf-placeable", Placeable(SampleWmf()));
    return ok ? 0 : 1;
}
