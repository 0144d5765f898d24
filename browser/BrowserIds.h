// Resource identifiers of the browser dialog: its template, the controls on
// it, its strings and the drive list's images. Read by the resource compiler
// as well as by C++: #define lines only.
#pragma once

#define IDD_GRAPHIC_DIALOG 202

#define IDC_GALLERY_PLACEHOLDER 212
#define IDC_DRIVE_COMBO 217
#define IDC_GALLERY 1000
#define IDC_FOLDER_TREE 1044
#define IDC_LARGE_THUMBNAILS 1087
#define IDC_SMALL_THUMBNAILS 1088
#define IDC_PRESERVE_ASPECT 1092
#define IDC_AUTO_PLACE 1093

#define IDS_MY_COMPUTER 204
#define IDS_DESKTOP 205
#define IDS_LOCAL_HAR 207
#define IDS_PRODUCT_ENTRY 208
#define IDS_DIRECTORIES_KEY 209
#define IDS_PRIMARY_FOLDER_VALUE 210

#define IDB_DRIVE_IMAGES 134
