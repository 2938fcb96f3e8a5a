// The minimum work of a start-up, written by hand: refuse the local system account, read the two files, read the
// registered location, verify the plugin module once, load it once, initialize it.

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

#include "common/Stopwatch.h"
#include "load/contract/ISSOClientFactory.h"
#include "load/contract/ISSOClientModule.h"
#include "starts/StartFigures.h"

namespace {

using namespace OrlindexBench;
using Kestrany::IdentityServices::ISSOClientFactory;

void Require(bool condition, const char* what)
{
    if (!condition)
        throw std::runtime_error(what);
}

void RequireUser()
{
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID localSystem = nullptr;
    BOOL member = TRUE;
    Require(AllocateAndInitializeSid(&authority, 1, SECURITY_LOCAL_SYSTEM_RID, 0, 0, 0, 0, 0, 0, 0, &localSystem) &&
                CheckTokenMembership(nullptr, localSystem, &member) && !member,
            "the account may not sign in");
    FreeSid(localSystem);
}

std::wstring ReadLocation()
{
    wchar_t text[512] = {};
    DWORD size = sizeof text;
    HKEY key = nullptr;
    Require(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Kestrany\\Pellwick\\1.10.0", 0, KEY_QUERY_VALUE, &key) ==
                    ERROR_SUCCESS &&
                RegQueryValueExW(key, L"Location", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size) ==
                    ERROR_SUCCESS,
            "no registered location");
    RegCloseKey(key);
    return text;
}

std::string ReadWhole(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    Require(file != INVALID_HANDLE_VALUE, "a file is missing");
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    CloseHandle(file);
    return bytes;
}

void Verify(const std::wstring& path)
{
    WINTRUST_FILE_INFO file = {};
    file.cbStruct = sizeof file;
    file.pcwszFilePath = path.c_str();
    WINTRUST_DATA data = {};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwProvFlags = WTD_REVOCATION_CHECK_NONE;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const auto result = static_cast<DWORD>(WinVerifyTrust(nullptr, &action, &data));
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(nullptr, &action, &data);
    // The root belongs to the build tree, so the platform does not trust it.
    Require(result == static_cast<DWORD>(CERT_E_UNTRUSTEDROOT), "the signature does not verify");
}

ISSOClientFactory& Load(const std::wstring& path)
{
    const HMODULE module = LoadLibraryW(path.c_str());
    Require(module != nullptr, "the plugin module does not load");
    using Function = ISSOClientFactory* (*)();
    const FARPROC symbol =
        GetProcAddress(module, "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ");
    return *reinterpret_cast<Function>(reinterpret_cast<void*>(symbol))();
}

std::wstring HostFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

template <class Step>
decltype(auto) Timed(double& nanoseconds, const Step& step)
{
    struct Timing
    {
        ~Timing() { nanoseconds = watch.Nanoseconds(); }
        double& nanoseconds;
        Stopwatch watch;
    };
    const Timing timing = {nanoseconds, {}};
    return step();
}

} // namespace

int main()
{
    try
    {
        StartFigures figures;
        Timed(figures.total, [&] {
            RequireUser();
            ReadWhole(HostFolder() + L"\\Orlindex.config");
            const std::wstring server = ReadLocation();
            ReadWhole(server + L"\\TALIXVersionCompatibility.config");
            const std::wstring plugin = server + L"\\PellwickClient.dll";
            Timed(figures.trust, [&] { Verify(plugin); });
            ISSOClientFactory& factory = Timed(figures.load, [&]() -> ISSOClientFactory& { return Load(plugin); });
            factory.GetSSOClientModule()->Initialize(false);
        });
        WriteStartFigures(figures);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "start_floor: %s\n", error.what());
        return 1;
    }
}
