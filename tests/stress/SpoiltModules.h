#ifndef ORLINDEX_STRESS_SPOILTMODULES_H
#define ORLINDEX_STRESS_SPOILTMODULES_H

#include <cstdint>
#include <string>
#include <vector>

namespace OrlindexTest {

/// A module file, changed in one way.
struct SpoiltModule
{
    std::string name;
    std::string bytes;
};

/// Each with one bit of one byte flipped; the places follow from the seed, and are spread over the whole file.
std::vector<SpoiltModule> WithFlippedBytes(const std::string& module, int count, std::uint32_t seed);
/// Cut off at each section's beginning and end, and at each sixteenth.
std::vector<SpoiltModule> CutOff(const std::string& module);
/// With data behind the file, and in the table of certificates, of even and odd lengths.
std::vector<SpoiltModule> WithAppendedData(const std::string& module);
/// With a table of certificates that lies elsewhere, or holds something else.
std::vector<SpoiltModule> WithOtherCertificateTables(const std::string& module);

} // namespace OrlindexTest

#endif
