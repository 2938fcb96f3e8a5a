#include "LocateTest.h"

#include <stdexcept>
#include <windows.h>

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

fs::path LoadLibraryFromOwnFolder(const Site& site)
{
    const fs::path folder = site.MakeFolder("library");
    const fs::path file = folder / "Orlindex.dll";
    fs::copy_file(site.HostFolder() / "Orlindex.dll", file);
    if (!LoadLibraryW(file.c_str()))
        throw std::runtime_error("cannot load the library: error " + std::to_string(GetLastError()));
    return folder;
}

} // namespace

LocateTest::LocateTest() : library(LoadLibraryFromOwnFolder(site)), manager(*SSOPathResolver::GetInstance()) {}

void LocateTest::FindServerApplication()
{
    site.WriteClientConfig(ServerMember("searchPaths", '"' + JsonPath(site.ServerFolder()) + '"'));
    site.InstallServerApplication(site.ServerFolder());
    ASSERT_EQ(ToUtf8(manager.GetSSOServerAppPath()), Utf8(site.ServerFolder()));
    log.Take();
}

std::string ServerMember(const std::string& key, const std::string& value)
{
    return R"({"ssoServer": {")" + key + "\": " + value + "}}";
}

std::string Lines(const std::vector<fs::path>& directories)
{
    std::string lines;
    for (const fs::path& directory : directories)
    {
        if (&directory != &directories.front())
            lines += '\n';
        lines += Utf8(directory);
    }
    return lines;
}

} // namespace OrlindexTest
