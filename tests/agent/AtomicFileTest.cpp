#include <gtest/gtest.h>

#include <windows.h>

#include "Environment.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Folders.h"

namespace Kestrany::Agent {

namespace {

/// A folder and a file that no other test uses. Both are removed afterwards.
class AtomicFileTest : public testing::Test
{
protected:
    ~AtomicFileTest() override
    {
        DeleteFileW(file.c_str());
        EXPECT_TRUE(RemoveDirectoryW(folder.c_str())) << "another file is left in the folder";
    }

    const std::string name = OwnIdentity("Folder");
    const std::wstring folder = DataFolder() + L"\\" + std::wstring(name.begin(), name.end());
    const std::wstring file = folder + L"\\file";
};

TEST_F(AtomicFileTest, CreatesAFileAndTheFoldersAboveIt)
{
    const std::string bytes("a\0\r\n\x1A", 5);
    ASSERT_TRUE(ReplaceFileAtomically(file, bytes));
    EXPECT_EQ(ReadFileContents(file).bytes, bytes);
    ASSERT_TRUE(ReplaceFileAtomically(file, ""));
    EXPECT_EQ(ReadFileContents(file).bytes, "");
}

TEST_F(AtomicFileTest, ReplacesTheOldFileWithoutWritingToIt)
{
    const std::wstring oldFile = folder + L"\\old";
    ASSERT_TRUE(ReplaceFileAtomically(file, "old"));
    ASSERT_TRUE(CreateHardLinkW(oldFile.c_str(), file.c_str(), nullptr)) << "a second name of the old file";
    ASSERT_TRUE(ReplaceFileAtomically(file, "new"));
    EXPECT_EQ(ReadFileContents(file).bytes, "new");
    EXPECT_EQ(ReadFileContents(oldFile).bytes, "old");
    DeleteFileW(oldFile.c_str());
}

TEST_F(AtomicFileTest, AFileThatCannotBeReplacedStays)
{
    ASSERT_TRUE(ReplaceFileAtomically(file, "old"));
    {
        // A reader that does not share the file for deletion.
        const Handle reader =
            OwnFile(CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(reader);
        EXPECT_FALSE(ReplaceFileAtomically(file, "new"));
        EXPECT_NE(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    }
    EXPECT_EQ(ReadFileContents(file).bytes, "old");
}

TEST_F(AtomicFileTest, TemporaryFilesOfEndedProcessesAreRemoved)
{
    CreateFoldersAbove(file);
    const auto make = [&](const std::wstring& path) {
        return OwnFile(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
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
