#include "tools/qlt/QltCommands.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "containers/ArtContainer.h"
#include "containers/writer/ArtContainerWriter.h"
#include "containers/writer/ChunkCodec.h"
#include "foundation/UserMessage.h"
#include "framework/File.h"
#include "tools/qlt/FolderSource.h"
#include "tools/qlt/Json.h"
#include "tools/qlt/Manifest.h"
#include "tools/qlt/Verify.h"

namespace qlt {

namespace {

const char kGeneralHelp[] =
    "usage: qlt COMMAND [ARGUMENTS]\n"
    "\n"
    "Makes, lists, extracts from and checks .qlt art containers.\n"
    "\n"
    "commands:\n"
    "  create OUT.qlt --manifest FILE         make a container from a manifest\n"
    "  create OUT.qlt --from DIR              make one from the pictures of a folder\n"
    "  info FILE                              the header and the directories\n"
    "  list FILE                              every item: texts, data and renditions\n"
    "  extract FILE ITEM [--rendition KIND] -o OUT\n"
    "                                         an item's data, or one of its renditions\n"
    "  keywords FILE [--word WORD | --item N]\n"
    "                                         the keyword index, one word's items,\n"
    "                                         or one item's words\n"
    "  verify FILE                            check every offset, size, chunk and list\n"
    "\n"
    "The reading commands take --json and then print one JSON object per line.\n"
    "Exit status: 0 fine, 1 problems found, 2 usage error or unreadable file.\n"
    "'qlt COMMAND --help' tells more about one command.\n";

struct Invocation {
    std::vector<std::string> positional;
    std::map<std::string, std::string> values;
    bool json = false;
    std::ostream& out;
    std::ostream& err;

    bool Has(const std::string& option) const { return values.count(option) != 0; }
    const std::string& Value(const std::string& option) const { return values.at(option); }
};

struct OptionEntry {
    const char* name;
    const char* shortName;  // or null
    bool takesValue;
};

struct CommandEntry {
    const char* name;
    size_t positional;
    std::vector<OptionEntry> options;
    const char* help;
    int (*run)(const Invocation&);
};

int UsageError(std::ostream& err, const std::string& command, const std::string& message) {
    err << "qlt " << command << ": " << message << "\n";
    err << "Try 'qlt " << command << " --help'.\n";
    return kExitUsage;
}

std::string KindText(int32_t kind) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned int>(kind));
    return text;
}

std::string MethodName(int32_t method) {
    switch (method) {
        case containers::kMethodStored: return "stored";
        case containers::kMethodZlib: return "zlib";
        case containers::kMethodImplode: return "implode";
        default: return "unknown";
    }
}

std::string TextOf(const char* field, size_t size) {
    const void* nul = std::memchr(field, '\0', size);
    return std::string(field, nul != nullptr ? static_cast<const char*>(nul) : field + size);
}

// Opens the container; when it won't open, the reader has already told the
// user why, through the message handler that RunQlt installs.
bool OpenContainer(containers::CArtContainer& container, const std::string& path, std::ostream& err) {
    container.Init();
    if (path.empty()) {
        err << "qlt: no container named\n";
        return false;
    }
    return container.Open(path);
}

// ITEM on the command line: a number from 1, or else an item's exact name.
bool ResolveItem(containers::CArtContainer& container, const std::string& text, int32_t& item,
                 std::ostream& err) {
    int64_t number = 0;
    if (ParseInteger(text, number)) {
        if (number < 1 || number > container.GetItemCount()) {
            err << "qlt: there is no item " << text << "; the container holds " << container.GetItemCount()
                << " items\n";
            return false;
        }
        item = static_cast<int32_t>(number);
        return true;
    }
    for (int32_t candidate = 1; candidate <= container.GetItemCount(); ++candidate) {
        containers::ArtItemInfo info;
        if (container.GetItemInfo(candidate, info) && info.name == text) {
            item = candidate;
            return true;
        }
    }
    err << "qlt: no item is named \"" << text << "\"\n";
    return false;
}

