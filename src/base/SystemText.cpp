#include "base/SystemText.h"

#include <memory>
#include <windows.h>

namespace Kestrany::IdentityServices {
namespace {

struct LocalFreeDeleter
{
    void operator()(wchar_t* text) const { LocalFree(text); }
};

} // namespace

std::wstring GetSystemErrorText(unsigned long code)
{
    constexpr DWORD neutralLanguage = 0x400;
    wchar_t* allocated = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, neutralLanguage,
                   reinterpret_cast<wchar_t*>(&allocated), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalFreeDeleter> owner(allocated);
    if (allocated && *allocated)
        return allocated;
    // The one error whose text is fixed, for systems that have none.
    return code == ERROR_MOD_NOT_FOUND ? L"The specified module could not be found." : L"";
}

} // namespace Kestrany::IdentityServices
