// From a verified file to its interfaces: loading, the factory, the order of the configuration, the log.

#include <stdexcept>

#include "LoadingSupport.h"
#include "orlindex/SSOServerManager.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

} // namespace

TEST_F(Loading, ThePluginIsConfiguredInOrderBeforeItsInterfacesAreTaken)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(plugin.Calls(),
                ElementsAre(Call(FactoryFunction), Call(Factory::GetSSOServerManager),
                            Call(ServerManager::ConfigureServerApp,
                                 '"' + Utf8(installation.ServerFolder()) + "\", \"" +
                                     Utf8(installation.ServerFolder() / "Pellwick.exe") + '"'),
                            Call(Factory::GetLoggerSource), Call(LoggerSource::GetLogger, "\"Orlindex\""),
                            Call(ServerManager::SetProcessIdentityName, "\"Kestrany.TALIX.DefaultProcess-v2\""),
                            Call(ServerManager::SetServerIdentityName, "\"Kestrany.TALIX.DefaultServer-v2\""),
                            Call(ServerManager::SetSupportBothLocalAndAdmin, "false"),
                            Call(Factory::GetSSOClientModule), Call(Factory::GetSSOServerManager),
                            Call(Factory::GetSSOClient), Call(Factory::GetSSOClientPrivate),
                            Call(Module::Initialize, "false")));
}

TEST_F(Loading, SupportForBothLocalAndAdminReachesTheServerManager)
{
    PluginControl& plugin = InstallPlugin();
    installation.WriteClientConfig(R"({"ssoServer": {"supportBothLocalAndAdmin": true, "searchPaths": ")" +
                                   JsonPath(installation.ServerFolder()) + R"("}})");
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(plugin.Calls(ServerManager::Interface),
                Contains(Call(ServerManager::SetSupportBothLocalAndAdmin, "true")));
}

TEST_F(Loading, APluginIsConfiguredWithoutServerApplicationToo)
{
    PluginControl& plugin = InstallPlugin();
    installation.WriteClientConfig(R"({"ssoServer": {"VersionCompatibilityConfigfilePath": ")" +
                                   JsonPath(installation.ServerFolder()) + R"("}})");
    installation.WriteCompatibilityFile({CompatibilityEntry{File()}});
    std::filesystem::remove(installation.ServerFolder() / "Pellwick.exe");
    CapturedOutput output;
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(output.Take(), HasSubstr("Failed to find SSO server app Pellwick.exe"));
    EXPECT_THAT(plugin.Calls(ServerManager::Interface), Contains(Call(ServerManager::ConfigureServerApp, R"("", "")")));
}

TEST_F(Loading, APluginWithoutServerManagerIsLoadedAllTheSame)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(Factory::GetSSOServerManager, 0);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(plugin.Calls(ServerManager::Interface), IsEmpty());
    EXPECT_THAT(plugin.Calls(LoggerSource::Interface), ElementsAre(Call(LoggerSource::GetLogger, "\"Orlindex\"")));
}

TEST_F(Loading, EveryStepOfAStartIsLoggedInOrder)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    const std::string host = Utf8(installation.HostFolder());
    const std::string server = Utf8(installation.ServerFolder());
    const std::string config = Utf8(installation.ClientConfigFile());
    const std::string compatibility = Utf8(installation.CompatibilityFile());
    const std::vector<LogLine> expected{
        {Info, "Orlindex.dll module loaded (Version: 1.11.13.3 Config: x64-Release File: " + host + "\\Orlindex.dll)"},
        {Info, "Searching for client config file Orlindex.config in the following paths:\n" + host + '\n' + host},
        {Info, "Found client config file at " + config},
        {Info, "Loading client config file " + config},
        {Info, "Configuration to support both local and admin: No."},
        {Info, "Unable to get Pellwick path from registry, failed with error: 2"},
        {Info,
         "Searching for SSO server app Pellwick.exe in the following paths:\n" + host + '\n' + host + '\n' + server},
        {Info, "Found SSO server app at " + server + "\\Pellwick.exe"},
        {Info, "Searching for version compatibility file TALIXVersionCompatibility.config in the following paths:\n" +
                   server},
        {Info, "Found version compatibility file at " + compatibility},
        {Info, "Searching for compatible client plugin version for Orlindex version 1.11.13.3 in version compatibility "
               "file " +
                   compatibility},
        {Info,
         "Found compatible client plugin for Orlindex version 1.11.13.3 in version compatibility file: " + File()},
        {Info, "******* Binary file: checking: " + File()},
        {Info, "Binary file: is valid: " + File()},
        {Info, "Dynamically loading client plugin module " + File()},
        {Info, "Successfully loaded client plugin module " + File()},
        {Info, "Getting factory proc from client plugin module " + File()},
        {Info, "Getting factory from client plugin module " + File()},
    };
    EXPECT_EQ(plugin.Log(), expected);
}

