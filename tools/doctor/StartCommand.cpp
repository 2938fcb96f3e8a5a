#include "Commands.h"
#include "LoadProcess.h"
#include "ModuleFile.h"
#include "StartRecorder.h"
#include "VersionRecord.h"
#include "api/LocalSystemAccount.h"
#include "base/Paths.h"
#include "base/ProductIdentity.h"
#include "base/TextConversion.h"
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

/// The library beside the host is the one that will run there: this tool's steps are those of its own version.
void CheckLibrary(const std::wstring& host, Report& report, StartFacts& facts)
{
    report.Begin(StepId::Library);
    const std::wstring file = JoinPath(host, ProductModuleName);
    const std::string name = Narrow(ProductModuleName);
    if (!PathExists(file))
    {
        report.Add({Mark::Warning, "version", name, "", "missing", Narrow(file),
                    "not in the host's folder: a host there cannot use it, and this tool answers as version " +
                        std::string(ProductVersion) + " would"});
        return;
    }
    const std::optional<VersionRecord> record = ReadVersionRecord(file);
    Finding line = {Mark::Ok,
                    "version",
                    name,
                    record ? record->fileVersion : "",
                    "same",
                    Narrow(file),
                    record ? record->description : ""};
    if (line.value != ProductVersion)
    {
        line.mark = Mark::Warning;
        line.result = record ? "other" : "no-record";
        line.note = (record ? "another version than this tool's, " : "has no version record; this tool's version is ") +
                    std::string(ProductVersion) + ": what follows is what this tool's version would do";
    }
    report.Add(std::move(line));
    InspectLibraryFile(file, report, facts.library);
}

} // namespace

Verdict RunStart(const Options& options, const std::wstring& host, Report& report)
{
    StartFacts facts;
    facts.hostDirectory = host;
    facts.localSystem = CheckAccount(report);
    CheckLibrary(host, report, facts);

    StartRecorder recorder(report, facts);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, {}, {}, &recorder});
    facts.accepted = manager.CheckClientPlugin();
    if (facts.accepted && options.load)
    {
        TryLoad({host, {}, options.timeoutSeconds}, report, facts);
        if (facts.load->libraryError != ERROR_SUCCESS && facts.library.exists)
            facts.libraryNeeds = FindMissingLibraries(JoinPath(host, ProductModuleName), host);
    }
    return Diagnose(facts);
}

} // namespace Orlindex::Doctor
