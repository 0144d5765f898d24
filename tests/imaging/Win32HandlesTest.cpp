// The RAII owners of framework/win32: each releases exactly once, moves
// transfer ownership, and the guards undo what they did.
#include <gtest/gtest.h>

#include <utility>

#include "framework/win32/ComPtr.h"
#include "framework/win32/GdiHandles.h"
#include "framework/win32/MemoryHandles.h"

using namespace framework::win32;

TEST(Win32Handles, AnOwnerDeletesItsObjectOnce) {
    HBRUSH raw = ::CreateSolidBrush(RGB(1, 2, 3));
    ASSERT_NE(raw, nullptr);
    {
        UniqueBrush brush(raw);
        EXPECT_EQ(::GetObjectType(raw), static_cast<DWORD>(OBJ_BRUSH));
        UniqueBrush moved(std::move(brush));
        EXPECT_FALSE(brush);
        EXPECT_EQ(moved.Get(), raw);
    }
    EXPECT_EQ(::GetObjectType(raw), 0u) << "deleted when the last owner went";
}

TEST(Win32Handles, ReleaseHandsOwnershipOver) {
    UniquePen pen(::CreatePen(PS_SOLID, 1, RGB(0, 0, 0)));
    HPEN raw = pen.Release();
    EXPECT_FALSE(pen);
    EXPECT_EQ(::GetObjectType(raw), static_cast<DWORD>(OBJ_PEN));
    ::DeleteObject(raw);
}

TEST(Win32Handles, MoveAssignmentReleasesTheOldObject) {
    HBRUSH first = ::CreateSolidBrush(RGB(1, 1, 1));
    HBRUSH second = ::CreateSolidBrush(RGB(2, 2, 2));
    UniqueBrush a(first);
    UniqueBrush b(second);
    a = std::move(b);
    EXPECT_EQ(::GetObjectType(first), 0u);
    EXPECT_EQ(a.Get(), second);
}

TEST(Win32Handles, SelectionGuardPutsThePreviousObjectBack) {
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    ASSERT_TRUE(dc);
    const HGDIOBJ original = ::GetCurrentObject(dc.Get(), OBJ_BITMAP);
    UniqueBitmap bitmap(::CreateCompatibleBitmap(dc.Get(), 4, 4));
    {
        SelectionGuard selected(dc.Get(), bitmap.Get());
        ASSERT_TRUE(selected.Succeeded());
        EXPECT_EQ(::GetCurrentObject(dc.Get(), OBJ_BITMAP), bitmap.Get());
    }
    EXPECT_EQ(::GetCurrentObject(dc.Get(), OBJ_BITMAP), original);
}

TEST(Win32Handles, SavedStateUndoesClipping) {
    UniqueDc dc(::CreateCompatibleDC(nullptr));
    UniqueBitmap bitmap(::CreateCompatibleBitmap(dc.Get(), 10, 10));
    SelectionGuard selected(dc.Get(), bitmap.Get());
    {
        SavedDcState state(dc.Get());
        ASSERT_TRUE(state.Succeeded());
        ::IntersectClipRect(dc.Get(), 0, 0, 2, 2);
        EXPECT_FALSE(::PtVisible(dc.Get(), 5, 5));
    }
    EXPECT_TRUE(::PtVisible(dc.Get(), 5, 5));
}

TEST(Win32Handles, GlobalMemoryIsFreedAndLockedInScope) {
    UniqueGlobal memory(::GlobalAlloc(GMEM_MOVEABLE, 16));
    ASSERT_TRUE(memory);
    {
        GlobalLockView view(memory.Get());
        ASSERT_TRUE(view);
        EXPECT_GE(view.Size(), 16u);
        EXPECT_EQ(::GlobalFlags(memory.Get()) & GMEM_LOCKCOUNT, 1u);
    }
    EXPECT_EQ(::GlobalFlags(memory.Get()) & GMEM_LOCKCOUNT, 0u);
    GlobalLockView none(nullptr);
    EXPECT_FALSE(none);
}

TEST(Win32Handles, FileOwnersTreatInvalidHandleAsNone) {
    UniqueFile missing(
        ::CreateFileA("Z:\\no\\such\\file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(missing);
    EXPECT_EQ(missing.Get(), INVALID_HANDLE_VALUE);
}

TEST(Win32Handles, ComPtrReleasesAndCopiesExplicitly) {
    ComInitialization com;
    ASSERT_TRUE(com.Usable());
    ComPtr<IStream> stream;
    ASSERT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    ComPtr<IStream> second = stream.Copy();
    EXPECT_EQ(second.Get(), stream.Get());
    // Two references are held: AddRef then Release reports the count.
    stream->AddRef();
    EXPECT_EQ(stream->Release(), 2u);
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(stream.As(&unknown), S_OK);
    EXPECT_TRUE(unknown);
    second.Reset();
    EXPECT_FALSE(second);
}
