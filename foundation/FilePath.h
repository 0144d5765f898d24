// Paths as the system exchanges them: plain ANSI Windows path texts with a
// backslash as separator, a drive ("c:") or a server path ("\\srv\share"),
// and the extension after the last dot. Everything here is text work on the
// path as it stands: nothing normalises case or resolves "." and "..", and
// nothing asks the file system except the functions marked so.
//
// Several functions answer differently from their near namesakes for a path
// with no separator or no dot (ExtractFileName and ExtractFileTitle,
// MakePath and SetExtension, SetFileName). Callers depend on each of these
// answers; they are kept on purpose.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace foundation {

// Room of a path buffer, terminator included, as records and SetPath keep it.
inline constexpr std::size_t kMaxPathText = 260;

// The text after the last "\", failing that after the last ":"; with
// neither, the empty text ("a.txt" has no file name here).
std::string ExtractFileName(const std::string& path);
// The file name up to its first dot ("c:\a.b.jpg" gives "a"); a file name
// without a dot has the empty title. A path with no "\" and no ":" is its
// own title, extension included ("a.b" gives "a.b").
std::string ExtractFileTitle(const std::string& path);
// The text after the last dot of the whole path, directories included
// ("c:\dir.d\file" gives "d\file"); with no dot, the empty text.
std::string ExtractExtension(const std::string& path);
// The path as it is. The title is not joined back to its directory; callers
// take the full path from here.
std::string ExtractTitledPath(const std::string& path);

// Joins directory, file and extension; a null part is not given.
//  - A file, even an empty one, follows a backslash unless the text so far
//    is empty or ends in one; its own leading backslashes are dropped.
//  - An extension first cuts the extension the text already has (as
//    ExtractExtension sees it); all its own leading dots are dropped, and
//    what is left follows a dot. So an empty extension removes the old one.
std::string MakePath(const char* directory, const char* file, const char* extension);
// The same into `out`, truncated to `outSize` - 1 characters and always
// terminated when `outSize` is above 0. True when the whole text fitted.
bool MakePath(char* out, std::size_t outSize, const char* directory, const char* file, const char* extension);

// Asks which network name the drive `drive` ("X:") is connected to, as
// WNetGetConnectionA does: on success writes the terminated name into
// `name`, which has room for `*length` bytes, and returns true; on failure
// returns false and may change `*length` (to the room it would need).
using NetworkNameQuery = std::function<bool(const char* drive, char* name, std::uint32_t* length)>;

// A path on a connected drive ("x:\a") with the drive replaced by its
// network name ("\\srv\share\a"); any other path unchanged.
std::string ToUncPath(const std::string& path, const NetworkNameQuery& query);
// A network path with its network name replaced by the first drive, from A:
// to Z:, whose connection it begins with, compared without case and without
// regard to where the name ends; a path with a drive, or with no such
// drive, unchanged. The room told to the query is set once, before the
// walk: what a call leaves in it is what the next call is told, though
// never more than kMaxPathText.
std::string ToDrivePath(const std::string& path, const NetworkNameQuery& query);

class CFilePath;

#ifdef _WIN32
// These ask the file system or the network (FilePathWin32.cpp).

// True for an existing file of more than 0 bytes. A directory is never a
// file here; a path that cannot be examined is no file.
bool IsNonEmptyFile(const std::string& path);
CFilePath GetCurrentDirectoryPath();
CFilePath GetWindowsDirectoryPath();
// A new CFilePath on which SetTempName(keep) has been run.
CFilePath MakeTempFilePath(bool keep);
// ToUncPath and ToDrivePath with the connections of this session.
std::string ToUncPath(const std::string& path);
std::string ToDrivePath(const std::string& path);

// Prefix of temporary file names (the system uses its first three letters).
inline constexpr char kTempFilePrefix[] = "Lumbrel";
#endif

// A value class around one path text, which callers read and write directly.
class CFilePath {
public:
    CFilePath() = default;
    // A null text is the empty path.
    explicit CFilePath(const char* text);
    // The first `length` characters of `text`, fewer where it ends before;
    // a null text or a negative length gives the empty path.
    CFilePath(const char* text, int length);
    explicit CFilePath(const std::string& text);
    // As SetPath.
    CFilePath(const char* directory, const char* file, const char* extension);
    CFilePath(const CFilePath&) = default;
    CFilePath(CFilePath&&) = default;
    CFilePath& operator=(const CFilePath&) = default;
    CFilePath& operator=(CFilePath&&) = default;
    virtual ~CFilePath();

    std::string GetExtension() const { return ExtractExtension(path); }
    std::string GetFileName() const { return ExtractFileName(path); }
    std::string GetFileTitle() const { return ExtractFileTitle(path); }
    std::string GetTitledPath() const { return ExtractTitledPath(path); }

    // `path` becomes MakePath of the three parts, cut to kMaxPathText - 1
    // characters as the buffer it goes through holds no more.
    void SetPath(const char* directory, const char* file, const char* extension);
    // Cuts the current extension with its dot; then a given, non-empty
    // extension follows one dot ("thm" and ".thm" alike; a second leading
    // dot stays, unlike MakePath).
    void SetExtension(const char* extension);
    // Drops the name's leading backslashes. An empty path becomes the name;
    // otherwise as many characters as the file *title* has are cut from the
    // end and the name appended: "c:\a\b.txt" with "n" gives "c:\a\b.txn".
    // The extension is not cut with the title; SetFileNameKeepExtension
    // lives with that.
    void SetFileName(const char* name);
    // The name, followed by "." and the current extension when there is one,
    // given to SetFileName.
    void SetFileNameKeepExtension(const char* name);
    // Relative when the character after the first ":" (or, with none, the
    // first character) is not a backslash; "/" counts as relative. The
    // empty path is not relative.
    bool IsRelative() const;

#ifdef _WIN32
    bool Exists() const {
        return IsNonEmptyFile(path);
    }
    // `path` becomes a new temporary file name in the temporary directory;
    // the file made to reserve it stays when `keep` is set and is deleted
    // otherwise. When no name can be made, `path` becomes empty.
    void SetTempName(bool keep);
    // The system's short form of the path, or a copy when there is none.
    CFilePath GetShortPath() const;
    // The name alone, without directory, of the first entry that the system
    // finds for the path (which may hold wildcards), in the case it has on
    // disk. The search handle is tested against 0, not against the invalid
    // handle, so a missing file gives not a copy but the empty path.
    CFilePath GetFoundName() const;
#endif

    std::string path;
};

}  // namespace foundation
