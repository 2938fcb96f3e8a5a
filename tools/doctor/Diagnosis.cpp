// From what was seen to one cause and one remedy. The order is that of the start; the first failure counts.

#include "LibraryDiagnosis.h"
#include "StartFacts.h"
#include "Words.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"
#include "base/Versions.h"
#include "locate/Registry.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

/// Where a directory of the server application can be made known.
std::string WaysToName(const StartFacts& facts)
{
    const std::wstring config =
        facts.clientConfigFile.empty() ? facts.hostDirectory + L"\\Orlindex.config" : facts.clientConfigFile;
    return "the registry value Location of " + Narrow(ServerApplicationKey) +
           ", or the key searchPaths of the object ssoServer in " + Quoted(config);
}

/// Without server application, where the version compatibility file was not found either.
Verdict WithoutServerApplication(const StartFacts& facts)
{
    if (!facts.clientConfigError.empty())
        return {ExitCode::ClientConfigInvalid, StepId::ClientConfig,
                "The client config file " + Quoted(facts.clientConfigFile) + " is not used (" +
                    facts.clientConfigError + "), and without it the server application Pellwick.exe is not found.",
                "Mend that file, or restore it from the host's installer."};
    if (!facts.registryProblem.empty())
        return {ExitCode::RegistryUnusable, StepId::Registry,
                "The registry does not say where the server application Pellwick.exe is: " + facts.registryProblem +
                    ".",
                "Repair the installation of the server application, which writes the text value Location, or name its "
                "folder by " +
                    WaysToName(facts) + '.'};
    std::string cause = "The server application Pellwick.exe is in none of the folders that are searched";
    if (!facts.registeredLocation.empty())
        cause += "; the registered one, " + Quoted(facts.registeredLocation) + ", does not hold it";
    else
        cause +=
            "; the registry key " + Narrow(ServerApplicationKey) + " is absent, " +
            (facts.clientConfigFile.empty() ? "and there is no client config file"
                                            : "and " + Quoted(facts.clientConfigFile) + " names no folder with it");
    return {ExitCode::ServerApplicationNotFound, StepId::ServerApplication, cause + '.',
            "Install the server application again, or name its folder by " + WaysToName(facts) + '.'};
}

Verdict WithoutCompatibilityFile(const StartFacts& facts)
{
    if (facts.serverDirectory.empty())
        return WithoutServerApplication(facts);
    if (!facts.clientConfigError.empty())
        return {ExitCode::CompatibilityFileNotFound, StepId::CompatibilityFile,
                "There is no TALIXVersionCompatibility.config in the server application's folder, " +
                    Quoted(facts.serverDirectory) + ", and the client config file " + Quoted(facts.clientConfigFile) +
                    ", which may name another folder, is not used (" + facts.clientConfigError + ").",
                "Mend " + Quoted(facts.clientConfigFile) +
                    ", or restore it from the host's installer; where it names no folder for that file, repair the "
                    "installation of the server application."};
    return {ExitCode::CompatibilityFileNotFound, StepId::CompatibilityFile,
            "There is no TALIXVersionCompatibility.config in the server application's folder, " +
                Quoted(facts.serverDirectory) + ", nor in one that the client config file names.",
            "Repair the installation of the server application: it brings that file."};
}

Verdict WithoutSoundEntry(const StartFacts& facts)
{
    const EntryFinding& first = *facts.entries.firstDefective;
    return {ExitCode::CompatibilityEntriesDefective, StepId::CompatibilityEntries,
            "No entry of " + Quoted(facts.compatibilityFile) + " can be used: in " + EntryPlace(first.entry) + ", " +
                DefectWords(*first.defect) + '.',
            "Mend " + EntryPlace(first.entry) + " in " + Quoted(facts.compatibilityFile) +
                ", or repair the installation of the server application."};
}

