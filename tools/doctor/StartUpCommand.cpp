#include "Commands.h"
#include "HostLibrary.h"
#include "LoadProcess.h"
#include "ModuleFile.h"
#include "StartUpRecorder.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "base/Product.h"
#include "base/Text.h"
#include "locate/SSOPathResolver.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

bool CheckAccount(Report& report)
{
    report.Begin(StepId::Account);
    const bool localSystem = RunsAsLocalSystem();
    if (localSystem)
        report.Add({Mark::Failed, "account", "account", "local system", "local-system", "",
                    "the library refuses to start under it"});
    else
        report.Add({Mark::Ok, "account", "account", "not the local system's", "user", "", ""});
    return localSystem;
}

} // namespace

Diagnosis RunStartUp(const Options& options, const std::wstring& host, Report& report)
{
    StartUpFacts facts;
    facts.hostDirectory = host;
    facts.localSystem = CheckAccount(report);
    CheckHostLibrary(host, report, facts);

    StartUpRecorder recorder(report, facts);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, {}, {}, &recorder});
    facts.accepted = manager.CheckClientPlugin();
    // The host's library may refuse a module that this tool accepts, and a refused module must not be loaded.
    if (facts.accepted && options.load && AppliesToLibrary(facts))
    {
        TryLoad({host, {}, options.timeoutSeconds}, report, facts);
        if (facts.load && facts.load->libraryError != ERROR_SUCCESS && facts.library.exists)
            facts.libraryNeeds = FindMissingLibraries(JoinPath(host, ProductModuleName), host);
    }
    return Diagnose(facts);
}

} // namespace Orlindex::Doctor
