#include "foundation/BracketNames.h"

#include <string.h>

#include "foundation/FoundationStrings.h"

namespace foundation {

namespace {

BracketEntry g_bracketEntries[kBracketEntryCount] = {
    {CResString(IDS_BRACKET_FIRST), -2, 16},
    {CResString(IDS_BRACKET_SECOND), -3, 32},
    {CResString(IDS_BRACKET_THIRD), -4, 8},
};

}  // namespace

BracketEntry* FindBracketEntryByIndex(int index) {
    if (index < 0 || index >= kBracketEntryCount) return nullptr;
    return &g_bracketEntries[index];
}

BracketEntry* FindBracketEntryByCode(int code) {
    for (BracketEntry& entry : g_bracketEntries)
        if (entry.code == code) return &entry;
    return nullptr;
}

int GetBracketKind(const char* text) {
    if (text == nullptr || text[0] != '[') return kNoBracketKind;
    // A name that cannot be loaded is empty and matches no text with "[".
    for (BracketEntry& entry : g_bracketEntries)
        if (_stricmp(text, entry.name.GetText().c_str()) == 0) return entry.kind;
    return kNoBracketKind;
}

bool IsBracketName(const char* text) {
    return GetBracketKind(text) != kNoBracketKind;
}

}  // namespace foundation