// The numbers of a list text such as ",3,7,12,".
std::vector<int64_t> NumbersOfList(const std::string& list) {
    std::vector<int64_t> numbers;
    size_t start = 0;
    while (start < list.size()) {
        size_t comma = list.find(',', start);
        if (comma == std::string::npos) comma = list.size();
        if (comma > start) numbers.push_back(std::atol(list.substr(start, comma - start).c_str()));
        start = comma + 1;
    }
    return numbers;
}

// The words of a list text such as ",dog,cat,". A keyword that holds a comma
// can't be told from two words here, which is how the index keeps it.
std::vector<std::string> WordsOfList(const std::string& list) {
    std::vector<std::string> words;
    size_t start = 1;
    while (start < list.size()) {
        size_t comma = list.find(',', start);
        if (comma == std::string::npos) comma = list.size();
        words.push_back(list.substr(start, comma - start));
        start = comma + 1;
    }
    return words;
}

std::string JoinNumbers(const std::vector<int64_t>& numbers) {
    std::string text;
    for (size_t i = 0; i < numbers.size(); ++i) text += (i != 0 ? " " : "") + std::to_string(numbers[i]);
    return text;
}

// Fills the writer from the folder of --from; kExitOk when it holds the items.
int CollectFolder(const Invocation& call, containers::ArtContainerWriter& writer) {
    FolderRequest request;
    request.folder = call.Value("--from");
    if (call.Has("--method") && !ParseMethod(call.Value("--method"), request.method))
        return UsageError(
            call.err, "create",
            "the method is 0 (stored), 1 (zlib) or 2 (implode), not '" + call.Value("--method") + "'");
    if (call.Has("--rendition-format") &&
        !ParseRenditionFormat(call.Value("--rendition-format"), request.format))
        return UsageError(
            call.err, "create",
            "the rendition format is bmp, jpeg or png, not '" + call.Value("--rendition-format") + "'");
    if (call.Has("--keywords")) request.keywordFile = call.Value("--keywords");
    const FolderResult result = AddFolderItems(request, writer);
    for (const std::string& note : result.notes) call.err << "qlt create: " << note << "\n";
    for (const std::string& message : result.messages) call.err << "qlt create: " << message << "\n";
    switch (result.status) {
        case FolderStatus::kOk: return kExitOk;
        case FolderStatus::kProblems: call.err << "qlt create: nothing written\n"; return kExitProblems;
        case FolderStatus::kUnreadable:
        case FolderStatus::kUnsupported: break;
    }
    return kExitUsage;
}

// Fills the writer from the manifest of --manifest; kExitOk when it holds the items.
int CollectManifest(const Invocation& call, containers::ArtContainerWriter& writer) {
    const ManifestResult manifest = LoadManifest(call.Value("--manifest"), writer);
    for (const std::string& message : manifest.messages) call.err << message << "\n";
    if (manifest.status == ManifestStatus::kUnreadable) return kExitUsage;
    if (manifest.status == ManifestStatus::kInvalid) {
        call.err << "qlt create: " << manifest.messages.size()
                 << " problem(s) in the manifest; nothing written\n";
        return kExitProblems;
    }
    return kExitOk;
}

int RunCreate(const Invocation& call) {
    const bool fromFolder = call.Has("--from");
    if (fromFolder == call.Has("--manifest"))
        return UsageError(call.err, "create",
                          fromFolder ? "--manifest and --from exclude each other"
                                     : "--manifest FILE or --from DIR is required");
    if (!fromFolder) {
        for (const char* option : {"--method", "--rendition-format", "--keywords"})
            if (call.Has(option))
                return UsageError(call.err, "create",
                                  std::string(option) + " goes with --from; a manifest says it per item");
    }
    containers::ArtContainerWriter writer;
    const int collected = fromFolder ? CollectFolder(call, writer) : CollectManifest(call, writer);
    if (collected != kExitOk) return collected;
    std::vector<uint8_t> bytes;
    std::string error;
    if (!writer.Build(bytes, error)) {
        call.err << "qlt create: " << error << "; nothing written\n";
        return kExitProblems;
    }
    if (!containers::WriteFileReplacing(call.positional[0], bytes.data(), bytes.size(), error)) {
        call.err << "qlt create: " << error << "\n";
        return kExitUsage;
    }
    return kExitOk;
}

