#pragma once

// Strings of the control's table that the tests need, and a few of their own.
#define IDS_BRACKET_FIRST 6010
#define IDS_BRACKET_SECOND 6011
#define IDS_BRACKET_THIRD 6012
#define IDS_ASSERT_WITH_FILE 6051
#define IDS_ASSERT_WITHOUT_FILE 6052
#define IDS_STD_FONT_FACE 6104
#define IDS_STD_FONT_FIXED_FACE 6110

#define IDS_TEST_TWO_LINES 6200
#define IDS_TEST_LONG 6201
#define IDS_TEST_INSERTS 6202
#define IDS_TEST_HIGHEST 65535

// Not in the table.
#define IDS_TEST_MISSING 6049
