#ifndef ORLINDEX_STRESS_CORRUPTEDMODULES_H
#define ORLINDEX_STRESS_CORRUPTEDMODULES_H

#include <cstdint>
#include <string>
#include <vector>

namespace OrlindexTest {

/// A module file, changed in one way.
struct CorruptedModule
{
    std::string name;
    std::string bytes;
};

/// Each with one bit flipped. The seed determines the positions, which are spread over the whole file.
std::vector<CorruptedModule> WithFlippedBytes(const std::string& module, int count, std::uint32_t seed);
/// Truncated at the start and the end of each section, and at each sixteenth of the file.
std::vector<CorruptedModule> CutOff(const std::string& module);
/// With data of even and odd lengths behind the file and in the certificate table.
std::vector<CorruptedModule> WithAppendedData(const std::string& module);
/// With a certificate table at another position or with other contents.
std::vector<CorruptedModule> WithOtherCertificateTables(const std::string& module);

} // namespace OrlindexTest

#endif
