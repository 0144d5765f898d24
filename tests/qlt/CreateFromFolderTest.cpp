// `qlt create OUT --from DIR` under Wine: a folder of pictures that the test
// makes (several formats and sizes, an odd size, files that are no picture),
// made into a container in every rendition format and read back through the
// reader and the imaging layer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "QltTestSupport.h"
#include "containers/ArtContainer.h"
#include "containers/writer/ChunkCodec.h"
#include "framework/win32/MemoryHandles.h"
#include "support/PictureFactory.h"
#include "thumbnails/Imaging.h"

using picturefactory::Bgra;
using qlttest::RunQlt;
using qlttest::RunResult;

namespace {

using Bytes = std::vector<uint8_t>;

// Four quadrants of distinct colours, so that a rendition shows whether it
// kept the picture's content and orientation.
const Bgra kQuadrants[4] = {{0, 0, 230, 255}, {0, 200, 0, 255}, {220, 0, 0, 255}, {240, 240, 240, 255}};

int QuadrantOf(int32_t x, int32_t y, int32_t width, int32_t height) {
    return (x < width / 2 ? 0 : 1) + (y < height / 2 ? 0 : 2);
}

picturefactory::Pattern Quadrants(int32_t width, int32_t height) {
    return [=](int32_t x, int32_t y) { return kQuadrants[QuadrantOf(x, y, width, height)]; };
}

// A descriptor freed at the end of its scope.
class Bitmap {
public:
    Bitmap() = default;
    ~Bitmap() { imaging::FreeBitmap(&bitmap_); }
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    imaging::BitmapDescriptor* Get() { return &bitmap_; }
    const imaging::BitmapDescriptor* operator->() const { return &bitmap_; }

private:
    imaging::BitmapDescriptor bitmap_{};
};

// A BMP file made entirely by the imaging layer: a new bitmap, its pixels
// set, saved to memory.
Bytes ImagingLayerBmp(int32_t width, int32_t height) {
    Bitmap bitmap;
    if (imaging::CreateBitmap(bitmap.Get(), imaging::kMemoryConventional, width, height, 24,
                              imaging::kColorOrderBgr, nullptr, 0, nullptr, 0) != imaging::kSuccess)
        return {};
    for (int32_t y = 0; y < height; ++y) {
        uint8_t* row = imaging::kernel::Row(*bitmap.Get(), y);
        for (int32_t x = 0; x < width; ++x) {
            const Bgra c = kQuadrants[QuadrantOf(x, y, width, height)];
            row[3 * x] = c.b;
            row[3 * x + 1] = c.g;
            row[3 * x + 2] = c.r;
        }
    }
    HGLOBAL memory = nullptr;
    uint32_t size = 0;
    imaging::SaveBitmapMemory(&memory, bitmap.Get(), imaging::kFormatBmp, 24, 0, &size, nullptr);
    const framework::win32::UniqueGlobal owned(memory);
    const framework::win32::GlobalLockView view(owned.Get());
    if (!view) return {};
    const auto* data = static_cast<const uint8_t*>(view.Data());
    return Bytes(data, data + size);
}

Bytes QuadrantGif(uint32_t width, uint32_t height) {
    const std::vector<WICColor> palette = {0xFFE60000, 0xFF00C800, 0xFF0000DC, 0xFFF0F0F0};
    return picturefactory::Encode(GUID_ContainerFormatGif, GUID_WICPixelFormat8bppIndexed, width, height,
                                  picturefactory::Indices(width, height, 8,
                                                          [=](int32_t x, int32_t y) {
                                                              return static_cast<uint32_t>(QuadrantOf(
                                                                  x, y, static_cast<int32_t>(width),
                                                                  static_cast<int32_t>(height)));
                                                          }),
                                  picturefactory::Stride(width, 8), palette)
        .bytes;
}

struct Picture {
    std::string file;
    int32_t width;
    int32_t height;
    Bytes bytes;
};

class CreateFromFolderTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(dir.Path() / "pictures" / "sub");
        folder = dir.File("pictures");
        out = dir.File("out.qlt");
        // Listed in the order the items must take: by name without case.
        pictures = {
            {"a-wide.png", 300, 120,
             picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 300, 120, Quadrants(300, 120))},
            {"B-tall.jpg", 90, 200,
             picturefactory::EncodeBgr24(GUID_ContainerFormatJpeg, 90, 200, Quadrants(90, 200))},
            {"c-odd.bmp", 37, 23, ImagingLayerBmp(37, 23)},
            {"d-tiny.gif", 6, 4, QuadrantGif(6, 4)},
            {"e-square.tif", 64, 64,
             picturefactory::EncodeBgr24(GUID_ContainerFormatTiff, 64, 64, Quadrants(64, 64))},
        };
        for (const Picture& picture : pictures) {
            ASSERT_FALSE(picture.bytes.empty()) << picture.file;
            dir.Write("pictures/" + picture.file, picture.bytes);
        }
        dir.Write("pictures/notes.txt", qlttest::Bytes("Pictures of the spring catalogue.\r\n"));
        dir.Write("pictures/empty.dat", {});
        dir.Write("pictures/sub/inside.png", pictures[0].bytes);
        keywords = dir.File("keywords.txt");
        qlttest::WriteText(keywords,
                           "# keywords of the pictures\n"
                           "a-wide.png: sky, wide\n"
                           "B-TALL.JPG: tall sky\n"
                           "c-odd.bmp: odd\n");
    }

    RunResult Create(const std::vector<std::string>& extra = {}) {
        std::vector<std::string> args = {"create", out, "--from", folder};
        args.insert(args.end(), extra.begin(), extra.end());
        return RunQlt(args);
    }

    void WriteOldContainer() { qlttest::WriteText(out, "the old container"); }
    void ExpectOldContainer() { EXPECT_EQ(qlttest::ReadText(out), "the old container"); }

    testsupport::TempDir dir;
    std::string folder;
    std::string out;
    std::string keywords;
    std::vector<Picture> pictures;
};