int RunInfo(const Invocation& call) {
    const std::string& path = call.positional[0];
    containers::CArtContainer container;
    if (!OpenContainer(container, path, call.err)) return kExitUsage;
    int64_t size = 0;
    {
        framework::File file;
        std::string error;
        if (file.OpenForReading(path, error)) size = file.Length();
    }
    const containers::ArtContainerHeader& header = *container.Header();
    const containers::ArtKeywordDirectory& keywords = *container.KeywordDirectory();
    const containers::ArtEntryDirectory& entries = *container.EntryDirectory();
    const containers::ArtReservedDirectory& reserved = *container.ReservedDirectory();
    const std::string notice = TextOf(header.notice, containers::kNoticeSize);
    const std::vector<int64_t> words = {header.headerWord0, header.headerWord1, header.headerWord2,
                                        header.headerWord3, header.headerWord4, header.headerWord5};
    if (call.json) {
        JsonObject line;
        line.Text("file", path)
            .Number("size", size)
            .Text("notice", notice)
            .Real("version", header.version)
            .Number("itemCount", container.GetItemCount())
            .Number("headerValue", container.GetHeaderValue())
            .Numbers("headerWords", words)
            .Number("entryTableOffset", entries.entryTableOffset)
            .Number("entryDirectoryWord0", entries.word0)
            .Number("keywordMapOffset", keywords.keywordMapOffset)
            .Number("keywordMapBufferSize", keywords.keywordMapBufferSize)
            .Number("keywordDirectoryWord0", keywords.word0)
            .Numbers("reservedWords", {reserved.word0, reserved.word1});
        call.out << line.Str() << "\n";
        return kExitOk;
    }
    char version[32];
    std::snprintf(version, sizeof version, "%g", header.version);
    call.out << "file:         " << path << "\n"
             << "size:         " << size << " bytes\n"
             << "notice:       " << notice << "\n"
             << "version:      " << version << "\n"
             << "items:        " << container.GetItemCount() << "\n"
             << "header value: " << container.GetHeaderValue() << "\n"
             << "header words: " << JoinNumbers(words) << "\n"
             << "entry table:  offset " << entries.entryTableOffset << " (word0 " << entries.word0 << ")\n";
    if (keywords.keywordMapOffset == 0)
        call.out << "keyword map:  none (word0 " << keywords.word0 << ")\n";
    else
        call.out << "keyword map:  offset " << keywords.keywordMapOffset << ", "
                 << keywords.keywordMapBufferSize << " bytes (word0 " << keywords.word0 << ")\n";
    call.out << "reserved:     " << reserved.word0 << " " << reserved.word1 << "\n";
    return kExitOk;
}

