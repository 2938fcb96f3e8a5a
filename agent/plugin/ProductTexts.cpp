#include "plugin/ProductTexts.h"

#include <stdexcept>
#include <string>
#include <utility>

#include <windows.h>

#include "load/contract/ProductConfigLayout.h"
#include "platform/Base.h"

namespace Kestrany::Agent {

using namespace IdentityServices;

namespace {

/// One text of the host's object, and the member that holds it here.
struct Entry
{
    std::string ProductSettings::* text;
    ProductText ProductConfigTexts::* source;
    ProductTextSetterNames setter;
};

constexpr Entry Entries[] = {
    {&ProductSettings::clientId, &ProductConfigTexts::clientId, SetOAuth2ClientIDNames},
    {&ProductSettings::tokenScope, &ProductConfigTexts::tokenScope, SetOAuth2TokenScopeNames},
    {&ProductSettings::lineName, &ProductConfigTexts::productLineName, SetProductLineNameNames},
    {&ProductSettings::releaseId, &ProductConfigTexts::productReleaseId, SetProductReleaseIdNames},
    {&ProductSettings::buildId, &ProductConfigTexts::productBuildId, SetProductBuildIdNames},
};

std::string ReadText(const ProductText& source)
{
    if (source.text == nullptr || source.length <= 0)
        return {};
    return {source.text, static_cast<std::size_t>(source.length)};
}

/// The library allocates the texts, so it has to store them: this module could not replace one.
void SetText(ProductConfig& config, const Entry& entry, const std::string& text)
{
    const HMODULE library = GetModuleHandleW(L"Orlindex.dll");
    const ProductTextSetter set =
        FindProductTextSetter(entry.setter, [library](const char* name) { return GetProcAddress(library, name); });
    if (!set)
        throw std::runtime_error(std::string("Orlindex.dll does not export ") + entry.setter.microsoft);
    set(config, text.c_str());
}

} // namespace

ProductSettings ReadTexts(const ProductConfig& config)
{
    const ProductConfigTexts& texts = TextsOf(config);
    ProductSettings product;
    for (const Entry& entry : Entries)
        product.*entry.text = ReadText(texts.*entry.source);
    return product;
}

IdErrorCode ReadProduct(const ProductConfig& config, ProductSettings& product)
{
    ProductSettings read = ReadTexts(config);
    for (const Entry& entry : Entries)
    {
        if (!WidenStrictly(read.*entry.text))
            return IdInvalidText;
    }
    product = std::move(read);
    return IdSuccess;
}

void WriteProduct(const ProductSettings& product, ProductConfig& config)
{
    for (const Entry& entry : Entries)
    {
        if (const std::string& text = product.*entry.text; !text.empty())
            SetText(config, entry, text);
    }
}

void ReplaceProduct(const ProductSettings& product, ProductConfig& config)
{
    for (const Entry& entry : Entries)
        SetText(config, entry, product.*entry.text);
}

} // namespace Kestrany::Agent