TEST_F(Loading, WithNoPluginLoggerAnInfoMessageIsOnlyBufferedAndAnErrorMessageIsPrintedToo)
{
    installation.InstallWithoutPlugin();
    EXPECT_EQ(FailedStart(), "Client plugin module not found: " + File() + '\n');
}

TEST_F(Loading, WithALoggerErrorMessagesAreNotPrinted)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(Factory::GetSSOClient, 0);
    CapturedOutput output;
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    IdServicesMgr::GetInstance()->IsLoggedIn();
    EXPECT_EQ(output.Take(), "");
    EXPECT_EQ(plugin.Log().back().level, Error);
}

TEST_F(Loading, AFactoryWithoutLoggerSourceLeavesThePendingMessagesInPlace)
{
    PluginControl& plugin = InstallPlugin();
    const std::int64_t source = plugin.ResultOf(Factory::GetLoggerSource);
    plugin.Return(Factory::GetLoggerSource, 0);
    plugin.Return(Factory::GetSSOClient, 0);
    CapturedOutput output;
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    IdServicesMgr::GetInstance()->IsLoggedIn();
    const std::string reason = "Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null.";
    EXPECT_EQ(output.Take(), reason + '\n');
    EXPECT_THAT(plugin.Log(), IsEmpty());

    // A later start-up with a logger delivers the kept messages in order, before newer ones.
    plugin.Return(Factory::GetLoggerSource, source);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    std::vector<std::string> starts;
    for (const LogLine& line : plugin.Log())
        if (line.text == reason || line.text.rfind("Orlindex.dll module loaded", 0) == 0)
            starts.push_back(line.text.substr(0, 12));
    EXPECT_THAT(starts, ElementsAre("Orlindex.dll", "Failed to ob", "Orlindex.dll"));
}

TEST_F(Loading, WhereTheLoggerSourceHasNoLoggerThePendingMessagesArePrinted)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(LoggerSource::GetLogger, 0);
    CapturedOutput output;
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    const std::string printed = output.Take();
    EXPECT_THAT(printed, StartsWith("Orlindex.dll module loaded "));
    EXPECT_THAT(printed, EndsWith("\nGetting factory from client plugin module " + File() + '\n'));
    EXPECT_THAT(plugin.Calls(LoggerSource::Interface), ElementsAre(Call(LoggerSource::GetLogger, "\"Orlindex\"")));
    EXPECT_THAT(plugin.Log(), IsEmpty());
}

TEST_F(Loading, ARestartWithoutLoggerDoesNotGoOnUsingTheEarlierOne)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(Factory::GetSSOClient, 0);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    plugin.Return(LoggerSource::GetLogger, 0);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    plugin.ClearJournal();
    CapturedOutput output;
    IdServicesMgr::GetInstance()->IsLoggedIn();
    EXPECT_EQ(output.Take(), "Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null.\n");
    EXPECT_THAT(plugin.Log(), IsEmpty());
}

TEST_F(Loading, AModuleThatIsMissingIsNotFound)
{
    installation.InstallWithoutPlugin();
    EXPECT_THAT(FailedStart(), HasSubstr("Client plugin module not found: " + File()));
}

TEST_F(Loading, AFolderInThePlaceOfTheModuleIsNoModule)
{
    installation.InstallWithoutPlugin();
    installation.MakeFolder("server/PellwickClient.dll");
    EXPECT_THAT(FailedStart(), HasSubstr("Binary file: "));
}

TEST_F(Loading, AModuleWithoutFactoryFunctionIsRefusedWithTheSystemsText)
{
    installation.Install("no-factory");
    EXPECT_EQ(FailedStart(), "Failed to get factory proc from client plugin module " + File() +
                                 ". Error: " + SystemText(ERROR_PROC_NOT_FOUND) + '\n');
    EXPECT_TRUE(IsLoaded(installation.PluginFile()));
}

TEST_F(Loading, AModuleWithThe32BitSymbolIsRefusedInA64BitProcess)
{
    installation.Install("symbol32");
    EXPECT_THAT(FailedStart(), HasSubstr("Failed to get factory proc from client plugin module " + File()));
}

