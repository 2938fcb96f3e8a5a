#ifndef ORLINDEX_FUZZ_OPENIDREPLIES_H
#define ORLINDEX_FUZZ_OPENIDREPLIES_H

#include <algorithm>
#include <string>

#include "Require.h"
#include "identity/openid/Failure.h"
#include "identity/openid/Services.h"

namespace OrlindexTest {

/// A JSON reply of a provider.
inline Kestrany::Agent::OpenId::HttpReply ReplyOf(const std::string& body, int status = 200)
{
    Kestrany::Agent::OpenId::HttpReply reply;
    reply.status = status;
    reply.contentType = "application/json";
    reply.body = Kestrany::Agent::OpenId::Secret(body);
    return reply;
}

/// Whatever came from outside, a log line stays one line of plain text, and says what happened.
inline void RequireGoodLine(const Kestrany::Agent::OpenId::Failure& failure)
{
    const std::string line = Kestrany::Agent::OpenId::LogLine(failure);
    Require(std::all_of(line.begin(), line.end(), [](char letter) { return letter >= ' ' && letter <= '~'; }),
            "a log line is plain text");
    Require(line.size() < 2000, "a log line is short");
    Require(line.find("Sign-in failed") != 0, "a failure is in the table");
}

} // namespace OrlindexTest

#endif
