// The manifest from which `qlt create` makes a container: a text file of one
// directive per line, items in blocks that each begin with `item NAME`. The
// format is described in docs/qlt.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "containers/writer/ArtContainerWriter.h"

namespace qlt {

enum class ManifestStatus {
    kOk,
    kInvalid,     // the manifest's own lines are wrong; see the messages
    kUnreadable,  // the manifest or a file that it names can't be read
};

struct ManifestResult {
    ManifestStatus status = ManifestStatus::kOk;
    std::vector<std::string> messages;  // "FILE:LINE: what is wrong", one per problem
};

// Parses `text` (the manifest's contents) and adds its settings and items to
// `writer`. Relative file names are taken from `folder`; `label` names the
// manifest in messages.
ManifestResult ParseManifest(const std::string& text, const std::string& folder, const std::string& label,
                             containers::ArtContainerWriter& writer);

// Reads the manifest at `path`, then as ParseManifest, with the manifest's
// own folder for relative names.
ManifestResult LoadManifest(const std::string& path, containers::ArtContainerWriter& writer);

// Whole-file helpers, with 8-bit names as the rest of the system uses them.
bool ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes, std::string& error);
// The folder part of `path` (up to its last slash or backslash), or "".
std::string FolderOf(const std::string& path);
// `name` taken from `folder` unless it is absolute.
std::string ResolveAgainst(const std::string& folder, const std::string& name);
// A data chunk's method: 0 or stored, 1 or zlib, 2 or implode.
bool ParseMethod(const std::string& text, int32_t& method);
// A whole text as a decimal or 0x-hexadecimal integer, with an optional sign.
bool ParseInteger(const std::string& text, int64_t& value);

}  // namespace qlt
