#pragma once

// The foundation's strings, as the control's table holds them, and a few of
// the tests' own.
#include "foundation/FoundationStrings.h"

#define IDS_TEST_TWO_LINES 6200
#define IDS_TEST_LONG 6201
#define IDS_TEST_INSERTS 6202
#define IDS_TEST_HIGHEST 65535

// Not in the table.
#define IDS_TEST_MISSING 6049
