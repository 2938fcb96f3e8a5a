#ifndef ORLINDEX_SUPPORT_HOSTPROCESS_H
#define ORLINDEX_SUPPORT_HOSTPROCESS_H

#include <filesystem>
#include <string>

namespace OrlindexTest {

/// The paths for the process that runs one test. It gets them through environment variables.
struct HostEnvironment
{
    std::filesystem::path root;    ///< Folder of this test; the executable runs in its subfolder "host".
    std::filesystem::path plugins; ///< Builds of the test plugin.
    std::filesystem::path signing; ///< Certificates of the build.
};

/// Whether this process was started by RunTestAsHost.
bool IsHostProcess();

/// The paths of this process, which RunTestAsHost must have started.
HostEnvironment Environment();

/// Reports that this process reached the regular end of its test. A process that ends without this report has failed,
/// whatever its exit code.
void ReportEnd();

/// Whether a process of this test reported its end. Removes the report.
bool TakeEndReport();

/// Runs one test in a process of its own. Its folder contains a copy of this executable and of the library, as a host
/// is installed. The folder and the installer's registry key are removed afterwards, however the test ended. A suite
/// whose name starts with `Machine` runs while no other test does. Returns whether the test passed.
bool RunTestAsHost(const std::string& suite, const std::string& name);

} // namespace OrlindexTest

#endif
