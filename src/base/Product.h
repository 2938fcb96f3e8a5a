#ifndef ORLINDEX_BASE_PRODUCT_H
#define ORLINDEX_BASE_PRODUCT_H

namespace Kestrany::IdentityServices {

/// The library's own version, which it reports, and compares with what plugins say they serve.
inline constexpr char ProductVersion[] = ORLINDEX_VERSION;

/// The library's file name, by which it finds itself among the modules of the process.
inline constexpr wchar_t ProductModuleName[] = L"Orlindex.dll";

/// Architecture and configuration, as the log names them.
inline constexpr const wchar_t* SDKBuildConfiguration = sizeof(void*) == 8 ? L"x64-Release" : L"x86-Release";

} // namespace Kestrany::IdentityServices

#endif
