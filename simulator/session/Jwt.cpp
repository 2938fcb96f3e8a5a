#include "session/Jwt.h"

#include "session/Json.h"
#include "session/Token.h"

namespace Kestrany::Simulator {

std::string WriteJwt(const TokenSigner& signer, const char* type, const Json::Value& claims)
{
    Json::Value header(Json::objectValue);
    header["alg"] = "ES256";
    header["typ"] = type;
    header["kid"] = signer.keyId;
    const std::string text = Base64Url(WriteJson(header)) + "." + Base64Url(WriteJson(claims));
    return text + "." + Base64Url(signer.sign(text));
}

} // namespace Kestrany::Simulator
