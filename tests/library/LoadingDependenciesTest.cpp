// The libraries that a module needs: where the system searches for them while the module is loaded, and afterwards.

#include "LoadingSupport.h"
#include "support/Count.h"

namespace OrlindexTest {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char ModuleMissing[] = "The specified module could not be found.";

std::wstring DllDirectory()
{
    wchar_t directory[1000] = L"unset";
    return {directory, GetDllDirectoryW(1000, directory)};
}

} // namespace

class LoadingDependencies : public Loading
{
protected:
    /// Installs the plugin that needs a library, without that library; returns the directory that is searched first.
    std::filesystem::path InstallDependent() const
    {
        installation.Install("dependent");
        return installation.ServerFolder() / "dependency.dll";
    }

    std::filesystem::path Plant(const std::filesystem::path& folder) const
    {
        installation.CopyPlugin("dependency", folder / "dependency.dll");
        return folder / "dependency.dll";
    }

    static void ExpectPassedOver(const std::filesystem::path& planted)
    {
        EXPECT_FALSE(IsLoaded(planted));
        PrintCount("planted libraries that were to be passed over", 1);
    }
};

TEST_F(LoadingDependencies, AModuleWhoseDependencyIsMissingIsRefusedWithTheSystemsText)
{
    installation.Install("dependent");
    const std::string output = FailedStart();
    const std::string text = SystemText(ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(output, "Failed to load client plugin module " + File() +
                          ". Error: " + (text.empty() ? ModuleMissing : text) + '\n');
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(LoadingDependencies, AModulesDependencyIsFoundBesideIt)
{
    installation.Install("dependent");
    installation.CopyPlugin("dependency", installation.ServerFolder() / "dependency.dll");
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IsLoaded(installation.ServerFolder() / "dependency.dll"));
}

TEST_F(LoadingDependencies, TheLibrarySearchDirectoryIsThePluginsWhileItIsLoadedAndTheFormerAfterwards)
{
    installation.Install();
    const std::wstring former = installation.HostFolder().native();
    ASSERT_TRUE(SetDllDirectoryW(former.c_str()));
    std::vector<std::pair<std::wstring, std::wstring>> loads;
    const LoadLibraryDouble record([&loads](LPCWSTR path) {
        loads.emplace_back(path, DllDirectory());
        return LoadLibraryDouble::Original(path);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(loads,
                ElementsAre(std::pair{installation.PluginFile().native(), installation.ServerFolder().native()}));
    EXPECT_EQ(DllDirectory(), former);
}

TEST_F(LoadingDependencies, WithoutAFormerLibrarySearchDirectoryItIsTheEmptyTextAfterwardsNotTheDefault)
{
    installation.Install();
    std::vector<std::wstring> directories;
    const SetDllDirectoryDouble record([&directories](LPCWSTR directory) {
        directories.push_back(directory != nullptr ? directory : L"null");
        return SetDllDirectoryDouble::Original(directory);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(directories, ElementsAre(installation.ServerFolder().native(), L""));
}

TEST_F(LoadingDependencies, TheLibrarySearchDirectoryIsRestoredAfterAFailedLoadToo)
{
    installation.Install("dependent");
    ASSERT_TRUE(SetDllDirectoryW(installation.HostFolder().c_str()));
    EXPECT_THAT(FailedStart(), HasSubstr("Failed to load client plugin module"));
    EXPECT_EQ(DllDirectory(), installation.HostFolder().native());
}

TEST_F(LoadingDependencies, AFormerLibrarySearchDirectoryThatIsTooLongToBeSavedIsReplacedAndTheEmptyTextIsRestored)
{
    installation.Install();
    ASSERT_TRUE(SetDllDirectoryW((installation.HostFolder().native() + std::wstring(300, L'\\')).c_str()));
    std::vector<DWORD> capacities;
    const GetDllDirectoryDouble question([&capacities](DWORD size, LPWSTR directory) {
        capacities.push_back(size);
        return GetDllDirectoryDouble::Original(size, directory);
    });
    std::vector<std::wstring> directories;
    const SetDllDirectoryDouble record([&directories](LPCWSTR directory) {
        directories.push_back(directory != nullptr ? directory : L"null");
        return SetDllDirectoryDouble::Original(directory);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(capacities, ElementsAre(0U, 260U));
    EXPECT_THAT(directories, ElementsAre(installation.ServerFolder().native(), L""));
}

TEST_F(LoadingDependencies, WithoutALengthNoFormerLibrarySearchDirectoryIsAskedFor)
{
    installation.Install();
    int questions = 0;
    const GetDllDirectoryDouble none([&questions](DWORD, LPWSTR) {
        ++questions;
        return DWORD{0};
    });
    std::vector<std::wstring> directories;
    const SetDllDirectoryDouble record([&directories](LPCWSTR directory) {
        directories.push_back(directory != nullptr ? directory : L"null");
        return SetDllDirectoryDouble::Original(directory);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(questions, 1);
    EXPECT_THAT(directories, ElementsAre(installation.ServerFolder().native(), L""));
}

TEST_F(LoadingDependencies, AFormerLibrarySearchDirectoryThatCannotBeReadIsReplacedAndTheEmptyTextIsRestored)
{
    installation.Install();
    ASSERT_TRUE(SetDllDirectoryW(installation.HostFolder().c_str()));
    const GetDllDirectoryDouble unreadable([](DWORD size, LPWSTR directory) {
        return size == 0 ? GetDllDirectoryDouble::Original(size, directory) : DWORD{0};
    });
    std::vector<std::wstring> directories;
    const SetDllDirectoryDouble record([&directories](LPCWSTR directory) {
        directories.push_back(directory != nullptr ? directory : L"null");
        return SetDllDirectoryDouble::Original(directory);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(directories, ElementsAre(installation.ServerFolder().native(), L""));
}

TEST_F(LoadingDependencies, OnePlantedInTheHostsFolderDoesNotWinOverTheModulesOwn)
{
    const std::filesystem::path own = InstallDependent();
    Plant(installation.ServerFolder());
    const std::filesystem::path planted = Plant(installation.HostFolder());
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IsLoaded(own));
    ExpectPassedOver(planted);
}

TEST_F(LoadingDependencies, OnePlantedInTheCurrentDirectoryDoesNotWinOverTheModulesOwn)
{
    const std::filesystem::path own = InstallDependent();
    Plant(installation.ServerFolder());
    const std::filesystem::path planted = Plant(installation.MakeFolder("current"));
    ASSERT_TRUE(SetCurrentDirectoryW(planted.parent_path().c_str()));
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IsLoaded(own));
    ExpectPassedOver(planted);
}

TEST_F(LoadingDependencies, OnePlantedInTheCurrentDirectoryIsNotEvenTakenWhereTheModuleHasNone)
{
    InstallDependent();
    const std::filesystem::path planted = Plant(installation.MakeFolder("current"));
    ASSERT_TRUE(SetCurrentDirectoryW(planted.parent_path().c_str()));
    EXPECT_THAT(FailedStart(), HasSubstr("Failed to load client plugin module"));
    ExpectPassedOver(planted);
}

TEST_F(LoadingDependencies, OneThatOnlyTheHostHasIsFoundThere)
{
    InstallDependent();
    const std::filesystem::path hosts = Plant(installation.HostFolder());
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IsLoaded(hosts));
}

} // namespace OrlindexTest
