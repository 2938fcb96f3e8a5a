#ifndef ORLINDEX_BASE_VERSIONS_H
#define ORLINDEX_BASE_VERSIONS_H

#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// A version text split at its dots: "1.11.13.3" is 1, 11, 13, 3. Parts may be empty and need not be numbers.
using VersionParts = std::vector<std::string>;

/// Keeps empty parts. An empty text has no parts.
VersionParts SplitVersion(const std::string& text);

std::string JoinVersion(const VersionParts& parts);

/// Returns -1, 0 or 1. Compares part by part: first as signed 64-bit decimal numbers if both parts are numbers, then
/// always as text, ignoring ASCII case. So 1.10 > 1.9, 1.02 < 1.2 and 1.2 < 1.2.0 (a missing part is an empty one). A
/// positive `limit` compares only that many parts.
///
/// Not transitive for every input, because numbers and texts mix: do not use it to sort, or to order a container.
int CompareVersions(const VersionParts& a, const VersionParts& b, int limit = -1);

} // namespace Kestrany::IdentityServices

#endif
