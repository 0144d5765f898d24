// The portable build of qlt has no imaging layer: pictures are decoded with
// WIC, which only Windows (or Wine) offers.
#include "tools/qlt/FolderSource.h"

namespace qlt {

bool CanCreateFromFolder() {
    return false;
}

FolderResult AddFolderItems(const FolderRequest&, containers::ArtContainerWriter&) {
    FolderResult result;
    result.status = FolderStatus::kUnsupported;
    result.messages.push_back(
        "--from needs the Windows build of qlt (qlt.exe), which decodes pictures through WIC; "
        "this build can only create from a manifest (--manifest). On Linux, run qlt.exe under Wine");
    return result;
}

}  // namespace qlt
