// The variables that paths may refer to.

#include <algorithm>
#include <windows.h>

#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

#include "ForeignLocale.h"
#include "Imports.h"
#include "LocateTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::wstring Upper(std::wstring text)
{
    for (wchar_t& character : text)
        if (character >= L'a' && character <= L'z')
            character = static_cast<wchar_t>(character - L'a' + L'A');
    return text;
}

std::wstring Lower(std::wstring text)
{
    for (wchar_t& character : text)
        if (character >= L'A' && character <= L'Z')
            character = static_cast<wchar_t>(character - L'A' + L'a');
    return text;
}

} // namespace

class PathVariables : public LocateTest
{
protected:
    std::string Value(const std::wstring& name)
    {
        std::wstring value = L"left over";
        const bool any = manager.GetPathVariableValue(name, value);
        EXPECT_EQ(any, !value.empty());
        return ToUtf8(value);
    }

    std::string Expanded(std::wstring text)
    {
        manager.ExpandPathVariables(text);
        return ToUtf8(text);
    }

    /// The name is matched without regard to case.
    void ExpectVariable(const std::wstring& name, const fs::path& value)
    {
        for (const std::wstring& written : {name, Upper(name), Lower(name)})
        {
            EXPECT_EQ(Value(written), Utf8(value)) << ToUtf8(written);
            EXPECT_EQ(Expanded(L"<%" + written + L"%>"), '<' + Utf8(value) + '>');
        }
    }

    void ExpectNoVariable(const std::wstring& name)
    {
        EXPECT_EQ(Value(name), "");
        EXPECT_EQ(Expanded(L"<%" + name + L"%>"), ToUtf8(L"<%" + name + L"%>")) << "the reference stays in the text";
    }

    /// Expects that `name` gets a folder from the platform in the documented way.
    void ExpectKnownFolder(const std::wstring& name, const KNOWNFOLDERID& expected)
    {
        int calls = 0;
        const SHGetKnownFolderPathDouble folders(
            [&](const KNOWNFOLDERID& id, DWORD flags, HANDLE token, wchar_t** path) -> HRESULT {
                ++calls;
                EXPECT_TRUE(IsEqualGUID(id, expected)) << ToUtf8(name);
                EXPECT_EQ(flags, 20480u);
                EXPECT_EQ(token, nullptr);
                constexpr wchar_t text[] = L"Z:\\known folder";
                *path = static_cast<wchar_t*>(CoTaskMemAlloc(sizeof text));
                std::copy(std::begin(text), std::end(text), *path);
                return S_OK;
            },
            Executable());
        ExpectVariable(name, L"Z:\\known folder");
        EXPECT_EQ(calls, 6) << "asked anew each time";
    }
};

TEST_F(PathVariables, ExePathIsTheHostsDirectory)
{
    ExpectVariable(L"ExePath", installation.HostFolder());
}

TEST_F(PathVariables, NamesAreComparedWithoutTheProcessesLocale)
{
    const ForeignLocale locale;
    ExpectVariable(L"ExePath", installation.HostFolder());
    ExpectVariable(L"SSOServicesModulePath", library);
}

TEST_F(PathVariables, AppPathIsTheHostsDirectoryToo)
{
    ExpectVariable(L"AppPath", installation.HostFolder());
}

TEST_F(PathVariables, SSOServicesModulePathIsTheLibrarysDirectory)
{
    ExpectVariable(L"SSOServicesModulePath", library);
}

TEST_F(PathVariables, ProgramFilesIsThePlatformsFolder)
{
    EXPECT_NE(Value(L"ProgramFiles").find("Program Files"), std::string::npos);
    ExpectKnownFolder(L"ProgramFiles", FOLDERID_ProgramFiles);
}

TEST_F(PathVariables, AppDataIsThePlatformsRoamingFolder)
{
    EXPECT_NE(Value(L"AppData"), "");
    ExpectKnownFolder(L"AppData", FOLDERID_RoamingAppData);
}

TEST_F(PathVariables, LocalAppDataIsThePlatformsLocalFolder)
{
    EXPECT_NE(Value(L"LocalAppData"), "");
    ExpectKnownFolder(L"LocalAppData", FOLDERID_LocalAppData);
}

TEST_F(PathVariables, AFolderThatThePlatformCannotNameHasNoValue)
{
    const SHGetKnownFolderPathDouble folders(
        [](const KNOWNFOLDERID&, DWORD, HANDLE, wchar_t** path) -> HRESULT {
            *path = nullptr;
            return E_FAIL;
        },
        Executable());
    for (const wchar_t* name : {L"ProgramFiles", L"AppData", L"LocalAppData"})
        ExpectNoVariable(name);
}

TEST_F(PathVariables, TheServerApplicationsVariables)
{
    FindServerApplication();
    ExpectVariable(L"SSOServerAppPath", installation.ServerFolder());
    ExpectVariable(L"SSOServerAppExeDirPath", installation.ServerFolder());
    ExpectVariable(L"SSOServerAppExeFile", installation.ServerFolder() / "Pellwick.exe");
    EXPECT_THAT(log.Take(), IsEmpty()) << "it is found once";
}

TEST_F(PathVariables, AVariableSetsOffTheSearchForTheServerApplication)
{
    installation.InstallServerApplication(installation.HostFolder());
    EXPECT_EQ(Expanded(L"%ssoserverapppath%"), Utf8(installation.HostFolder()));
    EXPECT_EQ(log.Take().back(),
              InfoLine("Found SSO server app at " + Utf8(installation.HostFolder() / "Pellwick.exe")));
}

TEST_F(PathVariables, AKnownVariableWithoutValueStaysInTheText)
{
    for (const wchar_t* name : {L"SSOServerAppPath", L"SSOServerAppExeDirPath", L"SSOServerAppExeFile"})
        ExpectNoVariable(name);
}

TEST_F(PathVariables, AnUnknownNameStaysInTheText)
{
    for (const wchar_t* name : {L"Unknown", L"", L" ExePath", L"ExePath ", L"ExePat", L"PATH", L"TEMP"})
        ExpectNoVariable(name);
}

TEST_F(PathVariables, SeveralReferencesExpandInOneText)
{
    std::wstring text = L"%exepath%\\a;%Unknown%;%APPPATH%%SSOServicesModulePath%;100%";
    EXPECT_EQ(manager.ExpandPathVariables(text), 4);
    const std::string host = Utf8(installation.HostFolder());
    EXPECT_EQ(ToUtf8(text), host + "\\a;%Unknown%;" + host + Utf8(library) + ";100%");
}

TEST_F(PathVariables, AListExpandsEntryByEntry)
{
    std::vector<std::wstring> texts = {L"%ExePath%", L"", L"%SSOServicesModulePath%\\x"};
    manager.ExpandPathVariables(texts);
    EXPECT_THAT(texts, ElementsAre(installation.HostFolder().native(), L"", (library / "x").native()));
}

TEST(PathVariablesWithoutLibrary, SSOServicesModulePathStaysInTheText)
{
    ASSERT_EQ(GetModuleHandleW(L"Orlindex.dll"), nullptr);
    std::wstring text = L"%SSOServicesModulePath%\\x";
    EXPECT_EQ(SSOPathResolver::GetInstance()->ExpandPathVariables(text), 1);
    EXPECT_EQ(text, L"%SSOServicesModulePath%\\x");
}

} // namespace OrlindexTest
