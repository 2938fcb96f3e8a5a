#ifndef ORLINDEX_MODULE_VERSIONCOMPATIBILITYFILETEST_H
#define ORLINDEX_MODULE_VERSIONCOMPATIBILITYFILETEST_H

#include "LocateTest.h"

namespace OrlindexTest {

/// The version compatibility file, and the messages about it.
class VersionCompatibilityFile : public LocateTest
{
protected:
    static constexpr char FileName[] = "TALIXVersionCompatibility.config";
    static constexpr char ServingRange[] = R"({"minVersion": "1.11", "maxVersion": "1.11"})";

    static LogLine Searching(const std::string& lines)
    {
        return InfoLine(std::string("Searching for version compatibility file ") + FileName +
                        " in the following paths:\n" + lines);
    }

    static LogLine NotLocated(const std::string& lines)
    {
        return ErrorLine(std::string("Failed to find version compatibility file ") + FileName +
                         " in the following paths:\n" + lines);
    }

    static LogLine Located(const std::filesystem::path& file)
    {
        return InfoLine("Found version compatibility file at " + Utf8(file));
    }

    static LogLine SearchingPlugin(const std::filesystem::path& file)
    {
        return InfoLine("Searching for compatible client plugin version for Orlindex version 1.11.13.3 in version "
                        "compatibility file " +
                        Utf8(file));
    }

    static LogLine FoundPlugin(const std::filesystem::path& module)
    {
        return InfoLine(
            "Found compatible client plugin for Orlindex version 1.11.13.3 in version compatibility file: " +
            Utf8(module));
    }

    static LogLine NoPlugin(const std::filesystem::path& file)
    {
        return ErrorLine("Failed to find compatible client plugin version for Orlindex version 1.11.13.3 in version "
                         "compatibility file " +
                         Utf8(file));
    }

    static LogLine NoPluginWithoutFile(const std::filesystem::path& file)
    {
        return ErrorLine("Failed to find compatible client plugin version for Orlindex version 1.11.13.3 since version "
                         "compatibility file " +
                         Utf8(file) + " is not found");
    }

    static LogLine FileMissing(const std::filesystem::path& file)
    {
        return ErrorLine("Version compatibility file " + Utf8(file) + " not found");
    }

    LogLine ListEmpty() const
    {
        return ErrorLine(
            "Version compatibility list is empty under key ssoClientPlugin in version compatibility file " +
            Utf8(installation.CompatibilityFile()));
    }

    LogLine Blank(const std::string& keys) const
    {
        return ErrorLine("Blank or missing key " + keys + " in ssoClientPlugin in version compatibility file " +
                         Utf8(installation.CompatibilityFile()) + ". Object ignored.");
    }

    LogLine RangeMissing() const
    {
        return ErrorLine("Missing object 'compatibleSsoServicesVersion' in version compatibility file " +
                         Utf8(installation.CompatibilityFile()) + ". Object ignored.");
    }

    LogLine RangeInvalid() const
    {
        return ErrorLine(
            "Invalid version range in 'compatibleSsoServicesVersion' object in version compatibility file " +
            Utf8(installation.CompatibilityFile()) + ". Object ignored.");
    }

    static CompatibilityEntry Entry(const std::string& path, const std::string& version = "2.0",
                                    const std::string& range = ServingRange)
    {
        CompatibilityEntry entry;
        entry.modulePath = path;
        entry.version = version;
        entry.range = range;
        return entry;
    }

    static CompatibilityEntry Wow64Entry(const std::string& path)
    {
        CompatibilityEntry entry = Entry(path);
        entry.pathKey = "modulePathWoW64";
        return entry;
    }

    std::string Module() const { return ToUtf8(manager.ClientPluginModulePath()); }
    std::string File() const { return ToUtf8(manager.VersionCompatibilityFilePath()); }

    /// The module path that results from a file with these entries.
    std::string Chosen(const std::vector<CompatibilityEntry>& entries)
    {
        FindServerApplication();
        installation.WriteCompatibilityFile(entries);
        const bool any = manager.FindCompatibleClientPlugin();
        EXPECT_EQ(any, !Module().empty());
        return Module();
    }

    /// Expects that a file with this content results in no module, with these messages.
    void ExpectNone(const std::string& json, const std::vector<LogLine>& reasons)
    {
        FindServerApplication();
        installation.WriteCompatibilityFile(json);
        const std::filesystem::path file = installation.CompatibilityFile();
        EXPECT_FALSE(manager.FindCompatibleClientPlugin());
        EXPECT_EQ(Module(), "");
        std::vector<LogLine> expected = {Searching(Lines({installation.ServerFolder()})), Located(file),
                                         SearchingPlugin(file)};
        expected.insert(expected.end(), reasons.begin(), reasons.end());
        expected.push_back(NoPlugin(file));
        EXPECT_THAT(log.Take(), testing::ElementsAreArray(expected));
    }

    LogLine Unreadable() const
    {
        return ErrorLine("Failed to load file " + Utf8(installation.CompatibilityFile()) +
                         ". Possibly json format is not valid.");
    }
};

} // namespace OrlindexTest

#endif
