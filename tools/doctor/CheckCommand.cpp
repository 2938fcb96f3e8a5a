#include <boost/algorithm/string/predicate.hpp>
#include <locale>

#include "Commands.h"
#include "LoadProcess.h"
#include "StartUpRecorder.h"
#include "Texts.h"
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

/// Passes on only what concerns the version compatibility file, and keeps the entry of one module.
class EntryObserver final : public StartUpObserver
{
public:
    EntryObserver(StartUpRecorder& recorder, const std::wstring& module) : recorder_(recorder), module_(module) {}

    void OnJsonFile(const JsonFileFinding& finding) override
    {
        if (finding.file == StartUpFile::VersionCompatibility)
            recorder_.OnJsonFile(finding);
    }

    void OnCompatibilityEntry(const EntryFinding& finding) override
    {
        recorder_.OnCompatibilityEntry(finding);
        if (!entry_ && !finding.entry.modulePath.empty() && IsSamePath(finding.entry.modulePath, module_))
            entry_ = finding;
    }

    /// The first entry that names the module.
    const std::optional<EntryFinding>& ModuleEntry() const { return entry_; }

private:
    StartUpRecorder& recorder_;
    const std::wstring& module_;
    std::optional<EntryFinding> entry_;
};

/// Why the file does not offer the module; empty if it does.
std::string WhyNotOffered(const StartUpFacts& facts, const std::optional<EntryFinding>& entry,
                          const std::wstring& chosen, const std::wstring& module)
{
    if (!facts.compatibilityError.empty())
        return "the file cannot be used: " + facts.compatibilityError;
    if (IsSamePath(chosen, module))
        return {};
    if (!entry)
        return "no entry names it";
    const std::string names = EntryPlace(entry->entry) + " names it";
    if (entry->defect)
        return names + " and is ignored: " + DefectText(*entry->defect);
    if (entry->mismatch)
        return names + ", but does not serve " + ProductVersion + " (" + RangeText(entry->entry) + ')';
    return names + ", but " + Quoted(chosen) + " has a higher version";
}

/// Checks whether the version compatibility file offers the module. The module's folder counts as the server
/// application's, as in an installation.
std::optional<Diagnosis> CheckOffer(const Options& options, const std::wstring& host, const std::wstring& module,
                                    Report& report)
{
    report.Begin(StepId::CompatibilityFile);
    const std::wstring folder = ParentPath(module);
    const bool named = !options.compatibility.empty();
    const std::wstring file = named ? options.compatibility : JoinPath(folder, VersionCompatibilityFileName);
    Finding line = {Mark::Ok,
                    "file",
                    FileTitle(StartUpFile::VersionCompatibility),
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
        return Diagnosis{ExitCode::CompatibilityFileNotFound, StepId::CompatibilityFile,
                         "There is no version compatibility file " + Quoted(file) + '.',
                         "Name an existing file with --compatibility."};
    }
    report.Add(std::move(line));

    StartUpFacts facts;
    facts.compatibilityFile = file;
    StartUpRecorder recorder(report, facts);
    EntryObserver entries(recorder, module);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, folder, {}, &entries});
    manager.LoadClientConfig(); // The values of path variables depend on it.
    manager.SetVersionCompatibilityFileOverride(file);
    manager.FindCompatibleClientPlugin();
    recorder.FinishEntries();
    const std::string why = WhyNotOffered(facts, entries.ModuleEntry(), manager.ClientPluginModulePath(), module);
    if (why.empty())
    {
        report.Add({Mark::Ok, "offer", "offered", Narrow(module), "offered", Narrow(file), ""});
        return std::nullopt;
    }
    report.Add({Mark::Failed, "offer", "offered", "", "not-offered", Narrow(file), why});
    return Diagnosis{ExitCode::ModuleNotOffered, StepId::CompatibilityEntries,
                     Quoted(file) + " does not offer " + Quoted(module) + ": " + why + '.',
                     "Give " + Quoted(file) + " an entry whose modulePath is this module and whose range holds " +
                         ProductVersion + '.'};
}

} // namespace

Diagnosis RunCheck(const Options& options, const std::wstring& host, const std::wstring& module, Report& report)
{
    StartUpFacts facts;
    facts.hostDirectory = host;
    StartUpRecorder recorder(report, facts);
    SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, {}, module, &recorder});
    facts.accepted = manager.CheckClientPlugin();
    const std::optional<Diagnosis> offer = CheckOffer(options, host, module, report);
    if (facts.accepted && options.load)
        TryLoad({host, module, options.timeoutSeconds}, report, facts);
    if (std::optional<Diagnosis> failure = DiagnoseModule(facts))
        return *failure;
    if (offer)
        return *offer;
    return {ExitCode::Starts, std::nullopt,
            Quoted(module) + " keeps the contract" +
                (options.load ? ", its interfaces included." : ", as far as that can be seen without loading it."),
            ""};
}

} // namespace Orlindex::Doctor
