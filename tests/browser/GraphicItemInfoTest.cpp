#include "browser/GraphicItemInfo.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace browser;

namespace {
bool AllZero(const void* bytes, size_t size) {
    const auto* p = static_cast<const uint8_t*>(bytes);
    for (size_t i = 0; i < size; ++i)
        if (p[i] != 0) return false;
    return true;
}
}  // namespace

TEST(GraphicItemInfo, EmptyRecordIsAllZero) {
    GraphicItemInfo info = EmptyItemInfo();
    EXPECT_EQ(info.valid, 0);
    EXPECT_TRUE(AllZero(&info, sizeof info));
}

TEST(GraphicItemInfo, FieldsLandAtTheirOffsets) {
    GraphicItemInfo info = MakeItemInfo(1, 3, "C:\\art\\cats.QLT", "");
    uint8_t bytes[532];
    std::memcpy(bytes, &info, sizeof bytes);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[4], 3);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes + 8)), "C:\\art\\cats.QLT");
    EXPECT_TRUE(AllZero(bytes + 8 + 16, 260 - 16)) << "the rest of the path field is zero";
    EXPECT_TRUE(AllZero(bytes + 268, 264)) << "name is set only on the double-click road";
}

TEST(GraphicItemInfo, NameOfAPicture) {
    GraphicItemInfo info = MakeItemInfo(1, 0, "C:\\art\\cat.bmp", "cat.bmp");
    EXPECT_STREQ(info.name, "cat.bmp");
}

TEST(GraphicItemInfo, OverlongTextsAreCutAndStayTerminated) {
    const std::string longPath(1000, 'p');
    GraphicItemInfo info = MakeItemInfo(1, 1, longPath, std::string(1000, 'n'));
    EXPECT_EQ(std::strlen(info.path), 259u);
    EXPECT_EQ(info.path[259], '\0');
    EXPECT_EQ(std::strlen(info.name), 263u);
    EXPECT_EQ(info.name[263], '\0');
}
