// What the imaging layer keeps for each thread: one WIC factory made on the
// first decode and kept, COM initialised only where the thread had not done
// it and given back when the thread ends, and the decoder of a query serving
// the load of the same bytes.
#include "thumbnails/ImagingThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <thread>

#include "support/PictureFactory.h"
#include "thumbnails/Imaging.h"

using namespace imaging;
using detail::ImagingThread;
using picturefactory::Bgra;
using picturefactory::Bytes;

namespace {

Bgra Red(int32_t, int32_t) {
    return Bgra{0, 0, 255, 255};
}

Bgra Blue(int32_t, int32_t) {
    return Bgra{255, 0, 0, 255};
}

int Query(const Bytes& bytes, FileInfo* info) {
    std::memset(info, 0, sizeof *info);
    return QueryMemoryInfo(bytes.data(), info, static_cast<uint32_t>(bytes.size()), 0, nullptr);
}

int Load(const Bytes& bytes, BitmapDescriptor* bitmap) {
    return LoadBitmapMemory(bytes.data(), bitmap, 24, kColorOrderBgr, static_cast<uint32_t>(bytes.size()),
                            nullptr);
}

}  // namespace

TEST(ImagingThread, OneFactoryPerThreadMadeOnceAndKept) {
    ImagingThread* first = ImagingThread::Current();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(first->Factory(), nullptr);
    EXPECT_EQ(ImagingThread::Current(), first);
    EXPECT_EQ(ImagingThread::Current()->Factory(), first->Factory());

    ImagingThread* other = nullptr;
    IWICImagingFactory* otherFactory = nullptr;
    std::thread worker([&] {
        other = ImagingThread::Current();
        if (other != nullptr) otherFactory = other->Factory();
    });
    worker.join();
    EXPECT_NE(other, nullptr);
    EXPECT_NE(other, first);
    EXPECT_NE(otherFactory, first->Factory());
}

TEST(ImagingThread, ThreadStateEndsWithItsThread) {
    const size_t before = ImagingThread::LiveCount();
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 4, 4, Red);
    size_t during = 0;
    std::thread worker([&] {
        BitmapDescriptor bitmap{};
        if (Load(png, &bitmap) == kSuccess) FreeBitmap(&bitmap);
        during = ImagingThread::LiveCount();
    });
    worker.join();
    EXPECT_EQ(during, before + 1);
    EXPECT_EQ(ImagingThread::LiveCount(), before);
}

// A thread without COM gets it for its decodes, kept to the thread's end; a
// thread that chose its apartment keeps it, and the layer holds no
// initialisation of its own there: the thread's one CoUninitialize ends COM.
TEST(ImagingThread, ComIsInitialisedOnlyWhereTheThreadHadNot) {
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 4, 4, Red);
    HRESULT uninitialisedAfter = S_OK;
    std::thread bare([&] {
        BitmapDescriptor bitmap{};
        if (Load(png, &bitmap) == kSuccess) FreeBitmap(&bitmap);
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        uninitialisedAfter = ::CoGetApartmentType(&type, &qualifier);
    });
    bare.join();
    EXPECT_EQ(uninitialisedAfter, S_OK) << "COM is kept for the thread's later decodes";

    HRESULT init = E_FAIL, during = E_FAIL, after = S_OK;
    APTTYPE typeDuring{};
    int loaded = 0;
    std::thread host([&] {
        init = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        BitmapDescriptor bitmap{};
        loaded = Load(png, &bitmap);
        FreeBitmap(&bitmap);
        APTTYPEQUALIFIER qualifier{};
        during = ::CoGetApartmentType(&typeDuring, &qualifier);
        if (SUCCEEDED(init)) ::CoUninitialize();
        APTTYPE type{};
        after = ::CoGetApartmentType(&type, &qualifier);
    });
    host.join();
    ASSERT_EQ(init, S_OK);
    EXPECT_EQ(loaded, kSuccess);
    EXPECT_EQ(during, S_OK);
    EXPECT_EQ(typeDuring, APTTYPE_MTA) << "the host's apartment stays";
    EXPECT_EQ(after, CO_E_NOTINITIALIZED) << "the layer took no initialisation of its own";
}

// The load that follows a query of the same bytes uses the query's decoder;
// bytes that changed in between are decoded afresh, and a buffer that is
// gone does not matter.
TEST(ImagingThread, AQueryDecoderServesOnlyTheSameBytes) {
    Bytes red = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 6, 6, Red);
    Bytes blue = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 6, 6, Blue);
    // Bytes after the end of a PNG are not looked at: both files of one size.
    const size_t size = std::max(red.size(), blue.size());
    red.resize(size);
    blue.resize(size);
    ASSERT_NE(red, blue);

    Bytes buffer = red;
    FileInfo info;
    ASSERT_EQ(Query(buffer, &info), kSuccess);
    EXPECT_TRUE(ImagingThread::Current()->Kept().Holds(red.data(), red.size()));
    buffer = blue;  // the caller reuses its buffer for other bytes
    BitmapDescriptor bitmap{};
    ASSERT_EQ(Load(buffer, &bitmap), kSuccess);
    const uint8_t* pixel = kernel::Row(bitmap, 0);
    EXPECT_EQ(pixel[0], 255);
    EXPECT_EQ(pixel[2], 0) << "the load decoded the bytes it was given";
    FreeBitmap(&bitmap);

    {
        Bytes gone = red;
        ASSERT_EQ(Query(gone, &info), kSuccess);
        std::memset(gone.data(), 0, gone.size());
    }
    ASSERT_EQ(Load(red, &bitmap), kSuccess);
    pixel = kernel::Row(bitmap, 0);
    EXPECT_EQ(pixel[0], 0);
    EXPECT_EQ(pixel[2], 255);
    EXPECT_FALSE(ImagingThread::Current()->Kept().Holds(red.data(), red.size())) << "used once";
    FreeBitmap(&bitmap);
}

TEST(ImagingThread, ReleasingEveryThreadLetsDecodingStartAfresh) {
    const Bytes png = picturefactory::EncodeBgr24(GUID_ContainerFormatPng, 4, 4, Red);
    ASSERT_NE(ImagingThread::Current(), nullptr);
    ReleaseImagingThreads();
    EXPECT_EQ(ImagingThread::LiveCount(), 0u);
    BitmapDescriptor bitmap{};
    EXPECT_EQ(Load(png, &bitmap), kSuccess);
    FreeBitmap(&bitmap);
    EXPECT_EQ(ImagingThread::LiveCount(), 1u);
}
