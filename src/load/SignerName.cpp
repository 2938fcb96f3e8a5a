#include "load/SignerName.h"

#include <string>

namespace Kestrany::IdentityServices {
namespace {

std::string SimpleDisplayName(PCCERT_CONTEXT certificate)
{
    // Lengths include the terminating NUL; an absent name has length 1.
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

} // namespace

bool SignerNameMatches(PCCERT_CONTEXT certificate, std::string_view signers)
{
    const std::string name = SimpleDisplayName(certificate);
    for (std::size_t end = signers.find('\0'); end != std::string_view::npos; end = signers.find('\0'))
    {
        if (signers.substr(0, end) == name)
            return true;
        signers.remove_prefix(end + 1);
    }
    return false;
}

} // namespace Kestrany::IdentityServices
