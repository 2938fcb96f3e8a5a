// The folders that the platform returns.

#include <algorithm>
#include <string>
#include <windows.h>

#include "Imports.h"
#include "LocateTest.h"
#include "base/Platform.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using namespace Kestrany::IdentityServices;

namespace {

/// Makes the platform return one file name for every module, truncated to the buffer.
class ModuleNamed
{
public:
    explicit ModuleNamed(const std::wstring& name)
        : names_(
              [name](HMODULE, wchar_t* buffer, DWORD size) -> DWORD {
                  EXPECT_EQ(size, 260u);
                  const auto length = static_cast<DWORD>(name.size());
                  std::copy_n(name.c_str(), std::min(length + 1, size), buffer);
                  if (length < size)
                      return length;
                  buffer[size - 1] = L'\0';
                  return size;
              },
              Executable())
    {
    }

private:
    GetModuleFileNameDouble names_;
};

} // namespace

using PlatformFolders = LocateTest;

TEST_F(PlatformFolders, TheHostsDirectoryIsThatOfItsExecutable)
{
    EXPECT_EQ(ToUtf8(GetExeDirPath()), Utf8(installation.HostFolder()));
}

TEST_F(PlatformFolders, AModuleIsFoundByItsName)
{
    EXPECT_EQ(ToUtf8(GetModuleFilePath(L"Orlindex.dll")), Utf8(library / "Orlindex.dll"));
    EXPECT_EQ(ToUtf8(GetModuleDirPath(L"orlindex.DLL")), Utf8(library));
}

TEST_F(PlatformFolders, AModuleThatIsNotLoadedHasNoPath)
{
    EXPECT_EQ(GetModuleFilePath(L"NotLoaded.dll"), L"");
    EXPECT_EQ(GetModuleDirPath(L"NotLoaded.dll"), L"");
}

TEST_F(PlatformFolders, AModuleInAFolderOfAnyScriptIsFound)
{
    const fs::path folder = installation.MakeFolder(L"\u6A21\u5757 \u00E4");
    const fs::path file = folder / L"Other.dll";
    fs::copy_file(library / "Orlindex.dll", file);
    ASSERT_NE(LoadLibraryW(file.c_str()), nullptr);
    EXPECT_EQ(ToUtf8(GetModuleFilePath(L"Other.dll")), Utf8(file));
    EXPECT_EQ(ToUtf8(GetModuleDirPath(L"Other.dll")), Utf8(folder));
}

TEST_F(PlatformFolders, AModulesPathIsNormalised)
{
    const ModuleNamed module(L"C:/folder/./other/..\\\\sub//Host.exe");
    EXPECT_EQ(GetExeDirPath(), L"C:\\folder\\sub");
    EXPECT_EQ(GetModuleFilePath(L"Orlindex.dll"), L"C:\\folder\\sub\\Host.exe");
    EXPECT_EQ(GetModuleDirPath(L"Orlindex.dll"), L"C:\\folder\\sub");
}

TEST_F(PlatformFolders, AModulesPathThatDoesNotFitHasNoValue)
{
    const std::wstring fitting = L"C:\\" + std::wstring(252, L'x') + L"\\e";
    ASSERT_EQ(fitting.size(), 257u);
    {
        const ModuleNamed module(fitting + L"ee");
        EXPECT_EQ(GetModuleFilePath(L"Orlindex.dll"), fitting + L"ee") << "259 characters and the terminator fit";
    }
    for (const std::size_t excess : {3, 4, 1000})
    {
        const ModuleNamed module(fitting + std::wstring(excess, L'e'));
        EXPECT_EQ(GetModuleFilePath(L"Orlindex.dll"), L"") << excess;
        EXPECT_EQ(GetModuleDirPath(L"Orlindex.dll"), L"") << "the rest of a name may name another directory";
        EXPECT_EQ(GetExeDirPath(), L"") << excess;
    }
}

TEST_F(PlatformFolders, AModuleWhoseNameThePlatformDoesNotKnowHasNoPath)
{
    const GetModuleFileNameDouble names([](HMODULE, wchar_t*, DWORD) -> DWORD { return 0; }, Executable());
    EXPECT_EQ(GetExeDirPath(), L"");
    EXPECT_EQ(GetModuleFilePath(L"Orlindex.dll"), L"");
    EXPECT_EQ(GetModuleDirPath(L"Orlindex.dll"), L"");
}

} // namespace OrlindexTest
