#include <boost/algorithm/string/predicate.hpp>
#include <locale>

#include "Commands.h"
#include "LoadProcess.h"
#include "StartRecorder.h"
#include "Words.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"
#include "load/VersionCompatibility.h"
#include "locate/SSOPathResolver.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

bool IsSamePath(const std::wstring& a, const std::wstring& b)
{
    return boost::algorithm::iequals(NormalizePath(a), NormalizePath(b), std::locale::classic());
}

/// What a version compatibility file says, above all of one module, and nothing else of a start.
class EntriesOnly final : public StartUpObserver
{
public:
    EntriesOnly(StartRecorder& recorder, const std::wstring& module) : recorder_(recorder), module_(module) {}

    void OnDocument(const DocumentFinding& finding) override
    {
        if (finding.file == StartUpFile::VersionCompatibility)
            recorder_.OnDocument(finding);
    }

    void OnCompatibilityEntry(const EntryFinding& finding) override
    {
        recorder_.OnCompatibilityEntry(finding);
        if (!ofModule_ && !finding.entry.modulePath.empty() && IsSamePath(finding.entry.modulePath, module_))
            ofModule_ = finding;
    }

    /// The first that names the module.
    const std::optional<EntryFinding>& OfModule() const { return ofModule_; }

private:
    StartRecorder& recorder_;
    const std::wstring& module_;
    std::optional<EntryFinding> ofModule_;
};

/// How the file fails to offer the module, in words; empty where it offers it.
std::string WhyNotOffered(const StartFacts& facts, const std::optional<EntryFinding>& entry, const std::wstring& chosen,
                          const std::wstring& module)
{
    if (!facts.compatibilityError.empty())
        return "the file cannot be used: " + facts.compatibilityError;
    if (IsSamePath(chosen, module))
        return {};
    if (!entry)
        return "no entry names it";
    const std::string names = EntryPlace(entry->entry) + " names it";
    if (entry->defect)
        return names + " and is ignored: " + DefectWords(*entry->defect);
    if (entry->mismatch)
        return names + ", but does not serve " + ProductVersion + " (" + RangeWords(entry->entry) + ')';
    return names + ", but " + Quoted(chosen) + " has a higher version";
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
                    FileWords(StartUpFile::VersionCompatibility),
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
                       "There is no version compatibility file " + Quoted(file) + '.',
                       "Name an existing file with --compatibility."};
    }
    report.Add(std::move(line));

    StartFacts facts;
    facts.compatibilityFile = file;
    StartRecorder recorder(report, facts);
    EntriesOnly entries(recorder, module);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, folder, {}, &entries});
    manager.LoadClientConfig(); // For the names that path variables are made of.
    manager.SetVersionCompatibilityFileOverride(file);
    manager.FindCompatibleClientPlugin();
    recorder.FinishEntries();
    const std::string why = WhyNotOffered(facts, entries.OfModule(), manager.ClientPluginModulePath(), module);
    if (why.empty())
    {
        report.Add({Mark::Ok, "offer", "offered", Narrow(module), "offered", Narrow(file), ""});
        return std::nullopt;
    }
    report.Add({Mark::Failed, "offer", "offered", "", "not-offered", Narrow(file), why});
    return Verdict{ExitCode::ModuleNotOffered, StepId::CompatibilityEntries,
                   Quoted(file) + " does not offer " + Quoted(module) + ": " + why + '.',
                   "Give " + Quoted(file) + " an entry whose modulePath is this module and whose range holds " +
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
            Quoted(module) + " keeps the contract" +
                (options.load ? ", its interfaces included." : ", as far as that can be seen without loading it."),
            ""};
}

} // namespace Orlindex::Doctor
