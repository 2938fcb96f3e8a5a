#include "load/SignerName.h"

#include <algorithm>
#include <string>

namespace Kestrany::IdentityServices {
namespace {

std::string SimpleDisplayName(PCCERT_CONTEXT certificate)
{
    // Lengths include the terminating NUL; an absent name has length 1. The narrow function, on purpose: the list's
    // names are bytes, and are compared as such.
    const DWORD needed = CertGetNameStringA(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, nullptr, 0);
    if (needed < 2)
        return {};
    std::string name(needed, '\0');
    const DWORD length =
        CertGetNameStringA(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name.data(), needed);
    if (length < 2 || length > needed)
        return {};
    name.resize(length - 1);
    return name;
}

/// A conversion to the narrow code page takes letters that look alike for ASCII ones, and only the wide name tells them
/// apart. Accepted names are ASCII.
bool IsWideName(PCCERT_CONTEXT certificate, const std::string& name)
{
    std::wstring wide(name.size() + 2, L'\0'); // A longer name fills it.
    const DWORD length = CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, wide.data(),
                                            static_cast<DWORD>(wide.size()));
    if (length != name.size() + 1)
        return false;
    return std::equal(name.begin(), name.end(), wide.begin(),
                      [](char narrow, wchar_t unit) { return static_cast<unsigned char>(narrow) == unit; });
}

} // namespace

bool SignerNameMatches(PCCERT_CONTEXT certificate, std::string_view signers)
{
    const std::string name = SimpleDisplayName(certificate);
    for (std::size_t end = signers.find('\0'); end != std::string_view::npos; end = signers.find('\0'))
    {
        if (signers.substr(0, end) == name)
            return IsWideName(certificate, name);
        signers.remove_prefix(end + 1);
    }
    return false;
}

} // namespace Kestrany::IdentityServices
