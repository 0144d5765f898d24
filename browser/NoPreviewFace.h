// The face in which the no-preview picture's text is drawn. The picture asks
// for "Bookman Old Style" or "Times New Roman"; either may be missing (Wine,
// and Windows without the office fonts, map them to a sans-serif face), and
// then the nearest installed serif face serves, so that the text keeps its
// look. Windows only.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace browser {

// The face that the font mapper of `dc` gives for a zeroed LOGFONT with only
// this height and face name; empty when the font cannot be made or selected.
std::string MappedFaceName(HDC dc, const char* face, int height);

// True when the mapper gives exactly this face (compared case-insensitively)
// and it belongs to the roman, that is serif, family.
bool IsInstalledSerifFace(HDC dc, const char* face, int height);

// The faces tried when `requested` is missing, nearest in design first.
const std::vector<const char*>& SerifFallbackFaces(const char* requested);

// `requested` when the mapper gives it; otherwise the first installed face of
// SerifFallbackFaces; otherwise the face the mapper gives for `requested`
// when that one is serif; otherwise the first scalable serif family that
// the system lists, by name; otherwise `requested`, which then is all there
// is to ask for.
std::string ResolveSerifFace(HDC dc, const char* requested, int height);

}  // namespace browser
