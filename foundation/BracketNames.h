// Names in square brackets that stand for something other than a folder or
// a file of the same name. Three rows map a name (a resource string) to a
// code and a kind.
#pragma once

#include "foundation/resstr.h"

namespace foundation {

struct BracketEntry {
    CResString name;
    int code;
    int kind;
};

inline constexpr int kBracketEntryCount = 3;
// The kind of every text that is no bracket name.
inline constexpr int kNoBracketKind = 1;

// Row 0 (resource 6010, code -2, kind 16), 1 (6011, -3, 32) or 2 (6012, -4,
// 8); null for any other index.
BracketEntry* FindBracketEntryByIndex(int index);
// The row with this code; null when there is none.
BracketEntry* FindBracketEntryByCode(int code);

// For a text that begins with "[", the kind of the row whose name it is,
// compared without case; kNoBracketKind for any other text, null included.
int GetBracketKind(const char* text);
bool IsBracketName(const char* text);

}  // namespace foundation
