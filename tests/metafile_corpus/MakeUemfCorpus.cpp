// Writes metafiles with libuemf, an independent writer that drawing programs
// use, as a C++ table for the tests: make_uemf_corpus OUTPUT.inc SCRATCH_DIR.
// Built and run on the build machine (libuemf is a native library), also for
// the Windows build, whose tests include the table.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#include <uemf.h>
#include <uwmf.h>
}

namespace {

using Bytes = std::vector<unsigned char>;

Bytes ReadBack(const std::string& path) {
    Bytes bytes;
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return bytes;
    int c;
    while ((c = std::fgetc(f)) != EOF) bytes.push_back(static_cast<unsigned char>(c));
    std::fclose(f);
    std::remove(path.c_str());
    return bytes;
}

void Fail(const char* what) {
    std::fprintf(stderr, "make_uemf_corpus: %s failed\n", what);
    std::exit(1);
}

// A drawing of a red box, a blue ellipse over it and a black polyline, on a
// window of 400 x 300 units in a placeable metafile of 1440 units an inch;
// with an MFCOMMENT escape amid the drawing when asked.
Bytes Wmf(const std::string& scratch, bool escape) {
    const std::string path = scratch + "/uemf.wmf";
    WMFTRACK* wt = nullptr;
    WMFHANDLES* wht = nullptr;
    if (wmf_start(path.c_str(), 4096, 4096, &wt) != 0 || wmf_htable_create(32, 32, &wht) != 0)
        Fail("wmf_start");
    U_PAIRF size{400.0f / 1440.0f, 300.0f / 1440.0f};
    wmf_header_append(reinterpret_cast<U_METARECORD*>(U_WMRHEADER_set(&size, 1440)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(U_WMRSETWINDOWORG_set(U_POINT16{0, 0})), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(U_WMRSETWINDOWEXT_set(U_POINT16{400, 300})), wt, 1);
    uint32_t pen = 0, red = 0, blue = 0;
    U_PEN penRecord{U_PS_SOLID, {3, 0}, U_RGB(0, 0, 0)};
    wmf_append(reinterpret_cast<U_METARECORD*>(wcreatepenindirect_set(&pen, wht, penRecord)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(wselectobject_set(pen, wht)), wt, 1);
    U_WLOGBRUSH redBrush{U_BS_SOLID, U_RGB(220, 0, 0), 0};
    wmf_append(reinterpret_cast<U_METARECORD*>(wcreatebrushindirect_set(&red, wht, redBrush)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(wselectobject_set(red, wht)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(U_WMRRECTANGLE_set(U_RECT16{20, 20, 220, 160})), wt, 1);
    if (escape) {
        const char comment[] = "written by libuemf";
        wmf_append(reinterpret_cast<U_METARECORD*>(U_WMRESCAPE_set(15, sizeof comment, comment)), wt, 1);
    }
    U_WLOGBRUSH blueBrush{U_BS_SOLID, U_RGB(0, 0, 200), 0};
    wmf_append(reinterpret_cast<U_METARECORD*>(wcreatebrushindirect_set(&blue, wht, blueBrush)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(wselectobject_set(blue, wht)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(U_WMRELLIPSE_set(U_RECT16{150, 100, 380, 280})), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(wdeleteobject_set(&red, wht)), wt, 1);
    const U_POINT16 line[3] = {{30, 280}, {120, 200}, {250, 290}};
    wmf_append(reinterpret_cast<U_METARECORD*>(U_WMRPOLYLINE_set(3, line)), wt, 1);
    wmf_append(reinterpret_cast<U_METARECORD*>(U_WMREOF_set()), wt, 1);
    if (wmf_finish(wt) != 0) Fail("wmf_finish");
    wmf_free(&wt);
    wmf_htable_free(&wht);
    return ReadBack(path);
}

// An EMF+ record stream as dual-mode files carry it in a comment: the "EMF+"
// identifier, an EMF+ header record and an end-of-file record.
std::string EmfPlusComment() {
    std::string data("EMF+", 4);
    auto put16 = [&data](unsigned v) {
        data += static_cast<char>(v & 0xFF);
        data += static_cast<char>(v >> 8 & 0xFF);
    };
    auto put32 = [&](unsigned v) {
        put16(v & 0xFFFF);
        put16(v >> 16);
    };
    put16(0x4001);  // EmfPlusHeader
    put16(1);       // dual
    put32(28);
    put32(16);
    put32(0xDBC01002);  // version
    put32(1);           // made for a video display
    put32(96);
    put32(96);
    put16(0x4002);  // EmfPlusEndOfFile
    put16(0);
    put32(12);
    put32(0);
    return data;
}

// The same drawing as the Windows metafile, in device units of a 1024 x 768
// reference device of 320 x 240 mm; with a comment (text or EMF+) after the
// header when asked.
Bytes Emf(const std::string& scratch, const std::string& comment) {
    const std::string path = scratch + "/uemf.emf";
    EMFTRACK* et = nullptr;
    EMFHANDLES* eht = nullptr;
    if (emf_start(path.c_str(), 4096, 4096, &et) != 0 || emf_htable_create(32, 32, &eht) != 0)
        Fail("emf_start");
    const U_RECTL bounds{0, 0, 399, 299};
    const U_RECTL frame{0, 0, 12500, 9375};  // 400 x 300 pixels in hundredths of a millimetre
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(U_EMRHEADER_set(bounds, frame, nullptr, 0, nullptr,
                                                                  U_SIZEL{1024, 768}, U_SIZEL{320, 240}, 0)),
               et, 1);
    if (!comment.empty())
        emf_append(reinterpret_cast<U_ENHMETARECORD*>(
                       U_EMRCOMMENT_set(static_cast<U_CBDATA>(comment.size()), comment.data())),
                   et, 1);
    uint32_t pen = 0, red = 0, blue = 0;
    U_LOGPEN penRecord{U_PS_SOLID, {3, 3}, U_RGB(0, 0, 0)};
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(createpen_set(&pen, eht, penRecord)), et, 1);
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(selectobject_set(pen, eht)), et, 1);
    U_LOGBRUSH redBrush{U_BS_SOLID, U_RGB(220, 0, 0), 0};
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(createbrushindirect_set(&red, eht, redBrush)), et, 1);
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(selectobject_set(red, eht)), et, 1);
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(U_EMRRECTANGLE_set(U_RECTL{20, 20, 220, 160})), et, 1);
    U_LOGBRUSH blueBrush{U_BS_SOLID, U_RGB(0, 0, 200), 0};
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(createbrushindirect_set(&blue, eht, blueBrush)), et, 1);
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(selectobject_set(blue, eht)), et, 1);
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(U_EMRELLIPSE_set(U_RECTL{150, 100, 380, 280})), et, 1);
    const U_POINT16 line[3] = {{30, 280}, {120, 200}, {250, 290}};
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(U_EMRPOLYLINE16_set(U_RECTL{30, 200, 250, 290}, 3, line)),
               et, 1);
    emf_append(reinterpret_cast<U_ENHMETARECORD*>(U_EMREOF_set(0, nullptr, et)), et, 1);
    if (emf_finish(et, eht) != 0) Fail("emf_finish");
    emf_free(&et);
    emf_htable_free(&eht);
    return ReadBack(path);
}

void Write(FILE* out, const char* name, const Bytes& bytes) {
    if (bytes.empty()) Fail(name);
    std::fprintf(out, "{\"%s\", {", name);
    for (size_t i = 0; i < bytes.size(); ++i) std::fprintf(out, "%s%u,", i % 24 == 0 ? "\n" : "", bytes[i]);
    std::fprintf(out, "}},\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_uemf_corpus OUTPUT.inc SCRATCH_DIR\n");
        return 2;
    }
    FILE* out = std::fopen(argv[1], "w");
    if (out == nullptr) Fail("opening the output");
    std::fprintf(out, "// Written by make_uemf_corpus with libuemf; each entry a name and its bytes.\n");
    Write(out, "uemf-wmf", Wmf(argv[2], false));
    Write(out, "uemf-wmf-escape", Wmf(argv[2], true));
    Write(out, "uemf-emf", Emf(argv[2], std::string()));
    Write(out, "uemf-emf-comment", Emf(argv[2], std::string("written by libuemf\0\0", 20)));
    Write(out, "uemf-emf-plus", Emf(argv[2], EmfPlusComment()));
    return std::fclose(out) == 0 ? 0 : 1;
}
