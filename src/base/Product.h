#ifndef ORLINDEX_BASE_PRODUCT_H
#define ORLINDEX_BASE_PRODUCT_H

namespace Kestrany::IdentityServices {

/// The library's own version. The library reports it, and compares it with the versions that a plugin serves.
inline constexpr char ProductVersion[] = ORLINDEX_VERSION;

/// The library's file name, by which it finds its own module in the process.
inline constexpr wchar_t ProductModuleName[] = L"Orlindex.dll";

/// Architecture and build configuration, as the log shows them.
inline constexpr const wchar_t* SDKBuildConfiguration = sizeof(void*) == 8 ? L"x64-Release" : L"x86-Release";

} // namespace Kestrany::IdentityServices

#endif
