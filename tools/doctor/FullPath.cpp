#include "FullPath.h"

#include <windows.h>

namespace Orlindex::Doctor {

std::wstring FullPath(const std::wstring& path)
{
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(size > 0 ? GetFullPathNameW(path.c_str(), size, full.data(), nullptr) : 0);
    while (full.size() > 3 && full.back() == L'\\')
        full.pop_back();
    return full;
}

} // namespace Orlindex::Doctor
