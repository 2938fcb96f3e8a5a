#ifndef ORLINDEX_CONTRACT_PRODUCTCONFIGLAYOUT_H
#define ORLINDEX_CONTRACT_PRODUCTCONFIGLAYOUT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "orlindex/ProductConfig.h"

// How a plugin module reads and fills a ProductConfig without linking the library. The members of ProductConfig are
// exports with decorated names, which differ between compilers; a module that imports them only loads beside a library
// of its own compiler. The layout is the same for all.

namespace Kestrany::IdentityServices {

/// One text of a product configuration. The library owns it and allocates it on a heap of its own: a plugin only reads
/// it.
struct ProductText
{
    char* text = nullptr;    ///< Null until it is set; ends with a zero.
    std::int32_t length = 0; ///< Bytes without the zero.
};

/// The texts, in their fixed order.
struct ProductConfigTexts
{
    ProductText clientId;
    ProductText tokenScope;
    ProductText productLineName;
    ProductText productReleaseId;
    ProductText productBuildId;
};

/// The object itself.
struct ProductConfigLayout
{
    const void* virtualTable;
    ProductConfigTexts* texts;
};

static_assert(sizeof(ProductText) == 2 * sizeof(void*), "a pointer and a length, aligned like the pointer");
static_assert(sizeof(ProductConfigTexts) == 5 * sizeof(ProductText), "five texts without gaps");
static_assert(sizeof(ProductConfig) == sizeof(ProductConfigLayout), "a virtual table and one pointer");

/// The texts of an object that the library passed. Valid during the call.
inline const ProductConfigTexts& TextsOf(const ProductConfig& config)
{
    ProductConfigLayout layout;
    std::memcpy(&layout, static_cast<const void*>(&config), sizeof layout);
    return *layout.texts;
}

/// A member of ProductConfig that sets a text, by its address in the library.
class ProductTextSetter
{
public:
    explicit ProductTextSetter(void* address) : address_(address) {}

    /// False if the library does not export the member.
    explicit operator bool() const { return address_ != nullptr; }

    /// Sets the text, which must not be null. SetOAuth2ClientID then always returns IdSuccess.
    void operator()(ProductConfig& config, const char* text) const
    {
#if defined(_WIN32) && !defined(_WIN64)
        // A member function takes the object in ecx and the text on the stack, as a fast call does whose second
        // argument is in edx. Not every compiler has a type for the first.
        using Member = void(__fastcall*)(ProductConfig*, int, const char*);
        reinterpret_cast<Member>(address_)(&config, 0, text);
#else
        using Member = void (*)(ProductConfig*, const char*);
        reinterpret_cast<Member>(address_)(&config, text);
#endif
    }

private:
    void* address_;
};

/// The names under which libraries of the two families of compilers export one setter.
struct ProductTextSetterNames
{
    const char* microsoft;
    const char* itanium; ///< gcc and clang for mingw-w64.
};

#if defined(_WIN64) || !defined(_WIN32)
#define ORLINDEX_SETTER_OF_CODE "QEAA?AW4talix_status_code@@PEBD@Z"
#define ORLINDEX_SETTER "QEAAXPEBD@Z"
#else
#define ORLINDEX_SETTER_OF_CODE "QAE?AW4talix_status_code@@PBD@Z"
#define ORLINDEX_SETTER "QAEXPBD@Z"
#endif
inline constexpr ProductTextSetterNames SetOAuth2ClientIDNames = {
    "?SetOAuth2ClientID@ProductConfig@IdentityServices@Kestrany@@" ORLINDEX_SETTER_OF_CODE,
    "_ZN8Kestrany16IdentityServices13ProductConfig17SetOAuth2ClientIDEPKc"};
inline constexpr ProductTextSetterNames SetOAuth2TokenScopeNames = {
    "?SetOAuth2TokenScope@ProductConfig@IdentityServices@Kestrany@@" ORLINDEX_SETTER,
    "_ZN8Kestrany16IdentityServices13ProductConfig19SetOAuth2TokenScopeEPKc"};
inline constexpr ProductTextSetterNames SetProductLineNameNames = {
    "?SetProductLineName@ProductConfig@IdentityServices@Kestrany@@" ORLINDEX_SETTER,
    "_ZN8Kestrany16IdentityServices13ProductConfig18SetProductLineNameEPKc"};
inline constexpr ProductTextSetterNames SetProductReleaseIdNames = {
    "?SetProductReleaseId@ProductConfig@IdentityServices@Kestrany@@" ORLINDEX_SETTER,
    "_ZN8Kestrany16IdentityServices13ProductConfig19SetProductReleaseIdEPKc"};
inline constexpr ProductTextSetterNames SetProductBuildIdNames = {
    "?SetProductBuildId@ProductConfig@IdentityServices@Kestrany@@" ORLINDEX_SETTER,
    "_ZN8Kestrany16IdentityServices13ProductConfig17SetProductBuildIdEPKc"};
#undef ORLINDEX_SETTER
#undef ORLINDEX_SETTER_OF_CODE

/// Finds a setter in a library of either compiler. `find` returns the address of an export of Orlindex.dll or null, as
/// GetProcAddress does.
template <typename Find>
ProductTextSetter FindProductTextSetter(const ProductTextSetterNames& names, Find&& find)
{
    auto* address = find(names.microsoft);
    if (address == nullptr)
        address = find(names.itanium);
    return ProductTextSetter(reinterpret_cast<void*>(address));
}

} // namespace Kestrany::IdentityServices

#endif
