#include <boost/algorithm/string/predicate.hpp>
#include <locale>

#include "Commands.h"
#include "LoadProcess.h"
#include "StartRecorder.h"
#include "Words.h"
#include "base/Paths.h"
#include "base/ProductIdentity.h"
#include "base/TextConversion.h"
#include "load/VersionCompatibility.h"
#include "locate/SSOPathResolver.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

/// What a version compatibility file says, and nothing else of a start.
class EntriesOnly final : public StartObserver
{
public:
    explicit EntriesOnly(StartRecorder& recorder) : recorder_(recorder) {}

    void OnDocument(const DocumentFinding& finding) override
    {
        if (finding.file == StartFile::VersionCompatibility)
            recorder_.OnDocument(finding);
    }

    void OnCompatibilityEntry(const EntryFinding& finding) override { recorder_.OnCompatibilityEntry(finding); }

private:
    StartRecorder& recorder_;
};

bool IsSamePath(const std::wstring& a, const std::wstring& b)
{
    return boost::algorithm::iequals(NormalizePath(a), NormalizePath(b), std::locale::classic());
}

/// How the file fails to offer the module, in words; empty where it offers it.
std::string WhyNotOffered(const StartFacts& facts, const std::wstring& chosen, const std::wstring& module)
{
    if (!facts.compatibilityError.empty())
        return "the file cannot be used: " + facts.compatibilityError;
    if (IsSamePath(chosen, module))
        return {};
    for (const EntryFinding& finding : facts.entries)
    {
        if (!IsSamePath(finding.entry.modulePath, module))
            continue;
        if (finding.defect)
            return EntryPlace(finding.entry) + " names it and is ignored: " + DefectWords(*finding.defect);
        if (finding.refusal)
            return EntryPlace(finding.entry) + " names it, but does not serve " + ProductVersion + " (" +
                   RangeWords(finding.entry) + ')';
        return EntryPlace(finding.entry) + " names it, but \"" + Narrow(chosen) + "\" has a higher version";
    }
    return "no entry names it";
}

/// Asks the version compatibility file beside the module which module it offers. The module's folder is the server
/// application's then, as it is where both are installed.
std::optional<Verdict> CheckOffer(const Options& options, const std::wstring& host, const std::wstring& module,
                                  Report& report)
{
    report.Begin(StepId::CompatibilityFile);
    const std::wstring folder = ParentPath(module);
    const bool named = !options.compatibility.empty();
    const std::wstring file = named ? options.compatibility : JoinPath(folder, VersionCompatibilityFileName);
    Finding line = {Mark::Ok,
                    "file",
                    FileWords(StartFile::VersionCompatibility),
                    Narrow(file),
                    "found",
                    named ? "--compatibility" : "beside the module",
                    ""};
    if (!PathExists(file))
    {
        line.mark = named ? Mark::Failed : Mark::Warning;
        line.result = "not-found";
        line.note = "not there: which version of the library the module serves is not known";
        report.Add(std::move(line));
        if (!named)
            return std::nullopt;
        return Verdict{ExitCode::CompatibilityFileNotFound, StepId::CompatibilityFile,
                       "There is no version compatibility file \"" + Narrow(file) + "\".",
                       "Name an existing file with --compatibility."};
    }
    report.Add(std::move(line));

    StartFacts facts;
    facts.compatibilityFile = file;
    StartRecorder recorder(report, facts);
    EntriesOnly entries(recorder);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, folder, {}, &entries});
    manager.LoadClientConfig(); // For the names that path variables are made of.
    manager.SetVersionCompatibilityFileOverride(file);
    manager.FindCompatibleClientPlugin();
    const std::string why = WhyNotOffered(facts, manager.ClientPluginModulePath(), module);
    if (why.empty())
    {
        report.Add({Mark::Ok, "offer", "offered", Narrow(module), "offered", Narrow(file), ""});
        return std::nullopt;
    }
    report.Add({Mark::Failed, "offer", "offered", "", "not-offered", Narrow(file), why});
    return Verdict{ExitCode::ModuleNotOffered, StepId::CompatibilityEntries,
                   "\"" + Narrow(file) + "\" does not offer \"" + Narrow(module) + "\": " + why + '.',
                   "Give \"" + Narrow(file) + "\" an entry whose modulePath is this module and whose range holds " +
                       ProductVersion + '.'};
}

} // namespace

Verdict RunCheck(const Options& options, const std::wstring& host, const std::wstring& module, Report& report)
{
    StartFacts facts;
    facts.hostDirectory = host;
    StartRecorder recorder(report, facts);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, {}, module, &recorder});
    facts.accepted = manager.CheckClientPlugin();
    const std::optional<Verdict> offer = CheckOffer(options, host, module, report);
    if (facts.accepted && options.load)
        TryLoad({host, module, options.timeoutSeconds}, report, facts);
    if (std::optional<Verdict> failure = DiagnoseModule(facts))
        return *failure;
    if (offer)
        return *offer;
    return {ExitCode::Starts, std::nullopt,
            "\"" + Narrow(module) + "\" keeps the contract" +
                (options.load ? ", its interfaces included." : ", as far as that can be seen without loading it."),
            ""};
}

} // namespace Orlindex::Doctor
