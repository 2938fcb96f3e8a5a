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

std::string Base64Url(const std::string& bytes)
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    unsigned int pending = 0;
    int pendingBits = 0;
    for (const char byte : bytes)
    {
        pending = (pending << 8 | static_cast<unsigned char>(byte)) & 0xFFFFu;
        pendingBits += 8;
        while (pendingBits >= 6)
        {
            pendingBits -= 6;
            text += alphabet[pending >> pendingBits & 63u];
        }
    }
    if (pendingBits > 0)
        text += alphabet[pending << (6 - pendingBits) & 63u];
    return text;
}

std::string RandomText(const RandomSource& random, std::size_t size)
{
    std::string bytes(size, '\0');
    random(bytes.data(), bytes.size());
    return Base64Url(bytes);
}

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