std::vector<int32_t> ItemsOf(containers::CArtContainer& container, const std::string& word) {
    containers::ItemNumberArray items;
    EXPECT_TRUE(container.FindItemsByKeyword(word, items)) << word;
    std::vector<int32_t> numbers;
    for (ptrdiff_t i = 0; i < items.GetSize(); ++i) numbers.push_back(items[i]);
    return numbers;
}

void ExpectColourNear(const imaging::BitmapDescriptor& bitmap, int32_t x, int32_t y, const Bgra& expected,
                      const std::string& what) {
    const uint8_t* pixel = imaging::kernel::Row(bitmap, y) + 3 * x;
    const int tolerance = 48;  // JPEG coding of small pictures
    EXPECT_LE(std::abs(pixel[0] - expected.b), tolerance) << what << " at " << x << "," << y;
    EXPECT_LE(std::abs(pixel[1] - expected.g), tolerance) << what << " at " << x << "," << y;
    EXPECT_LE(std::abs(pixel[2] - expected.r), tolerance) << what << " at " << x << "," << y;
}

struct FormatCase {
    const char* option;
    int32_t format;  // as the imaging layer reports it
    const char* method;
    int32_t methodNumber;
};

TEST_F(CreateFromFolderTest, EveryPictureBecomesAnItemWithAllRenditions) {
    const FormatCase cases[] = {{"bmp", imaging::kFormatBmp, "stored", containers::kMethodStored},
                                {"jpeg", imaging::kFormatJpeg, "zlib", containers::kMethodZlib},
                                {"png", imaging::kFormatPng, "2", containers::kMethodImplode}};
    for (const FormatCase& format : cases) {
        SCOPED_TRACE(format.option);
        const RunResult result =
            Create({"--rendition-format", format.option, "--method", format.method, "--keywords", keywords});
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_NE(result.err.find("notes.txt: not a picture; passed over"), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("empty.dat"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find("inside.png"), std::string::npos) << "subfolders are not entered";

        containers::CArtContainer container;
        ASSERT_TRUE(container.Open(out));
        ASSERT_EQ(container.GetItemCount(), static_cast<int32_t>(pictures.size()));
        for (size_t index = 0; index < pictures.size(); ++index) {
            const Picture& picture = pictures[index];
            const int32_t item = static_cast<int32_t>(index) + 1;
            SCOPED_TRACE(picture.file);
            containers::ArtItemInfo info;
            ASSERT_TRUE(container.GetItemInfo(item, info));
            EXPECT_EQ(info.path, picture.file);
            EXPECT_EQ(info.name, picture.file.substr(0, picture.file.find('.')));

            int32_t uncompressedSize = 0;
            const std::unique_ptr<containers::ArtRawChunk> chunk =
                container.ReadRawItemData(&uncompressedSize, item);
            ASSERT_TRUE(chunk);
            EXPECT_EQ(chunk->method, format.methodNumber);
            Bytes data;
            std::string error;
            ASSERT_TRUE(containers::DecompressChunk(
                chunk->method, chunk->data.get(),
                static_cast<size_t>(chunk->chunkSize - containers::kDataChunkSizeBias), uncompressedSize,
                data, error))
                << error;
            EXPECT_EQ(data, picture.bytes) << "the item's data is the file itself";

            for (int32_t kind : containers::kRenditionKinds) {
                SCOPED_TRACE(kind);
                int32_t size = 0;
                const std::unique_ptr<uint8_t[]> payload = container.ReadRendition(item, kind, &size);
                ASSERT_TRUE(payload);
                imaging::FileInfo fileInfo{};
                ASSERT_EQ(imaging::QueryMemoryInfo(payload.get(), &fileInfo, static_cast<uint32_t>(size), 0,
                                                   nullptr),
                          imaging::kSuccess);
                EXPECT_EQ(fileInfo.format, format.format);
                Bitmap decoded;
                ASSERT_EQ(imaging::LoadBitmapMemory(payload.get(), decoded.Get(), 24, imaging::kColorOrderBgr,
                                                    static_cast<uint32_t>(size), nullptr),
                          imaging::kSuccess);
                // The box is the kind's value in pixels; the longer side fills
                // it and the shorter one keeps the picture's proportion.
                const int32_t box = kind;
                const bool wide = picture.width >= picture.height;
                const int32_t longer = wide ? decoded->width : decoded->height;
                const int32_t shorter = wide ? decoded->height : decoded->width;
                EXPECT_EQ(longer, box);
                const double exact = static_cast<double>(wide ? picture.height : picture.width) * box /
                                     (wide ? picture.width : picture.height);
                EXPECT_LE(std::abs(shorter - exact), 0.5) << decoded->width << " x " << decoded->height;
                EXPECT_GE(shorter, 1);
                if (kind >= 0x40) {
                    const int32_t w = decoded->width;
                    const int32_t h = decoded->height;
                    ExpectColourNear(*decoded.Get(), w / 4, h / 4, kQuadrants[0], "top left");
                    ExpectColourNear(*decoded.Get(), 3 * w / 4, h / 4, kQuadrants[1], "top right");
                    ExpectColourNear(*decoded.Get(), w / 4, 3 * h / 4, kQuadrants[2], "bottom left");
                    ExpectColourNear(*decoded.Get(), 3 * w / 4, 3 * h / 4, kQuadrants[3], "bottom right");
                }
            }
        }

        EXPECT_EQ(ItemsOf(container, "sky"), (std::vector<int32_t>{1, 2}));
        EXPECT_EQ(ItemsOf(container, "wide"), (std::vector<int32_t>{1}));
        EXPECT_EQ(ItemsOf(container, "tall"), (std::vector<int32_t>{2}));
        EXPECT_EQ(ItemsOf(container, "odd"), (std::vector<int32_t>{3}));
        EXPECT_EQ(container.GetItemKeywords(4), "");
        container.Init();

        const RunResult verify = RunQlt({"verify", out});
        EXPECT_EQ(verify.status, 0) << verify.out;
    }
}

TEST_F(CreateFromFolderTest, WithoutOptionsRenditionsAreBmpAndDataIsStored) {
    const RunResult result = Create();
    ASSERT_EQ(result.status, 0) << result.err;
    containers::CArtContainer container;
    ASSERT_TRUE(container.Open(out));
    ASSERT_EQ(container.GetItemCount(), static_cast<int32_t>(pictures.size()));
    int32_t size = 0;
    const std::unique_ptr<uint8_t[]> data = container.ReadItemData(2, &size);
    ASSERT_TRUE(data) << "a stored chunk reads back through the reader's own road";
    EXPECT_EQ(Bytes(data.get(), data.get() + size), pictures[1].bytes);
    const std::unique_ptr<uint8_t[]> small = container.ReadRendition(1, 0x40, &size);
    ASSERT_TRUE(small);
    ASSERT_GE(size, 2);
    EXPECT_EQ(small[0], 'B');
    EXPECT_EQ(small[1], 'M');
    EXPECT_EQ(container.KeywordDirectory()->keywordMapOffset, 0) << "no keyword file, no index";
}

TEST_F(CreateFromFolderTest, AnEmptyFolderIsAProblemAndWritesNothing) {
    std::filesystem::create_directories(dir.Path() / "nothing");
    WriteOldContainer();
    const RunResult result = RunQlt({"create", out, "--from", dir.File("nothing")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("no pictures in the folder"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("nothing written"), std::string::npos) << result.err;
    ExpectOldContainer();
}

TEST_F(CreateFromFolderTest, AMissingFolderCantBeReadAndWritesNothing) {
    WriteOldContainer();
    const RunResult result = RunQlt({"create", out, "--from", dir.File("missing")});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("missing"), std::string::npos) << result.err;
    ExpectOldContainer();

    const RunResult notFolder = RunQlt({"create", dir.File("other.qlt"), "--from", keywords});
    EXPECT_EQ(notFolder.status, 2);
    EXPECT_NE(notFolder.err.find("not a folder"), std::string::npos) << notFolder.err;
    EXPECT_FALSE(std::filesystem::exists(dir.File("other.qlt")));
}

TEST_F(CreateFromFolderTest, AFolderOfNoPicturesNotesEachFileAndWritesNothing) {
    std::filesystem::create_directories(dir.Path() / "texts");
    dir.Write("texts/one.txt", qlttest::Bytes("one"));
    dir.Write("texts/two.png", qlttest::Bytes("not a PNG at all, whatever its name says"));
    const RunResult result = RunQlt({"create", out, "--from", dir.File("texts")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("one.txt: not a picture; passed over"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("two.png: not a picture; passed over"), std::string::npos)
        << "pictures are known by content, not by name: " << result.err;
    EXPECT_NE(result.err.find("no pictures in the folder"), std::string::npos) << result.err;
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(CreateFromFolderTest, ADamagedPictureStopsTheCommandAndNamesTheFile) {
    // A PNG whose header is whole but whose pixel data is cut off: known by
    // its content, but it can't be decoded.
    Bytes cut = pictures[0].bytes;
    cut.resize(cut.size() / 2);
    dir.Write("pictures/f-cut.png", cut);
    WriteOldContainer();
    const RunResult result = Create();
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("f-cut.png"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("nothing written"), std::string::npos) << result.err;
    ExpectOldContainer();
}

TEST_F(CreateFromFolderTest, APictureThatCantBeOpenedIsUnreadableAndWritesNothing) {
    WriteOldContainer();
    // Held open with no sharing, so that no one else can read it meanwhile.
    const framework::win32::UniqueFile lock(::CreateFileA((folder + "\\c-odd.bmp").c_str(), GENERIC_READ, 0,
                                                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                                          nullptr));
    ASSERT_TRUE(lock);
    const RunResult result = Create();
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("c-odd.bmp"), std::string::npos) << result.err;
    ExpectOldContainer();
}

TEST_F(CreateFromFolderTest, KeywordFileProblemsAreListedWithTheirLines) {
    qlttest::WriteText(keywords,
                       "a-wide.png: sky\n"
                       "notes.txt: words\n"
                       "lost.png: gone\n"
                       "no colon here\n");
    Bytes cut = pictures[0].bytes;
    cut.resize(cut.size() / 2);
    dir.Write("pictures/f-cut.png", cut);
    WriteOldContainer();
    const RunResult result = Create({"--keywords", keywords});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("keywords.txt:4: "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("f-cut.png"), std::string::npos) << "every problem is listed: " << result.err;
    ExpectOldContainer();
    std::filesystem::remove(dir.File("pictures/f-cut.png"));

    qlttest::WriteText(keywords, "a-wide.png: sky\nnotes.txt: words\nlost.png: gone\n");
    const RunResult names = Create({"--keywords", keywords});
    EXPECT_EQ(names.status, 1);
    EXPECT_NE(names.err.find("keywords.txt:2: 'notes.txt' is not a picture"), std::string::npos) << names.err;
    EXPECT_NE(names.err.find("keywords.txt:3: 'lost.png' is no picture in the folder"), std::string::npos)
        << names.err;
    ExpectOldContainer();

    const RunResult missing = Create({"--keywords", dir.File("none.txt")});
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find("none.txt"), std::string::npos) << missing.err;
    ExpectOldContainer();
}

// Restores the current folder at the end of its scope.
class CurrentFolder {
public:
    explicit CurrentFolder(const std::string& folder) {
        ::GetCurrentDirectoryA(sizeof saved_, saved_);
        changed_ = ::SetCurrentDirectoryA(folder.c_str()) != FALSE;
    }
    ~CurrentFolder() {
        if (changed_) ::SetCurrentDirectoryA(saved_);
    }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;
    bool Changed() const { return changed_; }

private:
    char saved_[MAX_PATH] = {};
    bool changed_ = false;
};

TEST_F(CreateFromFolderTest, AFileNameTooLongForAnEntryIsAProblem) {
    // 255 characters leave no room for the entry's NUL. With the folder's
    // own path in front, such a name is beyond what ANSI paths reach, so the
    // folder is given as the current one.
    const std::string name = std::string(251, 'n') + ".bmp";
    const CurrentFolder current(folder);
    ASSERT_TRUE(current.Changed());
    {
        const framework::win32::UniqueFile file(::CreateFileA(
            (".\\" + name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) GTEST_SKIP() << "no name of 255 characters can be made here: " << ::GetLastError();
        DWORD written = 0;
        ASSERT_TRUE(::WriteFile(file.Get(), pictures[2].bytes.data(),
                                static_cast<DWORD>(pictures[2].bytes.size()), &written, nullptr));
    }
    const RunResult result = RunQlt({"create", out, "--from", "."});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("longer than 254 characters"), std::string::npos) << result.err;
    EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
