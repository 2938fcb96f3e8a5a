// Files: their paths, how they are searched, how they are read.

#include <string>
#include <vector>

#include "Imports.h"
#include "LocateTest.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "locate/FileSearch.h"
#include "support/Handle.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using namespace Kestrany::IdentityServices;

class FileSearch : public LocateTest
{
protected:
    /// The full name of "wanted"; "none" if no directory holds it.
    std::string Search(const std::vector<fs::path>& directories) const
    {
        SearchList list;
        for (const fs::path& directory : directories)
            list.push_back({directory.native(), DirectoryOrigin::Added});
        const std::wstring found = FindFileInPaths(L"wanted", list).found;
        return found.empty() ? "none" : ToUtf8(found);
    }

    const fs::path first = installation.MakeFolder("first");
    const fs::path second = installation.MakeFolder("second");
};

TEST_F(FileSearch, TheFirstDirectoryInListOrderWins)
{
    WriteFile(second / "wanted", "");
    EXPECT_EQ(Search({first, second}), Utf8(second / "wanted"));
    WriteFile(first / "wanted", "");
    EXPECT_EQ(Search({first, second}), Utf8(first / "wanted"));
    EXPECT_EQ(Search({second, first}), Utf8(second / "wanted"));
}

TEST_F(FileSearch, NothingIsFoundInEmptyOrMissingDirectories)
{
    EXPECT_EQ(Search({}), "none");
    EXPECT_EQ(Search({first, second, installation.HostFolder() / "missing", first / "wanted" / "deeper"}), "none");
}

TEST_F(FileSearch, AMissingDirectoryDoesNotEndTheSearch)
{
    WriteFile(second / "wanted", "");
    EXPECT_EQ(Search({L"Q:\\no such drive", L"|?*<>", first / "missing", second}), Utf8(second / "wanted"));
}

TEST_F(FileSearch, ADirectoryOfThatNameCounts)
{
    fs::create_directory(first / "wanted");
    WriteFile(second / "wanted", "");
    EXPECT_EQ(Search({first, second}), Utf8(first / "wanted"));
}

TEST_F(FileSearch, AnEmptyEntryDoesNotMeanTheCurrentDirectory)
{
    WriteFile("wanted", "");
    ASSERT_TRUE(PathExists(L"wanted"));
    EXPECT_EQ(Search({L""}), "none");
    WriteFile(second / "wanted", "");
    EXPECT_EQ(Search({L"", second, L""}), Utf8(second / "wanted"));
}

/// The platform ends a path at a zero character, so a file beside the real directories or of another name would be
/// found.
TEST_F(FileSearch, ADirectoryWithAZeroInsideHoldsNothing)
{
    WriteFile(first / "wanted", "");
    WriteFile(second / "wanted", "");
    const std::wstring zero(1, L'\0');
    EXPECT_EQ(Search({first.native() + zero}), "none");
    EXPECT_EQ(Search({first.native() + zero + L"\\more", second}), Utf8(second / "wanted"));
    EXPECT_EQ(Search({(first / "wanted").native() + zero, zero, second}), Utf8(second / "wanted"));
}

TEST_F(FileSearch, TheResultHasTheStateOfEachDirectory)
{
    WriteFile(second / "wanted", "");
    const SearchResult result =
        FindFileInPaths(L"wanted", {{L"", DirectoryOrigin::Added},
                                    {first.native() + std::wstring(1, L'\0'), DirectoryOrigin::Added},
                                    {L"%Unknown%\\folder", DirectoryOrigin::Added},
                                    {first.native(), DirectoryOrigin::Added},
                                    {second.native(), DirectoryOrigin::Added},
                                    {first.native(), DirectoryOrigin::Added}});
    EXPECT_EQ(result.found, (second / "wanted").native());
    EXPECT_EQ(result.StateOf(5), DirectoryState::NotSearched);
    EXPECT_EQ(result.states,
              (std::vector<DirectoryState>{DirectoryState::Empty, DirectoryState::EmbeddedZero, DirectoryState::NoValue,
                                           DirectoryState::DoesNotHold, DirectoryState::Holds}));
}

TEST_F(FileSearch, ADirectoryWhoseNameBeginsWithALonePercentSignIsSearched)
{
    fs::create_directory("%folder");
    WriteFile(fs::path("%folder") / "wanted", "");
    EXPECT_EQ(Search({L"%folder"}), "%folder\\wanted");
    fs::create_directory("%folder%");
    WriteFile(fs::path("%folder%") / "wanted", "");
    EXPECT_EQ(Search({L"%folder%"}), "none") << "a reference without value";
}

