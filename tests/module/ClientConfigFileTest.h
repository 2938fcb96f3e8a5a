#ifndef ORLINDEX_MODULE_CLIENTCONFIGFILETEST_H
#define ORLINDEX_MODULE_CLIENTCONFIGFILETEST_H

#include "LocateTest.h"

namespace OrlindexTest {

/// The client config file, what is logged of it, and what it sets.
class ClientConfigFile : public LocateTest
{
protected:
    static LogLine Searching(const std::vector<std::filesystem::path>& directories)
    {
        return InfoLine("Searching for client config file Orlindex.config in the following paths:\n" +
                        Lines(directories));
    }

    static LogLine NotFound(const std::vector<std::filesystem::path>& directories)
    {
        return WarningLine("Failed to find client config file Orlindex.config in the following paths:\n" +
                           Lines(directories));
    }

    static LogLine Found(const std::filesystem::path& file)
    {
        return InfoLine("Found client config file at " + Utf8(file));
    }
    static LogLine Loading(const std::filesystem::path& file)
    {
        return InfoLine("Loading client config file " + Utf8(file));
    }

    static LogLine OverrideSet(const std::filesystem::path& file)
    {
        return InfoLine("Client config file override set to " + Utf8(file));
    }

    static LogLine Invalid(const std::filesystem::path& file)
    {
        return ErrorLine("Failed to load client config file " + Utf8(file) + ". Invalid file format.");
    }

    static LogLine Support(const std::string& supported)
    {
        return InfoLine("Configuration to support both local and admin: " + supported + '.');
    }

    std::vector<std::filesystem::path> DefaultPlaces() const { return {installation.HostFolder(), library}; }
    std::string Path() const { return ToUtf8(manager.ClientConfigFilePath()); }

    void ExpectFixedSettings() const { ExpectFixedSettings(manager); }

    static void ExpectFixedSettings(const SSOPathResolver& resolver)
    {
        EXPECT_EQ(resolver.Settings().searchName, L"Pellwick.exe");
        EXPECT_EQ(resolver.Settings().executableName, L"Pellwick.exe");
        EXPECT_EQ(resolver.Settings().defaultProcessName, "Kestrany.TALIX.DefaultProcess-v2");
        EXPECT_EQ(resolver.Settings().defaultServerName, "Kestrany.TALIX.DefaultServer-v2");
    }

    void ExpectNothingConfigured() const
    {
        ExpectFixedSettings();
        EXPECT_EQ(manager.Settings().bundleId, L"");
        EXPECT_EQ(manager.Settings().versionCompatibilityConfigFilePath, L"");
        EXPECT_THAT(manager.Settings().searchPaths, testing::IsEmpty());
        EXPECT_FALSE(manager.Settings().supportBothLocalAndAdmin);
    }

    /// Loads a file with this content, which must be refused.
    void ExpectInvalid(const std::string& bytes)
    {
        installation.WriteClientConfig(bytes);
        EXPECT_TRUE(manager.LoadClientConfig());
        EXPECT_THAT(log.Take(), testing::ElementsAre(Searching(DefaultPlaces()), Found(installation.ClientConfigFile()),
                                                     Loading(installation.ClientConfigFile()),
                                                     Invalid(installation.ClientConfigFile())));
        ExpectNothingConfigured();
    }

    /// Loads a file with this content, which is valid and sets nothing.
    void ExpectNothingIn(const std::string& bytes)
    {
        installation.WriteClientConfig(bytes);
        EXPECT_TRUE(manager.LoadClientConfig());
        EXPECT_EQ(log.Take().back(), Support("No"));
        ExpectNothingConfigured();
    }
};

} // namespace OrlindexTest

#endif
