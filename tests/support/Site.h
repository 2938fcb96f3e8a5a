#ifndef ORLINDEX_SUPPORT_SITE_H
#define ORLINDEX_SUPPORT_SITE_H

#include <filesystem>
#include <string>
#include <vector>

#include "HostProcess.h"

namespace OrlindexTest {

/// One element of the version compatibility file. The range is written as it stands; the default serves this library.
struct CompatibilityEntry
{
    std::string modulePath;
    std::string version = "2.0.0";
    std::string range = R"({"minVersion": "1.11", "maxVersion": "1.11"})";
    std::string pathKey = "modulePath";
    std::string module = "PellwickClient";
};

/// What is installed around the host process of one test: the host's folder, where it runs, and the server
/// application's folder. The process that started this one removes everything.
class Site
{
public:
    Site();

    /// Holds the host's executable and Orlindex.dll.
    std::filesystem::path HostFolder() const { return surroundings_.root / "host"; }
    /// Holds the server application, the version compatibility file and the plugin. Empty at first.
    std::filesystem::path ServerFolder() const { return surroundings_.root / "server"; }
    /// Makes a further folder beside those.
    std::filesystem::path MakeFolder(const std::filesystem::path& name) const;

    std::filesystem::path ClientConfigFile() const { return HostFolder() / "Orlindex.config"; }
    std::filesystem::path CompatibilityFile() const { return ServerFolder() / "TALIXVersionCompatibility.config"; }
    std::filesystem::path PluginFile() const { return ServerFolder() / "PellwickClient.dll"; }

    /// Everything that a start needs, with one build of the test plugin.
    void Install(const std::string& plugin = "good") const;
    /// Everything but the plugin file.
    void InstallWithoutPlugin() const;

    void WriteClientConfig(const std::string& json) const;
    void WriteCompatibilityFile(const std::string& json) const;
    void WriteCompatibilityFile(const std::vector<CompatibilityEntry>& entries) const;
    /// Makes a Pellwick.exe that is only there to be found.
    void InstallServerApplication(const std::filesystem::path& folder) const;
    /// Copies a build of the test plugin, or the library that its "dependent" build needs.
    void CopyPlugin(const std::string& plugin, const std::filesystem::path& file) const;

    /// A root certificate of the build, DER.
    std::string RootCertificate(const std::string& name) const;

private:
    HostSurroundings surroundings_;
};

/// JSON text of a path, without quotes.
std::string JsonPath(const std::filesystem::path& path);

/// Changes one byte of the code in a module file.
void Tamper(const std::filesystem::path& file);
/// Cuts a file to half its size.
void Truncate(const std::filesystem::path& file);

} // namespace OrlindexTest

#endif