TEST_F(FileSearch, ASeparatorAtTheEndOfADirectoryIsNotDoubled)
{
    WriteFile(first / "wanted", "");
    EXPECT_EQ(Search({Utf8(first) + '\\'}), Utf8(first / "wanted"));
    EXPECT_EQ(Search({Utf8(first) + '/'}), Utf8(first) + "/wanted");
}

TEST_F(FileSearch, DirectoriesAreShownOneALine)
{
    EXPECT_EQ(DirectoryLines({}), L"");
    EXPECT_EQ(DirectoryLines({{L"a", DirectoryOrigin::Added}}), L"a");
    EXPECT_EQ(
        DirectoryLines({{L"a", DirectoryOrigin::Host}, {L"", DirectoryOrigin::Added}, {L"b", DirectoryOrigin::Added}}),
        L"a\n\nb");
}

TEST(Paths, NormalisingRemovesDotsAndDoubledSeparators)
{
    EXPECT_EQ(NormalizePath(L""), L"");
    EXPECT_EQ(NormalizePath(L"C:/a/./b/../c.dll"), L"C:\\a\\c.dll");
    EXPECT_EQ(NormalizePath(L"C:\\a\\\\b//c.dll"), L"C:\\a\\b\\c.dll");
    EXPECT_EQ(NormalizePath(L"//server/share/a/../b.dll"), L"\\\\server\\share\\b.dll");
    EXPECT_EQ(NormalizePath(L"a.dll"), L"a.dll");
}

TEST(Paths, AModulesPathHasItsDefects)
{
    EXPECT_EQ(FindModulePathDefect(L"C:\\a\\b.dll"), std::nullopt);
    EXPECT_EQ(FindModulePathDefect(std::wstring(L"C:\\a.dll\0.dll", 13)), ModulePathDefect::EmbeddedZero);
    EXPECT_NE(FindModulePathDefect(L"C:\\a\\b.dll."), std::nullopt);
    EXPECT_NE(FindModulePathDefect(L"C:\\a\\b.dll "), std::nullopt);
    EXPECT_NE(FindModulePathDefect(L"C:\\a\\b"), std::nullopt);
    EXPECT_NE(FindModulePathDefect(L""), std::nullopt);
    EXPECT_EQ(FindModulePathDefect(L"b.dll"), std::nullopt) << "it is loaded by its full path";
}

TEST(Paths, ParentAndJoin)
{
    EXPECT_EQ(ParentPath(L"C:\\a\\b.dll"), L"C:\\a");
    EXPECT_EQ(ParentPath(L"b.dll"), L"");
    EXPECT_EQ(ParentPath(L""), L"");
    EXPECT_EQ(JoinPath(L"C:\\a", L"b.dll"), L"C:\\a\\b.dll");
    EXPECT_EQ(JoinPath(L"C:\\a\\", L"b.dll"), L"C:\\a\\b.dll");
}

class Existence : public LocateTest
{
protected:
    void SetUp() override { WriteFile(there, "there"); }

    const std::wstring there = (installation.HostFolder() / "there").native();
    const std::wstring missing = (installation.HostFolder() / "missing").native();
};

TEST_F(Existence, FilesAndDirectoriesAreThere)
{
    EXPECT_TRUE(PathExists(there));
    EXPECT_TRUE(PathExists(installation.HostFolder().native()));
    EXPECT_FALSE(PathExists(missing));
    EXPECT_FALSE(PathExists(missing + L"\\deeper"));
    EXPECT_FALSE(PathExists(there + L"\\deeper"));
    EXPECT_FALSE(PathExists(L"|?*<>"));
    EXPECT_FALSE(PathExists(L""));
}

TEST_F(Existence, ALinkIsThereWhereWhatItLeadsToIs)
{
    const GetFileAttributesDouble link([](LPCWSTR) { return DWORD{FILE_ATTRIBUTE_REPARSE_POINT}; }, Executable());
    EXPECT_TRUE(PathExists(there));
    EXPECT_FALSE(PathExists(missing));
}

TEST_F(Existence, IfAttributesAreRefusedTheFileIsOpened)
{
    for (const DWORD error : {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION})
    {
        const GetFileAttributesDouble refuse(
            [error](LPCWSTR) {
                SetLastError(error);
                return INVALID_FILE_ATTRIBUTES;
            },
            Executable());
        EXPECT_TRUE(PathExists(there));
        EXPECT_FALSE(PathExists(missing));
    }
}

