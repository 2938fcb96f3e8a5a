#include "plugin/ProductTexts.h"

#include <cstdint>
#include <string>
#include <utility>

#include <windows.h>

#include "platform/Base.h"

namespace Kestrany::Agent {

using IdentityServices::ProductConfig;

namespace {

using Getter = int (ProductConfig::*)(char*, int) const;

/// One text of the host's object, and the member that holds it here.
struct Entry
{
    std::string ProductSettings::* text;
    Getter get;
    void (*set)(ProductConfig& config, const char* text);
};

/// Not constexpr: the address of an imported function is known only after the load.
const Entry Entries[] = {
    {&ProductSettings::clientId, &ProductConfig::GetOAuth2ClientID,
     [](ProductConfig& config, const char* text) { config.SetOAuth2ClientID(text); }},
    {&ProductSettings::tokenScope, &ProductConfig::GetOAuth2AccessTokenScope,
     [](ProductConfig& config, const char* text) { config.SetOAuth2TokenScope(text); }},
    {&ProductSettings::lineName, &ProductConfig::GetProductLineName,
     [](ProductConfig& config, const char* text) { config.SetProductLineName(text); }},
    {&ProductSettings::releaseId, &ProductConfig::GetProductReleaseId,
     [](ProductConfig& config, const char* text) { config.SetProductReleaseId(text); }},
    {&ProductSettings::buildId, &ProductConfig::GetProductBuildId,
     [](ProductConfig& config, const char* text) { config.SetProductBuildId(text); }},
};

using InvalidParameterHandler = void(__cdecl*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int,
                                               std::uintptr_t);
using SetThreadHandler = InvalidParameterHandler(__cdecl*)(InvalidParameterHandler);

void __cdecl IgnoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

SetThreadHandler FindSetThreadHandler()
{
    // ProductConfig copies with the universal runtime, whatever this module's own runtime is.
    const HMODULE runtime = GetModuleHandleW(L"ucrtbase.dll");
    if (runtime == nullptr)
        return nullptr;
    const FARPROC address = GetProcAddress(runtime, "_set_thread_local_invalid_parameter_handler");
    return reinterpret_cast<SetThreadHandler>(reinterpret_cast<void*>(address));
}

/// During its lifetime a text that does not fit its buffer does not end the process. For this thread alone.
class ToleratedOverflow
{
public:
    ToleratedOverflow() : set_(FindSetThreadHandler())
    {
        if (set_ != nullptr)
            previous_ = set_(&IgnoreInvalidParameter);
    }
    ~ToleratedOverflow()
    {
        if (set_ != nullptr)
            set_(previous_);
    }
    ToleratedOverflow(const ToleratedOverflow&) = delete;
    ToleratedOverflow& operator=(const ToleratedOverflow&) = delete;

private:
    SetThreadHandler set_;
    InvalidParameterHandler previous_ = nullptr;
};

/// A getter returns the length of its text only after a copy, but also after one that failed.
std::string ReadText(const ProductConfig& config, Getter getter)
{
    std::string text(4096, '\0');
    for (;;)
    {
        const int length = (config.*getter)(text.data(), static_cast<int>(text.size()));
        const auto size = static_cast<std::size_t>(length < 0 ? 0 : length);
        const bool fitted = size < text.size();
        text.resize(fitted ? size : size + 1);
        if (fitted)
            return text;
    }
}

} // namespace

ProductSettings ReadTexts(const ProductConfig& config)
{
    const ToleratedOverflow tolerated;
    ProductSettings product;
    for (const Entry& entry : Entries)
        product.*entry.text = ReadText(config, entry.get);
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
            entry.set(config, text.c_str());
    }
}

void ReplaceProduct(const ProductSettings& product, ProductConfig& config)
{
    for (const Entry& entry : Entries)
        entry.set(config, (product.*entry.text).c_str());
}

} // namespace Kestrany::Agent
