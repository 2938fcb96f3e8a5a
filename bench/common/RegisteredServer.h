#ifndef ORLINDEX_BENCH_REGISTEREDSERVER_H
#define ORLINDEX_BENCH_REGISTEREDSERVER_H

#include <filesystem>

#include <windows.h>

#include "support/MachineKey.h"

namespace OrlindexBench {

/// Folder of this program.
inline std::filesystem::path OwnFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

/// Registers the server application in the sibling folder "server", as an installer does.
class RegisteredServer
{
public:
    RegisteredServer() { key_.AddVersion(L"1.10.0", (OwnFolder().parent_path() / "server").native()); }

    /// Registers `count` older versions, whose directories do not exist.
    void AddOlderVersions(int count) const
    {
        for (int i = 0; i < count; ++i)
            key_.AddVersion(L"1.9." + std::to_wstring(i), L"C:\\uninstalled");
    }

private:
    OrlindexTest::MachineKey key_;
};

} // namespace OrlindexBench

#endif
