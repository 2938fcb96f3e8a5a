// What the private interface returns without the plugin: paths on the machine.

#include <atomic>
#include <chrono>
#include <future>

#include <windows.h>

#include <knownfolders.h>
#include <shlobj.h>

#include "orlindex/SSOClientPrivate.h"
#include "support/HostTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using namespace Kestrany::IdentityServices;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::wstring KnownFolder(const KNOWNFOLDERID& id)
{
    wchar_t* path = nullptr;
    SHGetKnownFolderPath(id, 0, nullptr, &path);
    std::wstring folder = path;
    CoTaskMemFree(path);
    return folder;
}

std::string Expanded(std::wstring text, bool expected = true)
{
    EXPECT_EQ(SSOClientPrivate::ExpandPathVariables(text), expected);
    return ToUtf8(text);
}

} // namespace

class PrivateLocations : public HostTest
{
};

// The server application

TEST_F(PrivateLocations, TheServerApplicationsPathAndItsDirectoryAreEqual)
{
    installation.InstallWithoutPlugin();
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOServerAppPath()), Utf8(installation.ServerFolder()));
    EXPECT_EQ(SSOClientPrivate::GetSSOServerAppExeDirPath(), SSOClientPrivate::GetSSOServerAppPath());
}

TEST_F(PrivateLocations, TheServerApplicationsDirectoryIsSearchedWhenItIsAskedForFirst)
{
    installation.InstallWithoutPlugin();
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOServerAppExeDirPath()), Utf8(installation.ServerFolder()));
}

TEST_F(PrivateLocations, WithoutServerApplicationBothAreEmptyAndSearchedAgainAtEachRequest)
{
    EXPECT_EQ(SSOClientPrivate::GetSSOServerAppPath(), L"");
    EXPECT_EQ(SSOClientPrivate::GetSSOServerAppExeDirPath(), L"");
    installation.InstallServerApplication(installation.HostFolder());
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOServerAppExeDirPath()), Utf8(installation.HostFolder()));
    fs::remove(installation.HostFolder() / "Pellwick.exe");
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOServerAppPath()), Utf8(installation.HostFolder())) << "found once, kept";
}

// The plugin module

TEST_F(PrivateLocations, ThePluginModulesPathIsReturnedAndNothingIsVerifiedOrLoaded)
{
    installation.Install();
    Tamper(installation.PluginFile());
    int verified = 0;
    int loaded = 0;
    const WinVerifyTrustDouble verifications([&verified](HWND window, GUID* action, LPVOID data) {
        ++verified;
        return WinVerifyTrustDouble::Original(window, action, data);
    });
    const LoadLibraryDouble loads([&loaded](const wchar_t* file) {
        ++loaded;
        return LoadLibraryDouble::Original(file);
    });
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOClientPluginModule()), Utf8(installation.PluginFile()));
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOClientPluginModule()), Utf8(installation.PluginFile()));
    EXPECT_EQ(verified, 0);
    EXPECT_EQ(loaded, 0);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));

    // The call returns a path and does not verify the file.
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_GT(verified, 0);
    EXPECT_EQ(loaded, 0);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(PrivateLocations, ThePluginModulesPathNeedsNoFile)
{
    installation.InstallWithoutPlugin();
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOClientPluginModule()), Utf8(installation.PluginFile()));
}

TEST_F(PrivateLocations, WithoutACompatiblePluginThePathIsEmptyAndLookedForAgain)
{
    installation.InstallWithoutPlugin();
    installation.WriteCompatibilityFile(std::vector<CompatibilityEntry>());
    EXPECT_EQ(SSOClientPrivate::GetSSOClientPluginModule(), L"");
    installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\Other.dll"}});
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetSSOClientPluginModule()), Utf8(installation.ServerFolder() / "Other.dll"));
}

TEST_F(PrivateLocations, WithNothingInstalledThePluginModulesPathIsEmpty)
{
    EXPECT_EQ(SSOClientPrivate::GetSSOClientPluginModule(), L"");
}

// Path variables and module directories

TEST_F(PrivateLocations, PathVariablesAreExpandedInPlace)
{
    installation.InstallWithoutPlugin();
    const std::string host = Utf8(installation.HostFolder());
    const std::string server = Utf8(installation.ServerFolder());
    EXPECT_EQ(Expanded(L"%ExePath%\\a"), host + "\\a");
    EXPECT_EQ(Expanded(L"%exepath%%APPPATH%"), host + host);
    EXPECT_EQ(Expanded(L"<%SSOServicesModulePath%>"), '<' + host + '>');
    EXPECT_EQ(Expanded(L"%SSOServerAppPath%;%SSOServerAppExeDirPath%"), server + ';' + server);
    EXPECT_EQ(Expanded(L"%SSOServerAppExeFile%"), server + "\\Pellwick.exe");
    EXPECT_EQ(Expanded(L"%LocalAppData%"), ToUtf8(KnownFolder(FOLDERID_LocalAppData)));
    EXPECT_EQ(Expanded(L"%AppData%"), ToUtf8(KnownFolder(FOLDERID_RoamingAppData)));
    EXPECT_EQ(Expanded(L"%ProgramFiles%"), ToUtf8(KnownFolder(FOLDERID_ProgramFiles)));
}

TEST_F(PrivateLocations, AReferenceWithoutValueStaysAndCountsAllTheSame)
{
    EXPECT_EQ(Expanded(L"a%Unknown%b"), "a%Unknown%b");
    EXPECT_EQ(Expanded(L"%SSOServerAppPath%"), "%SSOServerAppPath%") << "nothing is installed";
    EXPECT_EQ(Expanded(L"%%"), "%%");
    EXPECT_EQ(Expanded(L"%Unknown%%ExePath%"), "%Unknown%" + Utf8(installation.HostFolder()));
}

