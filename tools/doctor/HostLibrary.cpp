#include "HostLibrary.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "BuildData.h"
#include "ModuleFile.h"
#include "Texts.h"
#include "VersionRecord.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

/// The root and the signers that a build trusts, as its version record has them.
struct TrustText
{
    std::string pinnedRoot;
    std::string signers; ///< Separated by semicolons; no name contains one.
};

TrustText OwnTrust()
{
    Sha256 digest;
    std::copy(std::begin(Kestrany::BuildData::PinnedRootSha256), std::end(Kestrany::BuildData::PinnedRootSha256),
              digest.begin());
    std::string signers(Kestrany::BuildData::TrustedSigners, sizeof Kestrany::BuildData::TrustedSigners - 1);
    std::replace(signers.begin(), signers.end(), '\0', ';');
    return {DigestText(digest), signers};
}

std::set<std::string> NamesOf(const std::string& signers)
{
    std::set<std::string> names;
    std::size_t begin = 0;
    for (std::size_t end = signers.find(';'); end != std::string::npos; end = signers.find(';', begin))
    {
        names.insert(signers.substr(begin, end - begin));
        begin = end + 1;
    }
    names.insert(signers.substr(begin));
    return names;
}

Finding TrustLine(const char* name, const std::string& value, const std::string& own, bool same)
{
    Finding line = {Mark::Ok, "trust", name, value, "same", "version record", "this tool's, too"};
    if (value.empty())
    {
        line.mark = Mark::Warning;
        line.result = "not-said";
        line.note = "the version record does not say; what follows is by this tool's, " + own;
    }
    else if (!same)
    {
        line.mark = Mark::Failed;
        line.result = "other";
        line.note = "not this tool's, " + own + ": it cannot tell which signature this library accepts";
    }
    return line;
}

LibraryTrust CompareTrust(const VersionRecord& record, Report& report)
{
    const TrustText own = OwnTrust();
    const bool sameRoot = record.pinnedRoot == own.pinnedRoot;
    const bool sameSigners = NamesOf(record.signers) == NamesOf(own.signers);
    report.Add(TrustLine("pinned root", record.pinnedRoot, own.pinnedRoot, sameRoot));
    report.Add(TrustLine("accepted signers", record.signers, own.signers, sameSigners));
    if ((!record.pinnedRoot.empty() && !sameRoot) || (!record.signers.empty() && !sameSigners))
        return LibraryTrust::Other;
    return sameRoot && sameSigners ? LibraryTrust::Same : LibraryTrust::NotSaid;
}

Finding VersionLine(const std::optional<VersionRecord>& record, const std::wstring& file)
{
    Finding line = {Mark::Ok, "version",    Narrow(ProductModuleName),        record ? record->fileVersion : "",
                    "same",   Narrow(file), record ? record->description : ""};
    if (line.value != ProductVersion)
    {
        line.mark = Mark::Warning;
        line.result = record ? "other" : "no-record";
        line.note = (record ? "another version than this tool's, "
                            : "has no version record that can be read; this tool's version is ") +
                    std::string(ProductVersion) + ": what follows is what this tool's version would do";
    }
    return line;
}

std::string QuotedLibraryPath(const StartUpFacts& facts)
{
    return Quoted(JoinPath(facts.hostDirectory, ProductModuleName));
}

/// Why the host's library cannot be loaded; empty if no reason is known.
std::string WhyLibraryDoesNotLoad(const StartUpFacts& facts)
{
    const ModuleFacts& library = facts.library;
    if (!library.readable)
        return "it cannot be read: " + ErrorText(library.readError);
    if (!library.module || !library.dll)
        return "it is no Windows DLL";
    if (library.machine != library.wanted)
        return std::string("it is not for ") + BitsText(library.wanted) + " x86 processes";
    if (!facts.load || facts.load->libraryError == ERROR_SUCCESS)
        return {};
    return ErrorText(facts.load->libraryError) +
           (facts.libraryNeeds.empty()
                ? ""
                : "; it needs " + Joined(facts.libraryNeeds) + ", not found beside it nor where the system looks");
}

