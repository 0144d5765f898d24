#include "foundation/AssertException.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "StdobjTestSupport.h"
#include "foundation/resstr.h"

namespace {

foundation::CKAssertException* Thrown(const char* file, long line) {
    try {
        foundation::ThrowAssert(file, line);
    } catch (foundation::CKAssertException* e) {
        return e;
    }
    return nullptr;
}

}  // namespace

TEST(ThrowAssert, ThrowsAPointerToTheOneInstance) {
    foundation::CKAssertException* first = Thrown("Stdobj", 223);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, &foundation::AssertException());
    EXPECT_STREQ(first->File(), "Stdobj");
    EXPECT_EQ(first->Line(), 223);

    foundation::CKAssertException* second = Thrown("Other", 7);
    EXPECT_EQ(second, first);
    EXPECT_STREQ(first->File(), "Other");
    EXPECT_EQ(first->Line(), 7);
}

TEST(ThrowAssert, ReachesACatchAll) {
    bool caught = false;
    try {
        foundation::ThrowAssert("x", 1);
    } catch (...) {
        caught = true;
    }
    EXPECT_TRUE(caught);
}

TEST(CKAssertException, MessageWithFileAndLine) {
    foundation::CKAssertException* e = Thrown("Stdobj", 223);
    ASSERT_NE(e, nullptr);
    char buffer[128];
    unsigned help = 99;
    EXPECT_TRUE(e->GetErrorMessage(buffer, sizeof buffer, &help));
    EXPECT_STREQ(buffer, "Assertion failed in Stdobj, line 223.");
    EXPECT_EQ(help, 0u);
    EXPECT_STREQ(e->what(), "Assertion failed in Stdobj, line 223.");
}

TEST(CKAssertException, MessageWithoutFile) {
    foundation::CKAssertException* e = Thrown(nullptr, 5);
    ASSERT_NE(e, nullptr);
    char buffer[64];
    EXPECT_TRUE(e->GetErrorMessage(buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "Assertion failed.");
    EXPECT_STREQ(e->what(), "Assertion failed.");
}

TEST(CKAssertException, MessageIsCutToTheBuffer) {
    foundation::CKAssertException* e = Thrown("Stdobj", 223);
    ASSERT_NE(e, nullptr);
    char buffer[10];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_TRUE(e->GetErrorMessage(buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "Assertion");
    char one[1] = {'x'};
    EXPECT_TRUE(e->GetErrorMessage(one, 1));
    EXPECT_EQ(one[0], '\0');
    unsigned help = 5;
    EXPECT_TRUE(e->GetErrorMessage(nullptr, 10, &help));
    EXPECT_EQ(help, 0u);
    EXPECT_TRUE(e->GetErrorMessage(buffer, 0));
}

TEST(CKAssertException, IsNotAutoDeleting) {
    foundation::CKAssertException* e = Thrown("Stdobj", 223);
    ASSERT_NE(e, nullptr);
    EXPECT_FALSE(e->IsAutoDelete());
    e->Delete();
    EXPECT_STREQ(foundation::AssertException().File(), "Stdobj");
    EXPECT_EQ(Thrown("again", 1), e);
}

TEST(CKAssertException, MissingResourcesGiveAnEmptyMessageAndAReport) {
    foundation::CKAssertException* e = Thrown("Stdobj", 223);
    ASSERT_NE(e, nullptr);
    const foundation::ResourceStringLoader previous =
        foundation::SetResourceStringLoader([](long, std::string&) { return false; });
    stdobjtest::CapturedReports reports;
    char buffer[32] = "unchanged";
    EXPECT_TRUE(e->GetErrorMessage(buffer, sizeof buffer));
    foundation::SetResourceStringLoader(previous);
    EXPECT_STREQ(buffer, "");
    ASSERT_EQ(reports.lines.size(), 1u);
    EXPECT_EQ(reports.lines[0], "resstr, Line 53: Failed to load string resource, number = 6051");
}
