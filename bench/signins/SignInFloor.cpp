// The minimum work of a sign-in, written by hand with the platform's own calls: sign_in_floor ISSUER CLIENT FILE
//
// Each line on the standard input begins a sign-in. Prints "address URL" when the browser may open that, and "event
// SUBJECT" when the user is signed in: the ID token is verified then, and the tokens are in the file, encrypted. The
// metadata and the keys are requested once, at the moments when the agent requests them.

#include <cstdio>
#include <exception>
#include <iostream>
#include <map>
#include <string>

#include <winsock2.h>

#include "signins/Cryptography.h"
#include "signins/IdToken.h"
#include "signins/Redirect.h"
#include "signins/Requests.h"
#include "signins/Require.h"
#include "signins/TokenFile.h"

namespace {

using namespace OrlindexBench;

constexpr std::size_t SecretBytes = 32;

std::string Escape(const std::string& text)
{
    std::string escaped;
    for (const char each : text)
    {
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned int>(static_cast<unsigned char>(each)));
        escaped += code;
    }
    return escaped;
}

void Print(const char* what, const std::string& text)
{
    std::printf("%s\t%s\n", what, text.c_str());
    std::fflush(stdout);
}

class Floor
{
public:
    Floor(std::string issuer, std::string client, std::wstring file)
        : issuer_(std::move(issuer)), client_(std::move(client)), file_(std::move(file))
    {
    }

    void SignIn()
    {
        if (metadata_.isNull())
        {
            metadata_ = ParseJson(requests_.Get(issuer_ + "/.well-known/openid-configuration"));
            Require(metadata_["issuer"] == issuer_, "another issuer");
        }
        const RedirectSocket socket;
        const std::string state = ToBase64Url(RandomBytes(SecretBytes));
        const std::string nonce = ToBase64Url(RandomBytes(SecretBytes));
        const std::string verifier = ToBase64Url(RandomBytes(SecretBytes));
        Print("address", metadata_["authorization_endpoint"].asString() +
                             "?response_type=code&scope=openid&code_challenge_method=S256&client_id=" + client_ +
                             "&redirect_uri=" + Escape(socket.Address()) + "&state=" + state + "&nonce=" + nonce +
                             "&code_challenge=" + ToBase64Url(Sha256(verifier)));
        std::map<std::string, std::string> redirect = socket.Await();
        Require(redirect["state"] == state && redirect["iss"] == issuer_, "another sign-in");
        Print("event", Redeem(redirect["code"], socket.Address(), verifier, nonce));
    }

private:
    /// Returns the subject.
    std::string Redeem(const std::string& code, const std::string& redirectUri, const std::string& verifier,
                       const std::string& nonce)
    {
        const std::string reply = requests_.Post(metadata_["token_endpoint"].asString(),
                                                 "grant_type=authorization_code&code=" + Escape(code) +
                                                     "&redirect_uri=" + Escape(redirectUri) + "&client_id=" + client_ +
                                                     "&code_verifier=" + verifier);
        const Json::Value tokens = ParseJson(reply);
        Require(tokens["token_type"] == "Bearer", "another type of token");
        if (keySet_.isNull())
            keySet_ = ParseJson(requests_.Get(metadata_["jwks_uri"].asString()));
        const Json::Value claims = VerifyIdToken(tokens["id_token"].asString(), keySet_,
                                                 {issuer_, client_, nonce, tokens["access_token"].asString()});
        WriteProtected(file_, reply);
        return claims["sub"].asString();
    }

    const std::string issuer_;
    const std::string client_;
    const std::wstring file_;
    const Requests requests_;
    Json::Value metadata_;
    Json::Value keySet_;
};

} // namespace

int main(int argc, char** argv)
{
    WSADATA data;
    if (argc != 4 || WSAStartup(MAKEWORD(2, 2), &data) != 0)
        return 2;
    try
    {
        const std::string file = argv[3];
        Floor floor(argv[1], argv[2], std::wstring(file.begin(), file.end()));
        for (std::string line; std::getline(std::cin, line);)
            floor.SignIn();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "sign_in_floor: %s\n", error.what());
        return 1;
    }
}
