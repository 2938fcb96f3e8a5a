#include <gtest/gtest.h>

#include <windows.h>

#include "Environment.h"
#include "platform/Folders.h"
#include "platform/Handle.h"
#include "platform/WholeFile.h"

namespace Kestrany::Agent {

namespace {

/// A folder and a file in it that no other test has; both are gone afterwards.
class WholeFileTest : public testing::Test
{
protected:
    ~WholeFileTest() override
    {
        DeleteFileW(file.c_str());
        EXPECT_TRUE(RemoveDirectoryW(folder.c_str())) << "something else was left in the folder";
    }

    const std::string name = OwnIdentity("Folder");
    const std::wstring folder = DataFolder() + L"\\" + std::wstring(name.begin(), name.end());
    const std::wstring file = folder + L"\\file";
};

TEST_F(WholeFileTest, AFileAndTheFoldersAboveItAreMade)
{
    const std::string bytes("a\0\r\n\x1A", 5);
    ASSERT_TRUE(ReplaceWholeFile(file, bytes));
    EXPECT_EQ(ReadWholeFile(file, 100), bytes);
    ASSERT_TRUE(ReplaceWholeFile(file, ""));
    EXPECT_EQ(ReadWholeFile(file, 100), "");
}

TEST_F(WholeFileTest, AFileOverTheLimitIsNotRead)
{
    ASSERT_TRUE(ReplaceWholeFile(file, std::string(101, 'x')));
    EXPECT_FALSE(ReadWholeFile(file, 100));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_TOO_LARGE));
    EXPECT_EQ(ReadWholeFile(file, 101)->size(), 101u);
}

TEST_F(WholeFileTest, AMissingFileSaysSo)
{
    CreateFoldersAbove(file);
    EXPECT_FALSE(ReadWholeFile(file, 100));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(WholeFileTest, TheOldFileIsReplacedAndNotWrittenTo)
{
    const std::wstring oldFile = folder + L"\\old";
    ASSERT_TRUE(ReplaceWholeFile(file, "old"));
    ASSERT_TRUE(CreateHardLinkW(oldFile.c_str(), file.c_str(), nullptr)) << "a second name of the old file";
    ASSERT_TRUE(ReplaceWholeFile(file, "new"));
    EXPECT_EQ(ReadWholeFile(file, 100), "new");
    EXPECT_EQ(ReadWholeFile(oldFile, 100), "old");
    DeleteFileW(oldFile.c_str());
}

TEST_F(WholeFileTest, WhatCannotBeReplacedStaysWhole)
{
    ASSERT_TRUE(ReplaceWholeFile(file, "old"));
    {
        // Somebody reads it who does not let it be replaced.
        const Handle reader =
            OwnValid(CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(reader);
        EXPECT_FALSE(ReplaceWholeFile(file, "new"));
        EXPECT_NE(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    }
    EXPECT_EQ(ReadWholeFile(file, 100), "old");
}

TEST_F(WholeFileTest, WhatAProcessThatEndedWasAboutToWriteIsRemoved)
{
    CreateFoldersAbove(file);
    const auto make = [&](const std::wstring& path) {
        return OwnValid(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                    nullptr)) != nullptr;
    };
    const std::wstring ended = file + L".4294967292.new"; // No process has such a number.
    const std::wstring others[] = {file + L"." + std::to_wstring(GetCurrentProcessId()) + L".new", file + L".x1.new",
                                   file + L"..new", folder + L"\\5.new"};
    ASSERT_TRUE(make(ended));
    for (const std::wstring& other : others)
        ASSERT_TRUE(make(other));
    RemoveUnfinishedFiles(folder);
    EXPECT_FALSE(DeleteFileW(ended.c_str()));
    for (const std::wstring& other : others)
        EXPECT_TRUE(DeleteFileW(other.c_str()));
}

} // namespace

} // namespace Kestrany::Agent