int RunList(const Invocation& call) {
    containers::CArtContainer container;
    if (!OpenContainer(container, call.positional[0], call.err)) return kExitUsage;
    int status = kExitOk;
    for (int32_t item = 1; item <= container.GetItemCount(); ++item) {
        containers::ArtItemInfo info;
        if (!container.GetItemInfo(item, info)) {
            if (call.json)
                call.out << JsonObject().Number("item", item).Text("error", "unreadable entry").Str() << "\n";
            else
                call.out << "#" << item << " unreadable entry\n";
            status = kExitProblems;
            continue;
        }
        int32_t uncompressedSize = 0;
        const std::unique_ptr<containers::ArtRawChunk> chunk =
            container.ReadRawItemData(&uncompressedSize, item);
        struct Present {
            int32_t kind;
            int64_t size;
        };
        std::vector<Present> renditions;
        for (int32_t kind : containers::kRenditionKinds) {
            const std::unique_ptr<containers::ArtRawRendition> rendition =
                container.ReadRawRendition(item, kind);
            if (rendition)
                renditions.push_back({kind, rendition->chunkSize - containers::kRenditionHeaderSize});
        }
        if (call.json) {
            JsonObject line;
            line.Number("item", item)
                .Text("name", info.name)
                .Text("path", info.path)
                .Number("code", info.code);
            if (chunk)
                line.Raw("data", JsonObject()
                                     .Number("method", chunk->method)
                                     .Number("storedSize", chunk->chunkSize - containers::kDataChunkSizeBias)
                                     .Number("uncompressedSize", uncompressedSize)
                                     .Str());
            else
                line.Null("data");
            std::string list = "[";
            for (size_t i = 0; i < renditions.size(); ++i)
                list +=
                    (i != 0 ? "," : "") +
                    JsonObject().Number("kind", renditions[i].kind).Number("size", renditions[i].size).Str();
            line.Raw("renditions", list + "]");
            line.Raw("info", JsonObject()
                                 .Text("rendition10", info.rendition10)
                                 .Text("rendition20", info.rendition20)
                                 .Text("rendition30", info.rendition30)
                                 .Text("rendition40", info.rendition40)
                                 .Text("rendition80", info.rendition80)
                                 .Str());
            call.out << line.Str() << "\n";
            continue;
        }
        call.out << "#" << item << " " << info.name << "\n"
                 << "    path:       " << info.path << "\n"
                 << "    code:       " << info.code << "\n";
        if (chunk)
            call.out << "    data:       method " << chunk->method << " (" << MethodName(chunk->method)
                     << "), " << chunk->chunkSize - containers::kDataChunkSizeBias << " bytes stored, "
                     << uncompressedSize << " bytes uncompressed\n";
        else
            call.out << "    data:       none\n";
        call.out << "    renditions:";
        if (renditions.empty()) call.out << " none";
        for (size_t i = 0; i < renditions.size(); ++i)
            call.out << (i != 0 ? "," : "") << " " << KindText(renditions[i].kind) << " ("
                     << renditions[i].size << " bytes)";
        call.out << "\n";
    }
    return status;
}

int RunExtract(const Invocation& call) {
    if (!call.Has("-o")) return UsageError(call.err, "extract", "-o OUT is required");
    int64_t kind = 0;
    const bool wantsRendition = call.Has("--rendition");
    if (wantsRendition) {
        if (!ParseInteger(call.Value("--rendition"), kind) ||
            (kind != 0x10 && kind != 0x20 && kind != 0x30 && kind != 0x40 && kind != 0x80))
            return UsageError(call.err, "extract",
                              "'" + call.Value("--rendition") +
                                  "' is not a rendition kind (0x10, 0x20, 0x30, 0x40 or 0x80)");
    }
    containers::CArtContainer container;
    if (!OpenContainer(container, call.positional[0], call.err)) return kExitUsage;
    int32_t item = 0;
    if (!ResolveItem(container, call.positional[1], item, call.err)) return kExitProblems;

    std::vector<uint8_t> bytes;
    if (wantsRendition) {
        const std::unique_ptr<containers::ArtRawRendition> rendition =
            container.ReadRawRendition(item, static_cast<int32_t>(kind));
        if (!rendition) {
            call.err << "qlt: item " << item << " has no rendition of kind "
                     << KindText(static_cast<int32_t>(kind)) << "\n";
            return kExitProblems;
        }
        const int32_t size = rendition->chunkSize - static_cast<int32_t>(containers::kRenditionHeaderSize);
        bytes.assign(rendition->data.get(), rendition->data.get() + size);
    } else {
        int32_t uncompressedSize = 0;
        const std::unique_ptr<containers::ArtRawChunk> chunk =
            container.ReadRawItemData(&uncompressedSize, item);
        if (!chunk) {
            call.err << "qlt: item " << item << " has no data\n";
            return kExitProblems;
        }
        // The reader's own decoding reports a well-exploded chunk as a failure,
        // so every method is decoded here instead.
        std::string error;
        const size_t stored = static_cast<size_t>(chunk->chunkSize - containers::kDataChunkSizeBias);
        if (!containers::DecompressChunk(chunk->method, chunk->data.get(), stored, uncompressedSize, bytes,
                                         error)) {
            call.err << "qlt: item " << item << ": " << error << "\n";
            return kExitProblems;
        }
    }
    std::string error;
    const std::string& output = call.Value("-o");
    if (!containers::WriteFileReplacing(output, bytes.data(), bytes.size(), error)) {
        call.err << "qlt extract: " << error << "\n";
        return kExitUsage;
    }
    if (call.json) {
        JsonObject line;
        line.Text("file", call.positional[0]).Number("item", item);
        if (wantsRendition)
            line.Number("kind", kind);
        else
            line.Null("kind");
        line.Text("output", output).Number("size", static_cast<int64_t>(bytes.size()));
        call.out << line.Str() << "\n";
    }
    return kExitOk;
}