TEST_F(Loading, InAWow64ProcessThe32BitSymbolNameIsLookedUp)
{
    installation.Install("symbol32");
    installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\PellwickClient.dll", "2.0.0",
                                                            R"({"versions": ["1.11"]})", "modulePathWoW64"}});
    PluginControl plugin(installation.PluginFile());
    const IsWow64ProcessDouble wow64([](HANDLE, PBOOL isWow64) {
        *isWow64 = TRUE;
        return TRUE;
    });
    std::vector<std::string> names;
    const GetProcAddressDouble lookups([&names](HMODULE module, LPCSTR name) {
        names.emplace_back(name);
        return GetProcAddressDouble::Original(module, name);
    });
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(names, ElementsAre("?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ"));
    EXPECT_THAT(plugin.Calls(FactoryFunction), ElementsAre(Call(FactoryFunction)));
}

TEST_F(Loading, AFailedWow64QueryCountsAs64Bit)
{
    installation.Install();
    const IsWow64ProcessDouble wow64([](HANDLE, PBOOL isWow64) {
        *isWow64 = TRUE;
        return FALSE;
    });
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
}

TEST_F(Loading, ANullFactoryFailsTheStart)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(FactoryFunction, 0);
    EXPECT_EQ(FailedStart(), "");
    EXPECT_THAT(plugin.Calls(), ElementsAre(Call(FactoryFunction)));
}

TEST_F(Loading, AFailedLoadIsNotAttemptedAgain)
{
    PluginControl& plugin = InstallPlugin();
    const std::int64_t factory = plugin.ResultOf(FactoryFunction);
    plugin.Return(FactoryFunction, 0);
    FailedStart();
    plugin.Return(FactoryFunction, factory);
    plugin.ClearJournal();
    int loads = 0;
    const LoadLibraryDouble count([&loads](LPCWSTR path) {
        ++loads;
        return LoadLibraryDouble::Original(path);
    });
    EXPECT_EQ(FailedStart(), "");
    EXPECT_THAT(plugin.Calls(), IsEmpty());
    EXPECT_EQ(loads, 0);
}

TEST_F(Loading, AThrowingFactoryFailsTheStart)
{
    PluginControl& plugin = InstallPlugin();
    plugin.OnCall(FactoryFunction, [](const CallArguments&) { throw std::runtime_error("from the factory"); });
    FailedStart();
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
}

TEST_F(Loading, APluginThatThrowsWhatIsNoExceptionWhileItIsConfiguredFailsTheStartWithAMessage)
{
    PluginControl& plugin = InstallPlugin();
    plugin.OnCall(ServerManager::ConfigureServerApp, [](const CallArguments&) { throw 42; });
    EXPECT_EQ(FailedStart(), "Failed to load client plugin module " + File() + ". Error: unknown exception\n");
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
}

TEST_F(Loading, APluginThatThrowsWhatIsNoExceptionBetweenItsInterfacesIsNotHalfLoaded)
{
    PluginControl& plugin = InstallPlugin();
    plugin.OnCall(Factory::GetSSOClient,
                  [](const CallArguments&) { throw 42; }); // Two interfaces were obtained before.
    FailedStart();
    EXPECT_EQ(plugin.Log().back(),
              (LogLine{Error, "Failed to load client plugin module " + File() + ". Error: unknown exception"}));
    plugin.OnCall(Factory::GetSSOClient, [](const CallArguments&) {});
    plugin.ClearJournal();
    FailedStart();
    EXPECT_FALSE(SSOServerManager::IsSSOServerProcessReady());
    EXPECT_THAT(plugin.Calls(), IsEmpty());
}

TEST_F(Loading, ALoggerThatThrowsDoesNotReachTheHost)
{
    PluginControl& plugin = InstallPlugin();
    plugin.OnCall(Logger::Log, [](const CallArguments&) { throw std::runtime_error("from the logger"); });
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
}

TEST_F(Loading, ALoggerThatThrowsWhatIsNoExceptionNeitherEndsTheHostNorFailsTheLoad)
{
    PluginControl& plugin = InstallPlugin();
    plugin.OnCall(Logger::Log, [](const CallArguments&) { throw 42; });
    plugin.Return(Factory::GetSSOClient, 0);
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess) << "where the messages so far are delivered";
    EXPECT_FALSE(IdServicesMgr::GetInstance()->IsLoggedIn()) << "where a message is written";
}

} // namespace OrlindexTest
