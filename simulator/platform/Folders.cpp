#include "platform/Folders.h"

#include <memory>

#include <windows.h>

#include <knownfolders.h>
#include <shlobj.h>

namespace Kestrany::Simulator {

namespace {

struct TaskMemoryFreer
{
    void operator()(wchar_t* text) const { CoTaskMemFree(text); }
};

std::wstring LocalAppData()
{
    PWSTR folder = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_DONT_VERIFY, nullptr, &folder);
    // The text is to be freed after a failure, too.
    const std::unique_ptr<wchar_t, TaskMemoryFreer> owner(folder);
    return SUCCEEDED(result) && folder != nullptr ? std::wstring(folder) : std::wstring();
}

} // namespace

std::wstring DataFolder()
{
    const std::wstring folder = LocalAppData();
    return folder.empty() ? folder : folder + L"\\Kestrany\\Identity Services";
}

void CreateFoldersAbove(const std::wstring& path)
{
    for (std::size_t end = path.find(L'\\', 3); end != std::wstring::npos; end = path.find(L'\\', end + 1))
        CreateDirectoryW(path.substr(0, end).c_str(), nullptr);
}

} // namespace Kestrany::Simulator