int RunKeywords(const Invocation& call) {
    if (call.Has("--word") && call.Has("--item"))
        return UsageError(call.err, "keywords", "--word and --item exclude each other");
    containers::CArtContainer container;
    if (!OpenContainer(container, call.positional[0], call.err)) return kExitUsage;

    if (call.Has("--word")) {
        const std::string& word = call.Value("--word");
        containers::ItemNumberArray items;
        if (!container.FindItemsByKeyword(word, items)) {
            call.err << "qlt: no keyword \"" << word << "\" with an item list\n";
            return kExitProblems;
        }
        std::vector<int64_t> numbers;
        for (ptrdiff_t i = 0; i < items.GetSize(); ++i) numbers.push_back(items[i]);
        if (call.json)
            call.out << JsonObject().Text("keyword", word).Numbers("items", numbers).Str() << "\n";
        else
            for (int64_t number : numbers) call.out << number << "\n";
        return kExitOk;
    }

    if (call.Has("--item")) {
        int64_t item = 0;
        if (!ParseInteger(call.Value("--item"), item))
            return UsageError(call.err, "keywords", "'" + call.Value("--item") + "' is not an item number");
        if (item < 1 || item > container.GetItemCount()) {
            call.err << "qlt: there is no item " << item << "; the container holds "
                     << container.GetItemCount() << " items\n";
            return kExitProblems;
        }
        const std::string list = container.GetItemKeywords(static_cast<int32_t>(item));
        const std::vector<std::string> words = WordsOfList(list);
        if (call.json)
            call.out << JsonObject().Number("item", item).Texts("keywords", words).Text("list", list).Str()
                     << "\n";
        else
            for (const std::string& word : words) call.out << word << "\n";
        return kExitOk;
    }

    framework::StringMap index;
    if (!container.LoadKeywordMap(index)) {
        // The reader fails alike for no index, an empty one and a damaged one;
        // only the last is a problem.
        if (container.KeywordDirectory()->keywordMapOffset == 0) return kExitOk;
        const VerifyReport report = VerifyContainer(call.positional[0]);
        bool damaged = !report.readable;
        for (const Finding& finding : report.findings)
            if (finding.problem && finding.where.compare(0, 7, "keyword") == 0) damaged = true;
        if (!damaged) return kExitOk;
        call.err << "qlt: the keyword index can't be read; 'qlt verify' tells why\n";
        return kExitProblems;
    }
    index.ForEach([&](const std::string& keyword, const std::string& list) {
        const std::vector<int64_t> numbers = NumbersOfList(list);
        if (call.json)
            call.out << JsonObject().Text("keyword", keyword).Numbers("items", numbers).Str() << "\n";
        else
            call.out << keyword << ": " << JoinNumbers(numbers) << "\n";
    });
    return kExitOk;
}

