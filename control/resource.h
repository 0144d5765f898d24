// Resource identifiers of the control module. Read by the resource compiler
// as well as by C++: #define lines only.
#pragma once

#define IDS_LUMBREL 1
#define IDS_LUMBREL_PPG 5
#define IDS_LUMBREL_PPG_CAPTION 200

#define IDD_ABOUTBOX_LUMBREL 2
#define IDD_PROPPAGE_LUMBREL 201

#define IDB_LUMBREL 3
#define IDI_ABOUTDLL 1

#define IDC_ABOUT_TITLE 1001
#define IDC_ABOUT_NOTE 1002
#define IDC_PROPPAGE_NOTE 1003
