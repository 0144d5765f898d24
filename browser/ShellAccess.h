// The shell and system queries of the browser, each a thin wrapper that
// gives the answer as text or numbers and throws the convention's bare
// integer where the caller's catch-all is meant to end the work.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <string>
#include <vector>

namespace browser {

// CSIDL values of the folders the browser asks for.
constexpr int kDesktopDirectoryFolder = 0x10;  // CSIDL_DESKTOPDIRECTORY
constexpr int kDrivesFolder = 0x11;            // CSIDL_DRIVES

// SHGetFileInfo flags: the index in the system's small-icon list
// (SHGFI_SYSICONINDEX | SHGFI_SMALLICON), and a file's small icon with its
// index (SHGFI_ICON | SHGFI_SMALLICON).
constexpr UINT kSystemSmallIconIndex = 0x4001;
constexpr UINT kSmallFileIcon = 0x101;

// The file system path of a special folder (SHGetSpecialFolderLocation, then
// SHGetPathFromIDList); throws the source line when either fails.
std::string GetSpecialFolderPath(int folder);

// Whether the shell has a location for the special folder: the result of
// SHGetSpecialFolderLocation, its item list freed.
HRESULT QuerySpecialFolderLocation(int folder);

// The root strings ("C:\") that GetLogicalDriveStrings writes into a buffer
// of `bufferSize` bytes; empty when it writes nothing. Only what lies within
// the buffer is read, so a system that needs more room gives fewer roots.
std::vector<std::string> LogicalDriveRoots(DWORD bufferSize);

// How the browser asks the shell about a file: SHGetFileInfoA's signature.
// Replaceable, so that tests can have the shell answer nothing; a null
// function stands for the system's own. Returns the one it replaces.
using ShellFileInfoFunction = DWORD_PTR (*)(const char* path, DWORD attributes, SHFILEINFOA* info,
                                            UINT infoSize, UINT flags);
ShellFileInfoFunction SetShellFileInfoFunction(ShellFileInfoFunction function);

// SHGetFileInfo with `flags` on `path`: the icon index it reports (0 when it
// reports nothing, as the zeroed record says), its result in *answered, and
// the icon it may hand out destroyed at once.
int ShellIconIndex(const std::string& path, UINT flags, bool* answered = nullptr);

// The system's small-icon list, as SHGetFileInfo with SHGFI_SYSICONINDEX |
// SHGFI_SMALLICON on `path` hands it out; the shell owns it.
HIMAGELIST SystemSmallImageList(const std::string& path);

}  // namespace browser