int RunVerify(const Invocation& call) {
    const std::string& path = call.positional[0];
    const VerifyReport report = VerifyContainer(path);
    if (!report.readable) {
        call.err << "qlt: " << report.error << "\n";
        return kExitUsage;
    }
    for (const Finding& finding : report.findings) {
        const char* severity = finding.problem ? "problem" : "warning";
        if (call.json)
            call.out << JsonObject()
                            .Text("severity", severity)
                            .Text("where", finding.where)
                            .Text("message", finding.message)
                            .Str()
                     << "\n";
        else
            call.out << severity << ": " << finding.where << ": " << finding.message << "\n";
    }
    const int problems = report.Problems();
    if (call.json)
        call.out << JsonObject()
                        .Text("file", path)
                        .Number("size", report.fileSize)
                        .Number("items", report.itemCount)
                        .Number("problems", problems)
                        .Number("warnings", report.Warnings())
                        .Bool("ok", problems == 0)
                        .Str()
                 << "\n";
    else if (problems == 0)
        call.out << path << ": ok (" << report.itemCount << " items, " << report.Warnings() << " warnings)\n";
    else
        call.out << path << ": " << problems << " problem(s)\n";
    return problems == 0 ? kExitOk : kExitProblems;
}

const std::vector<CommandEntry>& Commands() {
    static const std::vector<CommandEntry> commands = {
        {"create",
         1,
         {{"--manifest", "-m", true},
          {"--from", nullptr, true},
          {"--rendition-format", nullptr, true},
          {"--method", nullptr, true},
          {"--keywords", "-k", true}},
         "usage: qlt create OUT.qlt --manifest FILE\n"
         "       qlt create OUT.qlt --from DIR [--rendition-format bmp|jpeg|png]\n"
         "                          [--method 0|1|2] [--keywords FILE]\n"
         "\n"
         "With --manifest, makes a container from a manifest: one directive per line,\n"
         "items in blocks that begin with 'item NAME':\n"
         "\n"
         "  notice TEXT, version N, header-value N, none-offset -1|0,\n"
         "  implode ascii|binary [1024|2048|4096]      before the first item\n"
         "  item NAME                  starts an item\n"
         "  path PATH                  the picture's path (default: the data file's name)\n"
         "  code N                     the entry's code (default 0)\n"
         "  data FILE                  the main data (none without it)\n"
         "  method 0|1|2               stored, zlib or implode (default 0)\n"
         "  rendition KIND FILE        a rendition of kind 0x10, 0x20, 0x30, 0x40 or 0x80\n"
         "  keywords WORD, WORD...     keywords, separated by commas\n"
         "  keyword WORD               one keyword, verbatim (it may hold commas)\n"
         "\n"
         "Relative file names are taken from the manifest's folder; '#' starts a comment\n"
         "line.\n"
         "\n"
         "With --from (Windows build only), every picture of DIR, by file name, becomes\n"
         "an item: the file as its data, stored by --method (default 0, stored), and\n"
         "renditions of all five kinds, the picture fitted into boxes of 16, 32, 48, 64\n"
         "and 128 pixels, written as --rendition-format (default bmp). Files that are\n"
         "no picture are passed over with a note; a picture that can't be decoded stops\n"
         "the command. --keywords FILE gives keywords, one line per picture:\n"
         "\n"
         "  NAME: WORD WORD...         NAME: a file in DIR; words separated by blanks or commas\n"
         "\n"
         "The container is written to a temporary file and renamed into place, so a\n"
         "failure never leaves half a file and never replaces OUT. Exit status: 0\n"
         "written, 1 problems in the manifest or the pictures, 2 bad usage, a file\n"
         "that can't be read or written, or --from in a build without it.\n",
         RunCreate},
        {"info",
         1,
         {{"--json", nullptr, false}},
         "usage: qlt info FILE [--json]\n"
         "\n"
         "Prints the header and the three directories as the reader sees them, and the\n"
         "file's size.\n",
         RunInfo},
        {"list",
         1,
         {{"--json", nullptr, false}},
         "usage: qlt list FILE [--json]\n"
         "\n"
         "Prints every item: number, name, path, code, its data chunk (method, stored\n"
         "and uncompressed size) and the renditions it has, with their sizes. With\n"
         "--json, one object per item.\n",
         RunList},
        {"extract",
         2,
         {{"--rendition", "-r", true}, {"-o", "--output", true}, {"--json", nullptr, false}},
         "usage: qlt extract FILE ITEM [--rendition KIND] -o OUT [--json]\n"
         "\n"
         "Writes an item's main data, decompressed, or with --rendition one of its\n"
         "renditions (KIND 0x10, 0x20, 0x30, 0x40 or 0x80, or the same in decimal) to\n"
         "OUT. ITEM is an item number from 1, or an item's exact name. Exit status 1\n"
         "when the item, its data or that rendition isn't there or doesn't decode.\n",
         RunExtract},
        {"keywords",
         1,
         {{"--word", "-w", true}, {"--item", "-i", true}, {"--json", nullptr, false}},
         "usage: qlt keywords FILE [--word WORD | --item N] [--json]\n"
         "\n"
         "Without options, prints the whole keyword index, one keyword per line with\n"
         "its item numbers, in the index's own order. --word prints the items of one\n"
         "keyword (exact and case-sensitive; blanks around it are ignored), one per\n"
         "line; exit status 1 when it has none. --item prints the keywords of one\n"
         "item, one per line; a keyword holding a comma comes out as two.\n",
         RunKeywords},
        {"verify",
         1,
         {{"--json", nullptr, false}},
         "usage: qlt verify FILE [--json]\n"
         "\n"
         "Checks every offset, size and chunk bound against the file, decompresses\n"
         "every item's data by its method, parses the keyword map and every item list\n"
         "it names, and lists each problem found. Warnings name oddities that the\n"
         "reader copes with. Exit status 1 when there is any problem.\n",
         RunVerify},
    };
    return commands;
}

