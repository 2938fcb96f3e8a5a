#ifndef AGENT_SESSION_TOKEN_H
#define AGENT_SESSION_TOKEN_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace Kestrany::Agent {

using TimePoint = std::chrono::system_clock::time_point;
using Clock = std::function<TimePoint()>;

/// Fills a block with random bytes that nobody can guess; throws when it cannot.
using RandomSource = std::function<void(void* bytes, std::size_t size)>;

/// A text that whoever bears it is believed, up to its expiry.
struct Token
{
    std::string text;
    TimePoint expiry;
};

/// The bytes as base64url text without padding.
std::string Base64Url(const std::string& bytes);

/// `size` random bytes as base64url text without padding.
std::string RandomText(const RandomSource& random, std::size_t size);

} // namespace Kestrany::Agent

#endif
