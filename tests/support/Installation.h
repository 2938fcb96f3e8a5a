#ifndef ORLINDEX_SUPPORT_INSTALLATION_H
#define ORLINDEX_SUPPORT_INSTALLATION_H

#include <filesystem>
#include <string>
#include <vector>

#include "HostProcess.h"

namespace OrlindexTest {

/// One element of the version compatibility file. The range is JSON; the default includes this library.
struct CompatibilityEntry
{
    std::string modulePath;
    std::string version = "2.0.0";
    std::string range = R"({"minVersion": "1.11", "maxVersion": "1.11"})";
    std::string pathKey = "modulePath";
    std::string module = "PellwickClient";
};

/// The installation around the host process of one test: the host's folder, in which it runs, and the server
/// application's folder. The process that started this one removes both.
class Installation
{
public:
    Installation();

    /// Contains the host's executable and Orlindex.dll.
    std::filesystem::path HostFolder() const { return environment_.root / "host"; }
    /// Contains the server application, the version compatibility file and the plugin. Empty at first.
    std::filesystem::path ServerFolder() const { return environment_.root / "server"; }
    /// Makes another folder beside those.
    std::filesystem::path MakeFolder(const std::filesystem::path& name) const;

    std::filesystem::path ClientConfigFile() const { return HostFolder() / "Orlindex.config"; }
    std::filesystem::path CompatibilityFile() const { return ServerFolder() / "TALIXVersionCompatibility.config"; }
    std::filesystem::path PluginFile() const { return ServerFolder() / "PellwickClient.dll"; }

    /// Installs everything that a start-up needs, with one build of the test plugin.
    void Install(const std::string& plugin = "good") const;
    /// Installs everything except the plugin file.
    void InstallWithoutPlugin() const;

    void WriteClientConfig(const std::string& json) const;
    void WriteCompatibilityFile(const std::string& json) const;
    void WriteCompatibilityFile(const std::vector<CompatibilityEntry>& entries) const;
    /// Makes a Pellwick.exe, which is searched for and never run.
    void InstallServerApplication(const std::filesystem::path& folder) const;
    /// Copies a build of the test plugin, or the library that its "dependent" build needs.
    void CopyPlugin(const std::string& plugin, const std::filesystem::path& file) const;

    /// A root certificate of the build, DER.
    std::string RootCertificate(const std::string& name) const;

private:
    HostEnvironment environment_;
};

/// JSON text of a path, without quotes.
std::string JsonPath(const std::filesystem::path& path);

/// Changes one byte of the code of a module file.
void Tamper(const std::filesystem::path& file);
/// Cuts a file to half its size.
void Truncate(const std::filesystem::path& file);

} // namespace OrlindexTest

#endif
