#pragma once

#define IDD_TEST_DIALOG 100
#define IDC_TEST_EDIT 1001
#define IDC_TEST_BUTTON 1002