/// Each access may take until the system's time-out.
TEST_F(Existence, AShareThatDoesNotRespondIsAskedOnce)
{
    int questions = 0;
    const GetFileAttributesDouble refuse(
        [&questions](LPCWSTR) {
            ++questions;
            SetLastError(ERROR_BAD_NETPATH);
            return INVALID_FILE_ATTRIBUTES;
        },
        Executable());
    const CreateFileDouble open(
        [&questions](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
            ++questions;
            SetLastError(ERROR_BAD_NETPATH);
            return INVALID_HANDLE_VALUE;
        },
        Executable());
    EXPECT_FALSE(PathExists(L"\\\\server\\share\\file"));
    EXPECT_EQ(questions, 1);
}

class FileReading : public LocateTest
{
};

TEST_F(FileReading, AllBytesAreRead)
{
    const std::string bytes("a\r\n\x1A\0\xFF z", 8);
    const fs::path file = installation.HostFolder() / L"\u4E2D.bin";
    WriteFile(file, bytes);
    EXPECT_EQ(ReadFileContents(file.native()).bytes, bytes);
    WriteFile(file, "");
    EXPECT_EQ(ReadFileContents(file.native()).bytes, "");
}

TEST_F(FileReading, WhatAnotherMayDeleteIsRead)
{
    const fs::path file = installation.HostFolder() / "deletable";
    WriteFile(file, "read");
    const Handle deleter(CreateFileW(file.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                     nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(deleter.get(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(ReadFileContents(file.native()).bytes, "read");
}

TEST_F(FileReading, WhatIsCutOffWhileTheFileIsReadIsLeftOut)
{
    const fs::path file = installation.HostFolder() / "shrinking";
    WriteFile(file, "all of it");
    const ReadFileDouble cutOff(
        [](HANDLE handle, LPVOID buffer, DWORD, LPDWORD read, LPOVERLAPPED overlapped) {
            return ReadFileDouble::Original(handle, buffer, 3, read, overlapped);
        },
        Executable());
    EXPECT_EQ(ReadFileContents(file.native()).bytes, "all");
}

TEST_F(FileReading, AFileThatCannotBeMeasuredOrReadGivesNothing)
{
    const fs::path file = installation.HostFolder() / "failing";
    WriteFile(file, "unread");
    {
        const GetFileSizeExDouble fail(
            [](HANDLE, PLARGE_INTEGER) {
                SetLastError(ERROR_INVALID_FUNCTION);
                return FALSE;
            },
            Executable());
        EXPECT_EQ(ReadFileContents(file.native()).error, static_cast<DWORD>(ERROR_INVALID_FUNCTION));
    }
    const ReadFileDouble fail(
        [](HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED) {
            SetLastError(ERROR_READ_FAULT);
            return FALSE;
        },
        Executable());
    EXPECT_EQ(ReadFileContents(file.native()).error, static_cast<DWORD>(ERROR_READ_FAULT));
}

TEST_F(FileReading, WhatCannotBeReadGivesNothing)
{
    EXPECT_FALSE(ReadFileContents(L"").IsRead());
    EXPECT_FALSE(ReadFileContents((installation.HostFolder() / "missing").native()).IsRead());
    EXPECT_FALSE(ReadFileContents(installation.HostFolder().native()).IsRead()) << "a directory";
}

TEST_F(FileReading, WhatIsNoFileOnADiskIsNotWaitedFor)
{
    constexpr wchar_t pipe[] = L"\\\\.\\pipe\\orlindex-test-config";
    const Handle server(CreateNamedPipeW(pipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 0, 0, 0, nullptr));
    ASSERT_NE(server.get(), INVALID_HANDLE_VALUE);
    for (const wchar_t* name : {L"\\\\.\\NUL", pipe})
    {
        EXPECT_EQ(ReadFileContents(name).error, static_cast<DWORD>(ERROR_BAD_FILE_TYPE)) << ToUtf8(name);
    }
}

TEST_F(FileReading, AFileOfTheLargestSizeIsReadAndALargerOneIsNot)
{
    const fs::path file = installation.HostFolder() / "large";
    WriteFile(file, "x");
    fs::resize_file(file, LargestConfigFile);
    const auto contents = ReadFileContents(file.native());
    ASSERT_TRUE(contents.IsRead());
    EXPECT_EQ(contents.bytes.size(), LargestConfigFile);
    fs::resize_file(file, LargestConfigFile + 1);
    EXPECT_EQ(ReadFileContents(file.native()).error, static_cast<DWORD>(ERROR_FILE_TOO_LARGE));
}

} // namespace OrlindexTest
