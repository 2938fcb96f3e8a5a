#include "orlindex/ProductConfig.h"

#include <cstdint>
#include <cstring>

#include "api/TextOut.h"
#include "load/contract/ProductConfigLayout.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr std::size_t longestText = 2147483647;

void Store(ProductText& entry, const char* text)
{
    if (!text)
        return;
    const std::size_t length = strnlen(text, longestText);
    // By contract compared with the length of the previous text, not with the size of its buffer: a longer text gets a
    // new buffer, even if the old buffer has room.
    if (!entry.text || length > static_cast<std::size_t>(entry.length))
    {
        char* const buffer = new char[length + 1];
        delete[] entry.text;
        entry.text = buffer;
    }
    BoundedCopy(entry.text, length + 1, text);
    entry.length = static_cast<std::int32_t>(length);
}

/// By contract the size is not compared with the length: the runtime's copy handles a text that does not fit. If the
/// host's invalid-parameter handler returns, this still returns the stored length.
int Read(const ProductText& entry, char* buffer, int size)
{
    if (!buffer || size == 0 || !entry.text)
        return 0;
    BoundedCopy(buffer, CallerCapacity(size), entry.text);
    return entry.length;
}

} // namespace

struct ProductConfigPrivate : ProductConfigTexts
{
};

ProductConfig::ProductConfig() : d(new ProductConfigPrivate) {}

ProductConfig::ProductConfig(const ProductConfig& other) : ProductConfig()
{
    *this = other;
}

ProductConfig& ProductConfig::operator=(const ProductConfig& other)
{
    if (this != &other)
    {
        // The setters ignore null texts, so that an entry that was never set does not change the target, by contract.
        SetOAuth2ClientID(other.d->clientId.text);
        SetOAuth2TokenScope(other.d->tokenScope.text);
        SetProductLineName(other.d->productLineName.text);
        SetProductReleaseId(other.d->productReleaseId.text);
        SetProductBuildId(other.d->productBuildId.text);
    }
    return *this;
}

/// Releases the private state but not the texts, on purpose: by contract the texts may outlive the object.
ProductConfig::~ProductConfig()
{
    delete d;
    // Volatile, because the compiler would drop the store to an object that ends here.
    *const_cast<ProductConfigPrivate* volatile*>(&d) = nullptr;
}

IdErrorCode ProductConfig::SetOAuth2ClientID(const char* text)
{
    if (!text)
        return IdInvalidClientId;
    Store(d->clientId, text);
    return IdSuccess;
}

void ProductConfig::SetOAuth2TokenScope(const char* text)
{
    Store(d->tokenScope, text);
}

void ProductConfig::SetProductLineName(const char* text)
{
    Store(d->productLineName, text);
}

void ProductConfig::SetProductReleaseId(const char* text)
{
    Store(d->productReleaseId, text);
}

void ProductConfig::SetProductBuildId(const char* text)
{
    Store(d->productBuildId, text);
}

int ProductConfig::GetOAuth2ClientID(char* buffer, int size) const
{
    return Read(d->clientId, buffer, size);
}

int ProductConfig::GetOAuth2AccessTokenScope(char* buffer, int size) const
{
    return Read(d->tokenScope, buffer, size);
}

int ProductConfig::GetProductLineName(char* buffer, int size) const
{
    return Read(d->productLineName, buffer, size);
}

int ProductConfig::GetProductReleaseId(char* buffer, int size) const
{
    return Read(d->productReleaseId, buffer, size);
}

int ProductConfig::GetProductBuildId(char* buffer, int size) const
{
    return Read(d->productBuildId, buffer, size);
}

} // namespace Kestrany::IdentityServices
