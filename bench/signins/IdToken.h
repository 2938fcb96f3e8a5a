#ifndef ORLINDEX_BENCH_SIGNINS_IDTOKEN_H
#define ORLINDEX_BENCH_SIGNINS_IDTOKEN_H

#include <string>

#include <json/value.h>

namespace OrlindexBench {

/// Throws for anything but an object.
Json::Value ParseJson(const std::string& text);

/// What an ID token must say.
struct Expectation
{
    std::string issuer;
    std::string client;
    std::string nonce;
    std::string accessToken;
};

/// Verifies the signature by one of the keys of a key set, and the claims. Returns the claims; throws if one is wrong.
Json::Value VerifyIdToken(const std::string& token, const Json::Value& keySet, const Expectation& expectation);

} // namespace OrlindexBench

#endif
