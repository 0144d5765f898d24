// Resource ids of the strings that the foundation reads from the module's
// table: the bracket names, the assertion messages and the font faces. Read
// by the resource compiler as well as by C++: #define lines only.
#pragma once

#define IDS_BRACKET_FIRST 6010
#define IDS_BRACKET_SECOND 6011
#define IDS_BRACKET_THIRD 6012
#define IDS_ASSERT_WITH_FILE 6051
#define IDS_ASSERT_WITHOUT_FILE 6052
#define IDS_STD_FONT_FACE 6104
#define IDS_STD_FONT_FIXED_FACE 6110