std::string WhyLibraryEnded(const LoadOutcome& load)
{
    if (load.end == LoadOutcome::End::Hung)
        return "it did not answer within " + std::to_string(load.timeoutSeconds) + " seconds";
    if (load.end == LoadOutcome::End::CutOff)
        return "it wrote more messages than a load has";
    return "it ended its process, with " + ErrorText(load.processExitCode);
}

/// Whether the library may be the right one for its host, but the host is one of 32 bits and this tool one of 64, or
/// the reverse.
bool IsForOtherHosts(const ModuleFacts& library)
{
    return library.dll && library.machine != library.wanted && library.machine != Machine::Other;
}

Diagnosis DiagnoseOtherMachine(const StartUpFacts& facts)
{
    const std::string theirs = BitsText(facts.library.machine);
    const std::string mine = BitsText(facts.library.wanted);
    return {ExitCode::OtherLibraryMachine, StepId::Library,
            "The host's library " + QuotedLibraryPath(facts) + " is for " + theirs +
                " hosts, and this tool answers for " + mine + " ones.",
            "Run the orlindex-doctor.exe of the kit for " + theirs + " hosts, or give a " + mine +
                " host the library of its own kit."};
}

/// Whether the result depends on the root and the signers that this tool trusts.
bool DependsOnTrust(ExitCode code)
{
    return code == ExitCode::Starts || code == ExitCode::SignerNotAccepted || code == ExitCode::RootNotTrusted;
}

} // namespace

void CheckHostLibrary(const std::wstring& host, Report& report, StartUpFacts& facts)
{
    report.Begin(StepId::Library);
    const std::wstring file = JoinPath(host, ProductModuleName);
    if (!PathExists(file))
    {
        report.Add({Mark::Warning, "version", Narrow(ProductModuleName), "", "missing", Narrow(file),
                    "not in the host's folder: a host there cannot use it, and this tool answers as version " +
                        std::string(ProductVersion) + " would"});
        return;
    }
    const std::optional<VersionRecord> record = ReadVersionRecord(file);
    report.Add(VersionLine(record, file));
    if (record && !record->specialBuild.empty())
        report.Add({Mark::Warning, "version", "special build", record->specialBuild, "special", "version record",
                    "no build to ship"});
    if (record)
        facts.libraryTrust = CompareTrust(*record, report);
    InspectLibraryFile(file, report, facts.library);
}

bool AppliesToLibrary(const StartUpFacts& facts)
{
    return facts.libraryTrust != LibraryTrust::Other && !IsForOtherHosts(facts.library);
}

std::optional<Diagnosis> DiagnoseLibrary(const StartUpFacts& facts)
{
    if (IsForOtherHosts(facts.library))
        return DiagnoseOtherMachine(facts);
    std::string why;
    if (facts.load && facts.load->libraryBegun)
        why = WhyLibraryEnded(*facts.load);
    else if (facts.library.exists)
        why = WhyLibraryDoesNotLoad(facts);
    if (why.empty())
        return std::nullopt;
    return Diagnosis{ExitCode::LibraryUnusable, StepId::Library,
                     "The host's library " + QuotedLibraryPath(facts) + " cannot be loaded: " + why + '.',
                     facts.libraryNeeds.empty()
                         ? "Restore it from the host's installer."
                         : "Put " + Joined(facts.libraryNeeds) +
                               " into its folder, or restore all of it from the host's installer."};
}

std::optional<Diagnosis> DiagnoseOtherTrust(const StartUpFacts& facts, const Diagnosis& diagnosis)
{
    if (facts.libraryTrust != LibraryTrust::Other || !DependsOnTrust(diagnosis.code))
        return std::nullopt;
    return Diagnosis{
        ExitCode::OtherLibraryTrust, StepId::Library,
        "The host's library " + QuotedLibraryPath(facts) +
            " trusts another root or other signers than this tool, which therefore cannot tell whether that "
            "library accepts the signature of " +
            Quoted(facts.modulePath) + '.',
        "Run the orlindex-doctor.exe that was built with that library."};
}

} // namespace Orlindex::Doctor
