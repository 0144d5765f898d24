#pragma once

#define IDD_RESIZABLE 300
#define IDD_EMPTY 301
#define IDC_STAY 10
#define IDC_STRETCH 11
#define IDC_MOVE 12
#define IDC_BOTH 13
#define IDC_PROPORTIONAL 14
#define IDC_MISSING 15