Verdict WithoutEntry(const StartFacts& facts)
{
    if (facts.entries.defective + facts.entries.sound == 0)
        return {ExitCode::CompatibilityListEmpty, StepId::CompatibilityFile,
                "The list \"ssoClientPlugin\" of " + Quoted(facts.compatibilityFile) + " is missing or empty.",
                "Repair the installation of the server application, which brings that file."};
    if (facts.entries.sound == 0)
        return WithoutSoundEntry(facts);
    std::string offered;
    for (const EntryFinding& finding : facts.entries.firstSound)
        offered += (offered.empty() ? "" : "; ") + EntryPlace(finding.entry) + " serves " + RangeWords(finding.entry);
    const std::size_t others = facts.entries.sound - facts.entries.firstSound.size();
    if (others > 0)
        offered += "; and so on, for " + std::to_string(others) + " more";
    return {ExitCode::NoEntryServes, StepId::CompatibilityEntries,
            std::string("No plugin that ") + Quoted(facts.compatibilityFile) + " offers serves version " +
                ProductVersion + " of the library: " + offered + '.',
            std::string("Install a server application whose plugin serves ") + ProductVersion +
                ", or a host with a library that this one serves."};
}

Verdict OfRefusedPath(const StartFacts& facts)
{
    const std::string remedy = facts.compatibilityFile.empty() // The path was given on the command line.
                                   ? "Name the module's file with its extension."
                                   : "Write an absolute path with the file's extension to modulePath in " +
                                         Quoted(facts.compatibilityFile) +
                                         ", such as %SSOServerAppPath%\\PellwickClient.dll.";
    return {ExitCode::ModulePathRefused, StepId::ModuleFile,
            "The path of the plugin module, " + Quoted(facts.modulePath) +
                ", is refused: " + PathDefectWords(*facts.modulePathDefect) + '.',
            remedy};
}

std::string SignerName(const SignatureFacts& signature)
{
    if (signature.signers.empty() || signature.signers.front().chain.empty())
        return "an unknown signer";
    return Quoted(signature.signers.front().chain.front().name);
}

bool HasAcceptedSigner(const SignatureFacts& signature)
{
    for (const SignerInfo& signer : signature.signers)
        if (signer.nameAccepted)
            return true;
    return false;
}

Verdict OfUntrustedSigner(const StartFacts& facts, const std::string& original)
{
    const std::string reinstall = original + '.';
    const SignatureFacts& signature = *facts.signature;
    const auto answer = static_cast<DWORD>(*signature.platformResult);
    const bool untrustedRoot = answer == static_cast<DWORD>(CERT_E_UNTRUSTEDROOT);
    if (untrustedRoot && (HasAcceptedSigner(signature) || signature.signers.empty()))
        return {ExitCode::RootNotTrusted, StepId::Signature,
                "The signature of " + Quoted(facts.modulePath) + " by " + SignerName(signature) +
                    " ends in a root that neither is the pinned one nor is trusted by the system.",
                original + ", and do not make the system trust that root."};
    if (untrustedRoot || answer == ERROR_SUCCESS) // Any other answer ends the verification before a name is looked at.
        return {ExitCode::SignerNotAccepted, StepId::Signature,
                Quoted(facts.modulePath) + " is signed by " + SignerName(signature) +
                    ", which is not an accepted name.",
                reinstall};
    return {ExitCode::SignatureRefused, StepId::Signature,
            "The system refuses the signature of " + Quoted(facts.modulePath) + ": " +
                TrustAnswerWords(*signature.platformResult) + '.',
            reinstall};
}

Verdict OfRefusedSignature(const StartFacts& facts)
{
    const SignatureFacts& signature = *facts.signature;
    const std::string file = Quoted(facts.modulePath);
    const std::string original =
        "Replace " + file + " by the original of its maker: repair the installation of the server application";
    const std::string reinstall = original + '.';
    if (!facts.module.module)
        return {ExitCode::ModuleFormat, StepId::ModuleFile, file + " is no Windows module.", reinstall};
    if (!signature.platformResult)
        return {ExitCode::ModuleMissing, StepId::Signature, file + " was gone when its signature was to be verified.",
                reinstall};
    if (signature.result == BinaryTrustResult::NotTrusted)
        return OfUntrustedSigner(facts, original);
    switch (static_cast<DWORD>(*signature.platformResult))
    {
    case static_cast<DWORD>(TRUST_E_NOSIGNATURE):
        return {ExitCode::SignatureMissing, StepId::Signature, file + " is not signed.", reinstall};
    case static_cast<DWORD>(TRUST_E_BAD_DIGEST):
        return {ExitCode::FileChanged, StepId::Signature, file + " was changed after it was signed.", reinstall};
    case static_cast<DWORD>(CERT_E_EXPIRED):
        return {ExitCode::CertificateExpired, StepId::Signature,
                "A certificate of the signature of " + file + " is not valid at this machine's time.",
                "Set the machine's clock if it is wrong; if it is right, replace the file by the original of its "
                "maker, which repairing the installation of the server application brings."};
    default:
        return {ExitCode::SignatureRefused, StepId::Signature,
                "The system refuses the signature of " + file + ": " + TrustAnswerWords(*signature.platformResult) +
                    '.',
                reinstall};
    }
}

