#include "browser/NoPreviewFace.h"

#include <algorithm>
#include <cstring>

#include "framework/win32/GdiHandles.h"

namespace browser {

namespace {

using framework::win32::SelectionGuard;
using framework::win32::UniqueFont;

bool SameFace(const char* a, const char* b) {
    return ::lstrcmpiA(a, b) == 0;
}

LOGFONTA FaceRequest(const char* face, int height) {
    LOGFONTA font{};
    font.lfHeight = height;
    if (face != nullptr) ::lstrcpynA(font.lfFaceName, face, LF_FACESIZE);
    return font;
}

struct MappedFace {
    std::string name;
    BYTE pitchAndFamily = 0;
};

MappedFace MapFace(HDC dc, const char* face, int height) {
    MappedFace mapped;
    if (dc == nullptr || face == nullptr) return mapped;
    const LOGFONTA request = FaceRequest(face, height);
    UniqueFont font(::CreateFontIndirectA(&request));
    if (!font) return mapped;
    SelectionGuard selection(dc, font.Get());
    if (!selection.Succeeded()) return mapped;
    char name[LF_FACESIZE] = {};
    if (::GetTextFaceA(dc, LF_FACESIZE, name) <= 0) return mapped;
    TEXTMETRICA metrics{};
    if (!::GetTextMetricsA(dc, &metrics)) return mapped;
    name[LF_FACESIZE - 1] = '\0';
    mapped.name = name;
    mapped.pitchAndFamily = metrics.tmPitchAndFamily;
    return mapped;
}

bool IsRoman(BYTE pitchAndFamily) {
    return (pitchAndFamily & 0xF0) == FF_ROMAN;
}

// Faces with the heavy, round serifs of Bookman first, then the book faces
// that come nearest, then the sturdy text serifs, then the Times faces.
const std::vector<const char*>& BookmanFallbacks() {
    static const std::vector<const char*> faces = {"URW Bookman",
                                                   "URW Bookman L",
                                                   "TeX Gyre Bonum",
                                                   "Bookman",
                                                   "ITC Bookman",
                                                   "Century Schoolbook",
                                                   "New Century Schoolbook",
                                                   "Century Schoolbook L",
                                                   "C059",
                                                   "TeX Gyre Schola",
                                                   "Century",
                                                   "DejaVu Serif",
                                                   "Bitstream Vera Serif",
                                                   "Georgia",
                                                   "Times New Roman",
                                                   "Liberation Serif",
                                                   "Tinos",
                                                   "Nimbus Roman",
                                                   "Nimbus Roman No9 L",
                                                   "TeX Gyre Termes",
                                                   "Times",
                                                   "FreeSerif",
                                                   "Noto Serif",
                                                   "Cambria"};
    return faces;
}

// Faces with the metrics of Times New Roman first, then other Times cuts,
// then any common text serif.
const std::vector<const char*>& TimesFallbacks() {
    static const std::vector<const char*> faces = {"Liberation Serif", "Tinos",
                                                   "Nimbus Roman",     "Nimbus Roman No9 L",
                                                   "TeX Gyre Termes",  "Times",
                                                   "FreeSerif",        "Thorndale",
                                                   "DejaVu Serif",     "Bitstream Vera Serif",
                                                   "Noto Serif",       "Georgia",
                                                   "Cambria",          "Century Schoolbook",
                                                   "Bookman Old Style"};
    return faces;
}

struct SerifFamilies {
    std::vector<std::string> names;
};

int CALLBACK CollectSerifFamily(const LOGFONTA* font, const TEXTMETRICA*, DWORD fontType, LPARAM data) {
    auto* families = reinterpret_cast<SerifFamilies*>(data);
    // Raster faces come in fixed sizes and vertical ones ("@...") lie on
    // their side: neither can set the picture's text.
    if ((fontType & RASTER_FONTTYPE) != 0 || font->lfFaceName[0] == '@') return 1;
    if (!IsRoman(font->lfPitchAndFamily)) return 1;
    families->names.emplace_back(font->lfFaceName);
    return 1;
}

std::string FirstListedSerifFamily(HDC dc) {
    SerifFamilies families;
    LOGFONTA all{};
    all.lfCharSet = DEFAULT_CHARSET;
    ::EnumFontFamiliesExA(dc, &all, CollectSerifFamily, reinterpret_cast<LPARAM>(&families), 0);
    if (families.names.empty()) return std::string();
    // By name, so that the choice does not hang on the order of listing.
    return *std::min_element(families.names.begin(), families.names.end());
}

}  // namespace

std::string MappedFaceName(HDC dc, const char* face, int height) {
    return MapFace(dc, face, height).name;
}

bool IsInstalledSerifFace(HDC dc, const char* face, int height) {
    const MappedFace mapped = MapFace(dc, face, height);
    return !mapped.name.empty() && SameFace(mapped.name.c_str(), face) && IsRoman(mapped.pitchAndFamily);
}

const std::vector<const char*>& SerifFallbackFaces(const char* requested) {
    if (requested != nullptr && SameFace(requested, "Bookman Old Style")) return BookmanFallbacks();
    return TimesFallbacks();
}

std::string ResolveSerifFace(HDC dc, const char* requested, int height) {
    const char* asked = requested != nullptr ? requested : "";
    const MappedFace mapped = MapFace(dc, asked, height);
    if (!mapped.name.empty() && SameFace(mapped.name.c_str(), asked)) return asked;
    for (const char* face : SerifFallbackFaces(asked)) {
        if (IsInstalledSerifFace(dc, face, height)) return face;
    }
    if (!mapped.name.empty() && IsRoman(mapped.pitchAndFamily)) return mapped.name;
    std::string listed = FirstListedSerifFamily(dc);
    if (!listed.empty()) return listed;
    return asked;
}

}  // namespace browser
