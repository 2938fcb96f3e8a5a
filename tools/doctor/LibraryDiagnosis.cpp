#include "LibraryDiagnosis.h"

#include "Words.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

std::string LibraryFile(const StartFacts& facts)
{
    return Quoted(JoinPath(facts.hostDirectory, ProductModuleName));
}

/// Why the host's library cannot be loaded, in words; empty where nothing speaks against it.
std::string WhyNoLibrary(const StartFacts& facts)
{
    const ModuleFacts& library = facts.library;
    if (!library.readable)
        return "it cannot be read: " + ErrorWords(library.readError);
    if (!library.module || !library.dll)
        return "it is no Windows DLL";
    if (library.machine != library.wanted)
        return std::string("it is not for ") + BitsWords(library.wanted) + " x86 processes";
    if (!facts.load || facts.load->libraryError == ERROR_SUCCESS)
        return {};
    return ErrorWords(facts.load->libraryError) +
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
    return "it ended its process, with " + ErrorWords(load.processExitCode);
}

/// Such a library may be the right one for its host, which this tool does not answer for.
bool IsForOtherHosts(const ModuleFacts& library)
{
    return library.dll && library.machine != library.wanted && library.machine != Machine::Other;
}

Verdict OfOtherMachine(const StartFacts& facts)
{
    const std::string theirs = BitsWords(facts.library.machine);
    const std::string mine = BitsWords(facts.library.wanted);
    return {ExitCode::OtherLibraryMachine, StepId::Library,
            "The host's library " + LibraryFile(facts) + " is for " + theirs + " hosts, and this tool answers for " +
                mine + " ones.",
            "Run the orlindex-doctor.exe of the kit for " + theirs + " hosts, or give a " + mine +
                " host the library of its own kit."};
}

/// Whether a failure is one by this tool's root and signers.
bool DependsOnTrust(ExitCode code)
{
    return code == ExitCode::Starts || code == ExitCode::SignerNotAccepted || code == ExitCode::RootNotTrusted;
}

} // namespace

bool AnswersForLibrary(const StartFacts& facts)
{
    return facts.libraryTrust != LibraryTrust::Other && !IsForOtherHosts(facts.library);
}

std::optional<Verdict> OfLibrary(const StartFacts& facts)
{
    if (IsForOtherHosts(facts.library))
        return OfOtherMachine(facts);
    std::string why;
    if (facts.load && facts.load->libraryBegun)
        why = WhyLibraryEnded(*facts.load);
    else if (facts.library.exists)
        why = WhyNoLibrary(facts);
    if (why.empty())
        return std::nullopt;
    return Verdict{ExitCode::LibraryUnusable, StepId::Library,
                   "The host's library " + LibraryFile(facts) + " cannot be loaded: " + why + '.',
                   facts.libraryNeeds.empty()
                       ? "Restore it from the host's installer."
                       : "Put " + Joined(facts.libraryNeeds) +
                             " into its folder, or restore all of it from the host's installer."};
}

std::optional<Verdict> OfOtherTrust(const StartFacts& facts, const Verdict& verdict)
{
    if (facts.libraryTrust != LibraryTrust::Other || !DependsOnTrust(verdict.code))
        return std::nullopt;
    return Verdict{ExitCode::OtherLibraryTrust, StepId::Library,
                   "The host's library " + LibraryFile(facts) +
                       " trusts another root or other signers than this tool, which therefore cannot tell whether that "
                       "library accepts the signature of " +
                       Quoted(facts.modulePath) + '.',
                   "Run the orlindex-doctor.exe that was built with that library."};
}

} // namespace Orlindex::Doctor
