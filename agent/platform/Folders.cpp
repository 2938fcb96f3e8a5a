#include "platform/Folders.h"

#include <windows.h>

#include <knownfolders.h>
#include <shlobj.h>

#include "platform/Base.h"

namespace Kestrany::Agent {

namespace {

std::wstring LocalAppData()
{
    PWSTR folder = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_DONT_VERIFY, nullptr, &folder);
    // To be freed after a failure, too.
    const TaskMemory<wchar_t> owner(folder);
    return SUCCEEDED(result) && folder != nullptr ? std::wstring(folder) : std::wstring();
}

} // namespace

std::wstring DataFolder()
{
    const std::wstring folder = LocalAppData();
    return folder.empty() ? folder : folder + L"\\Kestrany\\Identity Services";
}

const std::wstring& SettingsFolder()
{
    static const std::wstring folder = [] {
        const std::wstring named = EnvironmentText(SettingsFolderVariable);
        if (!named.empty())
            return FullPath(named);
        const std::wstring data = DataFolder();
        return data.empty() ? data : data + L"\\Simulator";
    }();
    return folder;
}

std::wstring FullPath(const std::wstring& path)
{
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(size == 0 ? 0 : GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    while (full.size() > 3 && full.back() == L'\\')
        full.pop_back();
    return full;
}

std::wstring EnvironmentText(const wchar_t* name)
{
    const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
    std::wstring text(size, L'\0');
    text.resize(size == 0 ? 0 : GetEnvironmentVariableW(name, text.data(), size));
    return text;
}

std::wstring FileBesideExecutable(const wchar_t* name)
{
    std::wstring path(32'768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1) + name;
}

void CreateFoldersAbove(const std::wstring& path)
{
    for (std::size_t end = path.find(L'\\', 3); end != std::wstring::npos; end = path.find(L'\\', end + 1))
        CreateDirectoryW(path.substr(0, end).c_str(), nullptr);
}

} // namespace Kestrany::Agent
