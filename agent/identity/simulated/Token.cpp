#include "identity/simulated/Token.h"

#include "identity/Json.h"

namespace Kestrany::Agent::Simulated {

namespace {

std::string Header(const TokenSigner& signer, const char* type)
{
    Json::Value header(Json::objectValue);
    header["alg"] = "ES256";
    header["typ"] = type;
    header["kid"] = signer.keyId;
    return Base64Url(WriteJson(header)) + ".";
}

} // namespace

std::string WriteJwt(const TokenSigner& signer, const char* type, const Json::Value& claims)
{
    const std::string text = Header(signer, type) + Base64Url(WriteJson(claims));
    return text + "." + Base64Url(signer.sign(text));
}

bool IsSignedBy(const TokenSigner& signer, const char* type, const std::string& token)
{
    const std::string header = Header(signer, type);
    return token.compare(0, header.size(), header) == 0;
}

} // namespace Kestrany::Agent::Simulated
