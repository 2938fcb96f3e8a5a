#include "LocateTest.h"

#include <stdexcept>
#include <windows.h>

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

fs::path LoadLibraryFromOwnFolder(const Installation& installation)
{
    const fs::path folder = installation.MakeFolder("library");
    const fs::path file = folder / "Orlindex.dll";
    fs::copy_file(installation.HostFolder() / "Orlindex.dll", file);
    if (!LoadLibraryW(file.c_str()))
        throw std::runtime_error("cannot load the library: error " + std::to_string(GetLastError()));
    return folder;
}

} // namespace

LocateTest::LocateTest() : library(LoadLibraryFromOwnFolder(installation)), manager(*SSOPathResolver::GetInstance()) {}

void LocateTest::FindServerApplication()
{
    installation.WriteClientConfig(ServerMember("searchPaths", '"' + JsonPath(installation.ServerFolder()) + '"'));
    installation.InstallServerApplication(installation.ServerFolder());
    ASSERT_EQ(ToUtf8(manager.GetSSOServerAppPath()), Utf8(installation.ServerFolder()));
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
