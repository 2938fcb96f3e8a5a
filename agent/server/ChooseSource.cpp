#include "server/ChooseSource.h"

#include <utility>

#include <windows.h>

#include "identity/simulated/KeyStore.h"
#include "identity/simulated/LoginFiles.h"
#include "identity/simulated/ScenarioFile.h"
#include "identity/simulated/SimulatedSource.h"
#include "platform/Base.h"
#include "platform/Crypto.h"

namespace Kestrany::Agent {

std::unique_ptr<IdentitySource> ChooseIdentitySource(const LogSink& log)
{
    Simulated::ScenarioChoice choice = Simulated::ChooseScenario();
    if (!choice.scenario)
        log(TALIXLog::Error, "Nobody can sign in: " + choice.problem);
    else
        log(TALIXLog::Info, "Scenario: " + (choice.file.empty() ? std::string("built-in") : Narrow(choice.file)));

    Simulated::SourceParts parts;
    parts.clock = &std::chrono::system_clock::now;
    parts.ticks = [] { return static_cast<std::int64_t>(GetTickCount64()); };
    parts.random = &SystemRandom;
    parts.signer = Simulated::OpenSigningKey(log);
    parts.openStorage = [log](const std::string& identity) { return Simulated::LoginFiles::Open(identity, log); };
    return std::make_unique<Simulated::SimulatedSource>(std::move(choice.scenario), std::move(parts));
}

std::string CheckScenario(const std::wstring& file)
{
    return Simulated::LoadScenario(file).problem;
}

} // namespace Kestrany::Agent
