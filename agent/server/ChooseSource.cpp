#include "server/ChooseSource.h"

#include <stdexcept>
#include <utility>

#include <windows.h>

#include "identity/openid/OpenIdSource.h"
#include "identity/openid/windows/CngSignatures.h"
#include "identity/openid/windows/LoopbackServer.h"
#include "identity/openid/windows/ProtectedLoginStore.h"
#include "identity/openid/windows/ProviderConfigFile.h"
#include "identity/openid/windows/ShellBrowser.h"
#include "identity/openid/windows/SignInWindow.h"
#include "identity/openid/windows/WinHttpClient.h"
#include "identity/simulated/KeyStore.h"
#include "identity/simulated/LoginFiles.h"
#include "identity/simulated/ScenarioFile.h"
#include "identity/simulated/SimulatedSource.h"
#include "platform/Base.h"
#include "platform/Crypto.h"

namespace Kestrany::Agent {

namespace {

std::int64_t Ticks()
{
    return static_cast<std::int64_t>(GetTickCount64());
}

std::unique_ptr<IdentitySource> MakeSimulatedSource(const LogSink& log)
{
    Simulated::ScenarioChoice choice = Simulated::ChooseScenario();
    if (!choice.scenario)
        log(TALIXLog::Error, "Nobody can sign in: " + choice.problem);
    else
        log(TALIXLog::Info, "Scenario: " + (choice.file.empty() ? std::string("built-in") : Narrow(choice.file)));

    Simulated::SourceParts parts;
    parts.clock = &std::chrono::system_clock::now;
    parts.ticks = &Ticks;
    parts.random = &SystemRandom;
    parts.signer = Simulated::OpenSigningKey(log);
    parts.openStorage = [log](const std::string& identity) { return Simulated::LoginFiles::Open(identity, log); };
    return std::make_unique<Simulated::SimulatedSource>(std::move(choice.scenario), std::move(parts));
}

/// For requests that are abandoned when the process ends: they may wake it after its own handle is closed.
Handle Duplicate(HANDLE event)
{
    HANDLE copy = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), event, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
        throw std::runtime_error("no event: " + SystemMessage(GetLastError()));
    return Handle(copy);
}

std::unique_ptr<IdentitySource> MakeOpenIdSource(OpenId::ProviderConfigChoice choice, const LogSink& log, HANDLE wake)
{
    if (!choice.configs)
        log(TALIXLog::Error,
            OpenId::LogLine({OpenId::IdProviderConfigInvalid, "a valid configuration file", choice.problem}));
    else
        log(TALIXLog::Info, "OpenID Connect providers: " + Narrow(choice.file));

    OpenId::SourceParts parts;
    parts.clock = &std::chrono::system_clock::now;
    parts.ticks = &Ticks;
    parts.random = &SystemRandom;
    parts.signatures = std::make_shared<OpenId::CngSignatures>();
    parts.makeHttp = [](const std::optional<ProxySettings>& proxy) {
        return std::make_shared<OpenId::WinHttpClient>(proxy);
    };
    parts.browser = std::make_shared<OpenId::ShellBrowser>();
    parts.listeners = std::make_shared<OpenId::LoopbackServer>();
    if (choice.configs && choice.configs->window)
        parts.prompts = std::make_shared<OpenId::SignInWindows>();
    parts.openStore = [log](const std::string& identity) { return OpenId::ProtectedLoginStore::Open(identity, log); };
    parts.report = log;
    parts.wake = [event = std::make_shared<const Handle>(Duplicate(wake))] { SetEvent(event->get()); };
    return std::make_unique<OpenId::OpenIdSource>(std::move(choice.configs), std::move(choice.problem),
                                                  std::move(parts));
}

} // namespace

std::unique_ptr<IdentitySource> ChooseIdentitySource(const LogSink& log, HANDLE wake)
{
    OpenId::ProviderConfigChoice choice = OpenId::ReadProviderConfigFile();
    // A file that is wrong is never taken for none: nobody would expect simulated users then.
    return choice.exists ? MakeOpenIdSource(std::move(choice), log, wake) : MakeSimulatedSource(log);
}

std::string CheckScenario(const std::wstring& file)
{
    return Simulated::LoadScenario(file).problem;
}

} // namespace Kestrany::Agent
