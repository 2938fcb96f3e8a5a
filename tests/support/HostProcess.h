#ifndef ORLINDEX_SUPPORT_HOSTPROCESS_H
#define ORLINDEX_SUPPORT_HOSTPROCESS_H

#include <filesystem>
#include <string>

namespace OrlindexTest {

/// Where the process that runs one test finds its things; given to it through the environment.
struct HostSurroundings
{
    std::filesystem::path root;    ///< Folder of this test alone; the executable runs in its subfolder "host".
    std::filesystem::path plugins; ///< Builds of the test plugin.
    std::filesystem::path signing; ///< Certificates of the build.
};

/// Whether this process was started by RunTestAsHost.
bool IsHostProcess();

/// Of this process, which must have been started by RunTestAsHost.
HostSurroundings Surroundings();

/// Says that this process came to the regular end of its test. One that ends without it has failed, whatever its exit
/// code.
void ReportEnd();

/// Whether a process of this test reported its end. Takes the report away.
bool TakeEndReport();

/// Runs one test in a process of its own, from a folder of its own that holds a copy of this executable and of the
/// library, as a host is installed. The folder and the installer's registry key are gone afterwards, however the test
/// ended. A suite whose name starts with `Machine` runs while no other does. Answers whether the test passed.
bool RunTestAsHost(const std::string& suite, const std::string& name);

} // namespace OrlindexTest

#endif
