#include "calls/Plugin.h"

#include <stdexcept>
#include <windows.h>

#include "load/contract/ISSOClientFactory.h"

namespace OrlindexBench {

Kestrany::IdentityServices::ISSOClient& LoadedClient()
{
    const HMODULE module = GetModuleHandleW(L"PellwickClient.dll");
    if (!module)
        throw std::runtime_error("the library has loaded no plugin module");
    using Function = Kestrany::IdentityServices::ISSOClientFactory* (*)();
    const FARPROC symbol =
        GetProcAddress(module, "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ");
    return *reinterpret_cast<Function>(reinterpret_cast<void*>(symbol))()->GetSSOClient();
}

} // namespace OrlindexBench
