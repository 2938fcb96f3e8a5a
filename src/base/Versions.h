#ifndef ORLINDEX_BASE_VERSIONS_H
#define ORLINDEX_BASE_VERSIONS_H

#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// A version text split at its points: "1.11.13.3" is 1, 11, 13, 3. Parts may be empty and need not be numbers.
using VersionParts = std::vector<std::string>;

/// Keeps empty parts; an empty text has no parts.
VersionParts SplitVersion(const std::string& text);

std::string JoinVersion(const VersionParts& parts);

/// -1, 0 or 1. Part by part: as signed 64-bit decimals where both are, then always as text without regard to ASCII
/// case, so that 1.10 > 1.9, 1.02 < 1.2 and 1.2 < 1.2.0 (a missing part is an empty one). A positive `limit` compares
/// only so many parts.
///
/// Not transitive for every input (numbers and texts mix), so it must not order a container that relies on it.
int CompareVersions(const VersionParts& a, const VersionParts& b, int limit = -1);

} // namespace Kestrany::IdentityServices

#endif