Verdict OfFailedLoadModule(const StartFacts& facts, const LoadFinding& failure)
{
    const std::string cause = "The system cannot load " + Quoted(facts.modulePath) + ": " + ErrorWords(failure.error);
    const std::vector<std::string>& missing = facts.load->missingLibraries;
    if (!missing.empty())
        return {ExitCode::LoadFailed, StepId::Load,
                cause + "; it needs " + Joined(missing) + ", not found beside it nor where the system looks.",
                "Put " + Joined(missing) + " into its folder, or repair the installation of the server application."};
    return {ExitCode::LoadFailed, StepId::Load, cause + '.',
            "Repair the installation of the server application, as a library may be missing that the module needs "
            "itself or through another."};
}

Verdict OfFailedStep(const StartFacts& facts, const LoadFinding& failure)
{
    const std::string file = Quoted(facts.modulePath);
    const std::string maker = "Ask the plugin's maker for a module that keeps the contract.";
    switch (failure.step)
    {
    case LoadStep::LoadModule:
        return OfFailedLoadModule(facts, failure);
    case LoadStep::CompareFile:
        return {ExitCode::OtherFileLoaded, StepId::Load, "The system loaded another file than " + file + '.',
                "Find out what redirects that path: a link above it, or a module of that name loaded before."};
    case LoadStep::FindSymbol:
        return {ExitCode::FactorySymbolMissing, StepId::Load, file + " does not export its factory function.", maker};
    case LoadStep::CallFactory:
        return {ExitCode::FactoryNull, StepId::Load, "The factory function of " + file + " answers null.", maker};
    default:
        return {ExitCode::LoadFailed, StepId::Load,
                file + " could not be loaded: " + LoadStepWords(failure.step) + ", " + ErrorWords(failure.error) + '.',
                "Run the tool again; the machine changed while it looked."};
    }
}

Verdict OfFailedLoad(const StartFacts& facts)
{
    const LoadOutcome& load = *facts.load;
    const std::string file = Quoted(facts.modulePath);
    const std::string when = load.begun ? std::string(" while ") + LoadStepWords(*load.begun) : std::string();
    const std::string maker = "Ask the plugin's maker; the plugin's own log may say more.";
    if (load.end == LoadOutcome::End::Hung)
        return {ExitCode::PluginHung, StepId::Load,
                file + " did not answer within " + std::to_string(load.timeoutSeconds) + " seconds" + when + '.',
                maker};
    if (load.exception)
        return {ExitCode::PluginThrew, StepId::Load,
                file + " threw an exception" + when + ": " + Narrow(*load.exception) + '.', maker};
    if (load.end == LoadOutcome::End::CutOff)
        return {ExitCode::TooManyMessages, StepId::Load,
                "More messages came from the process that loads " + file + " than a load has" + when + '.',
                "Ask the plugin's maker: the module writes to a handle that is not its own."};
    if (load.end == LoadOutcome::End::Ended)
        return {ExitCode::PluginCrashed, StepId::Load,
                file + " ended its process" + when + ", with " + ErrorWords(load.processExitCode) + '.', maker};
    if (load.failure)
        return OfFailedStep(facts, *load.failure);
    return {ExitCode::ModuleInterfaceNull, StepId::Interfaces, "The factory of " + file + " has no ISSOClientModule.",
            "Ask the plugin's maker for a module that keeps the contract."};
}

std::optional<Verdict> OfMachine(const StartFacts& facts)
{
    const ModuleFacts& module = facts.module;
    const std::string file = Quoted(facts.modulePath);
    const std::string replace = std::string("Replace it by the module for ") + BitsWords(module.wanted) +
                                " hosts, or name that one in the version compatibility file.";
    if (!module.module || !module.dll)
        return Verdict{ExitCode::ModuleFormat, StepId::ModuleFile, file + " is no Windows DLL.", replace};
    if (module.machine != module.wanted)
        return Verdict{ExitCode::ModuleArchitecture, StepId::ModuleFile,
                       file + " is not for " + BitsWords(module.wanted) + " x86 processes.", replace};
    return std::nullopt;
}

