#ifndef ORLINDEX_BENCH_SIGNINS_CRYPTOGRAPHY_H
#define ORLINDEX_BENCH_SIGNINS_CRYPTOGRAPHY_H

#include <string>
#include <string_view>

namespace OrlindexBench {

std::string RandomBytes(std::size_t count);
std::string Sha256(std::string_view bytes);

std::string ToBase64Url(std::string_view bytes);
/// Throws for anything else.
std::string FromBase64Url(std::string_view text);

/// RS256. The modulus and the exponent are big-endian.
bool IsSignature(std::string_view modulus, std::string_view exponent, std::string_view text,
                 std::string_view signature);

} // namespace OrlindexBench

#endif
