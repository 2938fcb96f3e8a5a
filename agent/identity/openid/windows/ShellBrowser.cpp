#include "identity/openid/windows/ShellBrowser.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include "platform/Base.h"

namespace Kestrany::Agent::OpenId {

namespace {

/// Shell extensions need COM on the thread that opens.
class ComApartment
{
public:
    ComApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~ComApartment()
    {
        if (SUCCEEDED(result_))
            CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    const HRESULT result_;
};

} // namespace

bool ShellBrowser::Open(const std::string& address)
{
    const ComApartment apartment;
    const std::wstring wide = Widen(address);
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", wide.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(result) > 32; // By contract; smaller values are errors.
}

} // namespace Kestrany::Agent::OpenId