std::optional<Verdict> OfFormat(const StartFacts& facts)
{
    if (std::optional<Verdict> failure = OfMachine(facts))
        return failure;
    if (!facts.module.factorySymbol)
        return Verdict{ExitCode::FactorySymbolMissing, StepId::ModuleFile,
                       Quoted(facts.modulePath) + " does not export its factory function.",
                       "Ask the plugin's maker for a module that keeps the contract."};
    return std::nullopt;
}

Verdict OfFileInUse(const StartFacts& facts, const std::string& remedy)
{
    return {ExitCode::FileInUse, StepId::Signature,
            Quoted(facts.modulePath) + " cannot be kept from changing: " + ErrorWords(facts.lockError) + '.', remedy};
}

std::optional<Verdict> OfLoad(const StartFacts& facts)
{
    const LoadOutcome& load = *facts.load;
    if (load.end == LoadOutcome::End::Regular && load.loaded && load.clientModule)
        return std::nullopt;
    if (load.libraryBegun) // The plugin was not reached.
        return OfLibrary(facts);
    if (std::optional<Verdict> failure = OfMachine(facts)) // It says more than the platform's error.
        return failure;
    return OfFailedLoad(facts);
}

Verdict OfStart(const StartFacts& facts)
{
    const std::string file = Quoted(facts.modulePath);
    const std::string proviso = facts.library.exists && facts.libraryTrust == LibraryTrust::NotSaid
                                    ? ", provided that its library trusts the root and the signers of this tool"
                                    : "";
    if (facts.load)
        return {ExitCode::Starts, std::nullopt,
                "A host starts: " + file + " was loaded and has its interfaces" + proviso + '.', ""};
    return {ExitCode::Starts, std::nullopt,
            "Everything is in place up to loading " + file + ", which was not tried (--load does)" + proviso + '.', ""};
}

} // namespace

std::optional<Verdict> DiagnoseModule(const StartFacts& facts)
{
    const std::string file = Quoted(facts.modulePath);
    if (facts.modulePathDefect) // Whether or not there is something at such a path: it is what to mend.
        return OfRefusedPath(facts);
    if (!facts.module.exists)
        return Verdict{ExitCode::ModuleMissing, StepId::ModuleFile, "The plugin module " + file + " is not there.",
                       "Repair the installation of the server application: it brings the plugin module."};
    if (facts.lockError == ERROR_SHARING_VIOLATION)
        return OfFileInUse(facts, "End the program that has the file open for writing, such as an installer or a "
                                  "scanner.");
    if (!facts.module.readable)
        return Verdict{ExitCode::ModuleFormat, StepId::ModuleFile,
                       file + " cannot be read: " + ErrorWords(facts.module.readError) + '.',
                       "Give the user the right to read it; where it is a folder, repair the installation."};
    if (facts.signature && !LoadingAllowed(facts.signature->result))
        return OfRefusedSignature(facts);
    if (facts.lockError != ERROR_SUCCESS)
        return OfFileInUse(facts, "Give the user the right to read the file, and see that nothing locks it.");
    if (!facts.accepted)
        return Verdict{ExitCode::LoadFailed, StepId::Load, "The library does not load " + file + '.',
                       "Run the tool again; the machine changed while it looked."};
    if (!facts.load)
        return OfFormat(facts);
    return OfLoad(facts);
}

Verdict Diagnose(const StartFacts& facts)
{
    if (facts.localSystem)
        return {ExitCode::LocalSystemAccount, StepId::Account,
                "The account is the local system's, under which the library refuses to start.",
                "Run the host under the account of the user who is to sign in."};
    if (std::optional<Verdict> failure = OfLibrary(facts))
        return *failure;
    if (facts.modulePath.empty())
    {
        if (facts.compatibilityFile.empty())
            return WithoutCompatibilityFile(facts);
        if (!facts.compatibilityError.empty())
            return {ExitCode::CompatibilityFileInvalid, StepId::CompatibilityFile,
                    "The version compatibility file " + Quoted(facts.compatibilityFile) +
                        " is not used: " + facts.compatibilityError + '.',
                    "Mend that file, or repair the installation of the server application."};
        return WithoutEntry(facts);
    }
    const Verdict verdict = DiagnoseModule(facts).value_or(OfStart(facts));
    return OfOtherTrust(facts, verdict).value_or(verdict);
}

} // namespace Orlindex::Doctor