TEST_F(PrivateLocations, ATextWithoutReferenceStaysAndReturnsFalse)
{
    for (const wchar_t* text : {L"", L"C:\\a", L"100 %", L"ExePath%"})
        EXPECT_EQ(Expanded(text, false), ToUtf8(text));
}

TEST_F(PrivateLocations, TheDirectoryOfAModuleIsReturnedForItsNameOrPath)
{
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetModuleDirPath(L"Orlindex.dll")), Utf8(installation.HostFolder()));
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetModuleDirPath(L"ORLINDEX")), Utf8(installation.HostFolder()));
    EXPECT_EQ(ToUtf8(SSOClientPrivate::GetModuleDirPath((installation.HostFolder() / "Orlindex.dll").native())),
              Utf8(installation.HostFolder()));
    wchar_t system[MAX_PATH] = {};
    GetSystemDirectoryW(system, MAX_PATH);
    EXPECT_STRCASEEQ(ToUtf8(SSOClientPrivate::GetModuleDirPath(L"kernel32.dll")).c_str(), ToUtf8(system).c_str());
}

TEST_F(PrivateLocations, AModuleThatIsNotLoadedHasNoDirectory)
{
    installation.Install();
    EXPECT_EQ(SSOClientPrivate::GetModuleDirPath(L"Missing.dll"), L"");
    EXPECT_EQ(SSOClientPrivate::GetModuleDirPath(installation.PluginFile().native()), L"");
}

TEST_F(PrivateLocations, WithEverythingKnownNoLocationLogsOrPrintsAnything)
{
    InstallPlugin();
    SSOClientPrivate::ClearEventQueue();
    Plugin().ClearJournal();
    CapturedOutput output;
    SSOClientPrivate::GetSSOServerAppPath();
    SSOClientPrivate::GetSSOServerAppExeDirPath();
    SSOClientPrivate::GetSSOClientPluginModule();
    SSOClientPrivate::GetSSOClientConfigFile();
    SSOClientPrivate::GetSSOClientConfigFileOverride();
    SSOClientPrivate::GetModuleDirPath(L"Missing.dll");
    SSOClientPrivate::GetLogFile();
    Expanded(L"%Unknown%");
    EXPECT_EQ(output.Take(), "");
    EXPECT_THAT(Plugin().Log(), IsEmpty());
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

class PrivateLocationsLock : public HostTest
{
protected:
    void SetUp() override
    {
        InstallPlugin();
        SSOClientPrivate::ClearEventQueue(); // Loads the plugin and so reads the client config file.
    }

    /// Runs `action` on this thread inside the plugin's logger, where it owns the manager's lock.
    void WhileLocked(std::function<void()> action)
    {
        Plugin().OnCall(Logger::Log, [action = std::move(action)](const CallArguments&) { action(); });
        SSOClientPrivate::SetSSOClientConfigFileOverride(L"too late");
    }

    /// Expects that another thread's call gets a module from the platform only after this thread released the lock.
    void ExpectToWaitForTheLock(void (*call)())
    {
        std::promise<void> asked;
        std::future<void> caller;
        std::atomic<bool> released = false;
        std::atomic<bool> early = false;
        const GetModuleHandleDouble modules([&](const wchar_t* name) {
            if (!released)
                early = true;
            asked.set_value();
            return GetModuleHandleDouble::Original(name);
        });
        WhileLocked([&]() {
            caller = std::async(std::launch::async, call);
            // A call that does not wait for the lock would arrive within that time.
            asked.get_future().wait_for(std::chrono::milliseconds(200));
            released = true;
        });
        caller.get();
        EXPECT_FALSE(early);
    }
};

TEST_F(PrivateLocationsLock, ExpandingTakesTheManagersLock)
{
    ExpectToWaitForTheLock([]() { Expanded(L"%SSOServicesModulePath%"); });
}

TEST_F(PrivateLocationsLock, AModulesDirectoryTakesTheManagersLock)
{
    ExpectToWaitForTheLock([]() { SSOClientPrivate::GetModuleDirPath(L"Orlindex.dll"); });
}

TEST_F(PrivateLocationsLock, TheLockIsRecursive)
{
    std::string expanded;
    WhileLocked([&expanded]() {
        expanded = Expanded(L"%ExePath%");
        EXPECT_NE(SSOClientPrivate::GetModuleDirPath(L"Orlindex.dll"), L"");
    });
    EXPECT_EQ(expanded, Utf8(installation.HostFolder()));
}

TEST_F(PrivateLocationsLock, PathsThatAreKnownNeedNoLock)
{
    std::vector<std::wstring> paths;
    WhileLocked([&paths]() {
        paths = std::async(std::launch::async, []() {
                    return std::vector<std::wstring>{SSOClientPrivate::GetSSOServerAppPath(),
                                                     SSOClientPrivate::GetSSOServerAppExeDirPath(),
                                                     SSOClientPrivate::GetSSOClientPluginModule(),
                                                     SSOClientPrivate::GetSSOClientConfigFile(),
                                                     SSOClientPrivate::GetSSOClientConfigFileOverride(),
                                                     SSOClientPrivate::GetLogFile()};
                }).get();
    });
    EXPECT_THAT(paths, ElementsAre(installation.ServerFolder().native(), installation.ServerFolder().native(),
                                   installation.PluginFile().native(), installation.ClientConfigFile().native(), L"",
                                   SSOClientPrivate::GetLogFile()));
}

} // namespace OrlindexTest
