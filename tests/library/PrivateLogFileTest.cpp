// The path of the log file, which every call composes anew.

#include <cstring>

#include <windows.h>

#include <knownfolders.h>
#include <shlobj.h>

#include "orlindex/SSOClientPrivate.h"
#include "support/HostTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using namespace Kestrany::IdentityServices;
using testing::IsEmpty;

namespace {

/// Makes the platform return one path for local application data; none if `path` is null.
class LocalAppData
{
public:
    explicit LocalAppData(const wchar_t* path)
        : folder_([path](REFKNOWNFOLDERID id, DWORD flags, HANDLE token, PWSTR* found) -> HRESULT {
              EXPECT_TRUE(IsEqualGUID(id, FOLDERID_LocalAppData));
              EXPECT_EQ(flags, 20480U) << "neither verified nor made";
              EXPECT_EQ(token, nullptr);
              *found = nullptr;
              if (!path)
                  return E_FAIL;
              const std::size_t size = (std::wcslen(path) + 1) * sizeof(wchar_t);
              *found = static_cast<PWSTR>(std::memcpy(CoTaskMemAlloc(size), path, size));
              return S_OK;
          })
    {
    }

private:
    SHGetKnownFolderPathDouble folder_;
};

std::wstring LocalAppDataFolder()
{
    wchar_t* path = nullptr;
    SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &path);
    std::wstring folder = path;
    CoTaskMemFree(path);
    return folder;
}

} // namespace

class PrivateLogFile : public HostTest
{
};

TEST_F(PrivateLogFile, LiesBelowLocalApplicationDataWithTheSeparatorsAsTheyStand)
{
    const LocalAppData folder(L"C:\\Users\\u\\AppData\\Local");
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetLogFile()),
              "C:\\Users\\u\\AppData\\Local\\Kestrany/Identity Services\\Log\\IdServices.log");
}

TEST_F(PrivateLogFile, GetsNoSecondSeparatorAfterAFolderThatEndsInOne)
{
    {
        const LocalAppData folder(L"D:\\");
        EXPECT_EQ(ToUtf8(SSOClientPrivate::GetLogFile()), "D:\\Kestrany/Identity Services\\Log\\IdServices.log");
    }
    const LocalAppData folder(L"D:/data/");
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetLogFile()), "D:/data/Kestrany/Identity Services\\Log\\IdServices.log");
}

TEST_F(PrivateLogFile, IsRelativeWhereThePlatformNamesNoFolder)
{
    const LocalAppData folder(nullptr);
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetLogFile()), "Kestrany/Identity Services\\Log\\IdServices.log");
}

TEST_F(PrivateLogFile, IsTheSameWhetherOrNotAPluginIsPresentAndNeverConsultsIt)
{
    const std::wstring without = SSOClientPrivate::GetLogFile();
    EXPECT_EQ(without, LocalAppDataFolder() + L"\\Kestrany/Identity Services\\Log\\IdServices.log");
    InstallPlugin();
    EXPECT_EQ(SSOClientPrivate::GetLogFile(), without);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    SSOClientPrivate::ClearEventQueue();
    Plugin().ClearJournal();
    EXPECT_EQ(SSOClientPrivate::GetLogFile(), without);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

TEST_F(PrivateLogFile, NeitherItNorItsFoldersAreMade)
{
    const fs::path data = installation.MakeFolder("data");
    const LocalAppData folder(data.c_str());
    SSOClientPrivate::GetLogFile();
    EXPECT_TRUE(fs::is_empty(data));
}

} // namespace OrlindexTest
