#include "Commands.h"
#include "HostLibrary.h"
#include "LibraryDiagnosis.h"
#include "LoadProcess.h"
#include "ModuleFile.h"
#include "StartRecorder.h"
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

Verdict RunStart(const Options& options, const std::wstring& host, Report& report)
{
    StartFacts facts;
    facts.hostDirectory = host;
    facts.localSystem = CheckAccount(report);
    CheckHostLibrary(host, report, facts);

    StartRecorder recorder(report, facts);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, {}, {}, &recorder});
    facts.accepted = manager.CheckClientPlugin();
    // A module that this tool accepts may be one that the host's library refuses, and what is refused is never loaded.
    if (facts.accepted && options.load && AnswersForLibrary(facts))
    {
        TryLoad({host, {}, options.timeoutSeconds}, report, facts);
        if (facts.load->libraryError != ERROR_SUCCESS && facts.library.exists)
            facts.libraryNeeds = FindMissingLibraries(JoinPath(host, ProductModuleName), host);
    }
    return Diagnose(facts);
}

} // namespace Orlindex::Doctor
