// File errors of the thumbnail store and their cause numbers.
#include <gtest/gtest.h>

#include "thumbnails/FileError.h"

using thumbnails::FileError;
using thumbnails::FileErrorCauseFromOsError;

TEST(FileError, CausesOfSystemErrors) {
    EXPECT_EQ(FileErrorCauseFromOsError(2), thumbnails::kCauseFileNotFound);
    EXPECT_EQ(FileErrorCauseFromOsError(3), thumbnails::kCauseBadPath);
    EXPECT_EQ(FileErrorCauseFromOsError(5), thumbnails::kCauseAccessDenied);
    EXPECT_EQ(FileErrorCauseFromOsError(32), thumbnails::kCauseSharingViolation);
    EXPECT_EQ(FileErrorCauseFromOsError(112), thumbnails::kCauseDiskFull);
    EXPECT_EQ(FileErrorCauseFromOsError(123), thumbnails::kCauseBadPath);
    EXPECT_EQ(FileErrorCauseFromOsError(145), thumbnails::kCauseRemoveCurrentDir);
    EXPECT_EQ(FileErrorCauseFromOsError(0), thumbnails::kCauseGeneric) << "no error of its own";
    EXPECT_EQ(FileErrorCauseFromOsError(87), thumbnails::kCauseGeneric);
    EXPECT_EQ(FileErrorCauseFromOsError(0xFFFFFFFF), thumbnails::kCauseGeneric);
}

TEST(FileError, IsAFrameworkFileException) {
    try {
        throw FileError(thumbnails::kCauseFileNotFound, 2, "c:\\gone.thm");
    } catch (const framework::FileException& error) {
        const auto* fileError = dynamic_cast<const FileError*>(&error);
        ASSERT_NE(fileError, nullptr);
        EXPECT_EQ(fileError->Cause(), 2);
        EXPECT_EQ(fileError->OsError(), 2u);
        EXPECT_EQ(fileError->Path(), "c:\\gone.thm");
        EXPECT_NE(std::string(error.what()).find("c:\\gone.thm"), std::string::npos);
    }
}
