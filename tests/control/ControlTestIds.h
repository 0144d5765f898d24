// Resources of the control tests: a stand-in for the browser dialog with the
// controls that the control addresses by identifier.
#pragma once

#define IDD_TEST_BROWSER 900