// A message meant for a message box, as one line of standard error.
std::string OneLine(const std::string& text) {
    std::string line;
    for (char c : text) {
        if (c == '\r') continue;
        if (c == '\n')
            line += ": ";
        else
            line += c;
    }
    return line;
}

int Dispatch(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    if (args.empty()) {
        err << kGeneralHelp;
        return kExitUsage;
    }
    if (args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        if (args[0] == "help" && args.size() > 1) return Dispatch({args[1], "--help"}, out, err);
        out << kGeneralHelp;
        return kExitOk;
    }
    const CommandEntry* command = nullptr;
    for (const CommandEntry& candidate : Commands())
        if (args[0] == candidate.name) command = &candidate;
    if (command == nullptr) {
        err << "qlt: unknown command '" << args[0] << "'\n"
            << "Try 'qlt --help'.\n";
        return kExitUsage;
    }

    Invocation call{{}, {}, false, out, err};
    bool optionsEnded = false;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg.size() < 2 || arg[0] != '-') {
            call.positional.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        if (arg == "--help" || arg == "-h") {
            out << command->help;
            return kExitOk;
        }
        std::string name = arg;
        std::string value;
        bool hasValue = false;
        const size_t equals = arg.find('=');
        if (arg.compare(0, 2, "--") == 0 && equals != std::string::npos) {
            name = arg.substr(0, equals);
            value = arg.substr(equals + 1);
            hasValue = true;
        }
        const OptionEntry* option = nullptr;
        for (const OptionEntry& candidate : command->options)
            if (name == candidate.name || (candidate.shortName != nullptr && name == candidate.shortName))
                option = &candidate;
        if (option == nullptr) return UsageError(err, command->name, "unknown option '" + name + "'");
        if (!option->takesValue) {
            if (hasValue) return UsageError(err, command->name, "'" + name + "' takes no value");
            call.json = true;
            continue;
        }
        if (!hasValue) {
            if (i + 1 >= args.size()) return UsageError(err, command->name, "'" + name + "' needs a value");
            value = args[++i];
        }
        if (call.Has(option->name)) return UsageError(err, command->name, "'" + name + "' given twice");
        call.values[option->name] = value;
    }
    if (call.positional.size() != command->positional)
        return UsageError(
            err, command->name,
            call.positional.size() < command->positional ? "missing argument" : "too many arguments");
    return command->run(call);
}

}  // namespace

int RunQlt(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    foundation::ScopedUserMessageHandler messages(
        [&err](const std::string& text) { err << "qlt: " << OneLine(text) << "\n"; });
    try {
        return Dispatch(args, out, err);
    } catch (const std::exception& failure) {
        err << "qlt: " << failure.what() << "\n";
        return kExitUsage;
    }
}

}  // namespace qlt
