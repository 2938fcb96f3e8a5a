// Diagnoses one cause and one remedy from the facts of a start-up. The first step that failed is the cause.

#include "HostLibrary.h"
#include "StartUpFacts.h"
#include "Texts.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"
#include "base/Versions.h"
#include "locate/Registry.h"

namespace Orlindex::Doctor {

using namespace Ids;

// NOLINTBEGIN(bugprone-unchecked-optional-access): each function here runs only if its facts are there.
namespace {

/// The two places where an administrator can configure the server application's folder.
std::string PlacesForFolder(const StartUpFacts& facts)
{
    const std::wstring config =
        facts.clientConfigFile.empty() ? facts.hostDirectory + L"\\Orlindex.config" : facts.clientConfigFile;
    return "the registry value Location of " + Narrow(ServerApplicationKey) +
           ", or the key searchPaths of the object ssoServer in " + Quoted(config);
}

/// The server application was not found, and therefore neither was the version compatibility file.
Diagnosis DiagnoseMissingServerApplication(const StartUpFacts& facts)
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
                    PlacesForFolder(facts) + '.'};
    std::string cause = "The server application Pellwick.exe is in none of the folders that are searched";
    if (!facts.registeredLocation.empty())
        cause += "; the registered one, " + Quoted(facts.registeredLocation) + ", does not hold it";
    else
        cause +=
            "; the registry key " + Narrow(ServerApplicationKey) + " is absent, " +
            (facts.clientConfigFile.empty() ? "and there is no client config file"
                                            : "and " + Quoted(facts.clientConfigFile) + " names no folder with it");
    return {ExitCode::ServerApplicationNotFound, StepId::ServerApplication, cause + '.',
            "Install the server application again, or name its folder by " + PlacesForFolder(facts) + '.'};
}

Diagnosis DiagnoseMissingCompatibilityFile(const StartUpFacts& facts)
{
    if (facts.serverDirectory.empty())
        return DiagnoseMissingServerApplication(facts);
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

Diagnosis DiagnoseDefectiveEntries(const StartUpFacts& facts)
{
    const EntryFinding& first = *facts.entries.firstDefective;
    return {ExitCode::CompatibilityEntriesDefective, StepId::CompatibilityEntries,
            "No entry of " + Quoted(facts.compatibilityFile) + " can be used: in " + EntryPlace(first.entry) + ", " +
                DefectText(*first.defect) + '.',
            "Mend " + EntryPlace(first.entry) + " in " + Quoted(facts.compatibilityFile) +
                ", or repair the installation of the server application."};
}

Diagnosis DiagnoseEntries(const StartUpFacts& facts)
{
    if (facts.entries.defective + facts.entries.valid == 0)
        return {ExitCode::CompatibilityListEmpty, StepId::CompatibilityFile,
                "The list \"ssoClientPlugin\" of " + Quoted(facts.compatibilityFile) + " is missing or empty.",
                "Repair the installation of the server application, which brings that file."};
    if (facts.entries.valid == 0)
        return DiagnoseDefectiveEntries(facts);
    std::string offered;
    for (const EntryFinding& finding : facts.entries.firstValid)
        offered += (offered.empty() ? "" : "; ") + EntryPlace(finding.entry) + " serves " + RangeText(finding.entry);
    const std::size_t others = facts.entries.valid - facts.entries.firstValid.size();
    if (others > 0)
        offered += "; and so on, for " + std::to_string(others) + " more";
    return {ExitCode::NoEntryServes, StepId::CompatibilityEntries,
            std::string("No plugin that ") + Quoted(facts.compatibilityFile) + " offers serves version " +
                ProductVersion + " of the library: " + offered + '.',
            std::string("Install a server application whose plugin serves ") + ProductVersion +
                ", or a host with a library that this one serves."};
}

Diagnosis DiagnoseRefusedPath(const StartUpFacts& facts)
{
    const std::string remedy = facts.compatibilityFile.empty() // The path was given on the command line.
                                   ? "Name the module's file with its extension."
                                   : "Write an absolute path with the file's extension to modulePath in " +
                                         Quoted(facts.compatibilityFile) +
                                         ", such as %SSOServerAppPath%\\PellwickClient.dll.";
    return {ExitCode::ModulePathRefused, StepId::ModuleFile,
            "The path of the plugin module, " + Quoted(facts.modulePath) +
                ", is refused: " + PathDefectText(*facts.modulePathDefect) + '.',
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

Diagnosis DiagnoseUntrustedSigner(const StartUpFacts& facts, const std::string& original)
{
    const std::string reinstall = original + '.';
    const SignatureFacts& signature = *facts.signature;
    const auto result = static_cast<DWORD>(*signature.platformResult);
    const bool untrustedRoot = result == static_cast<DWORD>(CERT_E_UNTRUSTEDROOT);
    if (untrustedRoot && (HasAcceptedSigner(signature) || signature.signers.empty()))
        return {ExitCode::RootNotTrusted, StepId::Signature,
                "The signature of " + Quoted(facts.modulePath) + " by " + SignerName(signature) +
                    " ends in a root that neither is the pinned one nor is trusted by the system.",
                original + ", and do not make the system trust that root."};
    if (untrustedRoot || result == ERROR_SUCCESS) // With any other result the names were not compared.
        return {ExitCode::SignerNotAccepted, StepId::Signature,
                Quoted(facts.modulePath) + " is signed by " + SignerName(signature) +
                    ", which is not an accepted name.",
                reinstall};
    return {ExitCode::SignatureRefused, StepId::Signature,
            "The system refuses the signature of " + Quoted(facts.modulePath) + ": " +
                VerifyResultText(*signature.platformResult) + '.',
            reinstall};
}

Diagnosis DiagnoseRefusedSignature(const StartUpFacts& facts)
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
        return DiagnoseUntrustedSigner(facts, original);
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
                "The system refuses the signature of " + file + ": " + VerifyResultText(*signature.platformResult) +
                    '.',
                reinstall};
    }
}

Diagnosis DiagnoseFailedModuleLoad(const StartUpFacts& facts, const LoadFinding& failure)
{
    const std::string cause = "The system cannot load " + Quoted(facts.modulePath) + ": " + ErrorText(failure.error);
    const std::vector<std::string>& missing = facts.load->missingLibraries;
    if (!missing.empty())
        return {ExitCode::LoadFailed, StepId::Load,
                cause + "; it needs " + Joined(missing) + ", not found beside it nor where the system looks.",
                "Put " + Joined(missing) + " into its folder, or repair the installation of the server application."};
    return {ExitCode::LoadFailed, StepId::Load, cause + '.',
            "Repair the installation of the server application, as a library may be missing that the module needs "
            "itself or through another."};
}

Diagnosis DiagnoseFailedStep(const StartUpFacts& facts, const LoadFinding& failure)
{
    const std::string file = Quoted(facts.modulePath);
    const std::string maker = "Ask the plugin's maker for a module that keeps the contract.";
    switch (failure.step)
    {
    case LoadStep::LoadModule:
        return DiagnoseFailedModuleLoad(facts, failure);
    case LoadStep::CompareFile:
        return {ExitCode::OtherFileLoaded, StepId::Load, "The system loaded another file than " + file + '.',
                "Find out what redirects that path: a link above it, or a module of that name loaded before."};
    case LoadStep::FindSymbol:
        return {ExitCode::FactorySymbolMissing, StepId::Load, file + " does not export its factory function.", maker};
    case LoadStep::CallFactory:
        return {ExitCode::FactoryNull, StepId::Load, "The factory function of " + file + " answers null.", maker};
    default:
        return {ExitCode::LoadFailed, StepId::Load,
                file + " could not be loaded: " + LoadStepText(failure.step) + ", " + ErrorText(failure.error) + '.',
                "Run the tool again; the machine changed while it looked."};
    }
}

Diagnosis DiagnoseFailedLoad(const StartUpFacts& facts)
{
    const LoadOutcome& load = *facts.load;
    const std::string file = Quoted(facts.modulePath);
    const std::string when = load.begun ? std::string(" while ") + LoadStepText(*load.begun) : std::string();
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
                file + " ended its process" + when + ", with " + ErrorText(load.processExitCode) + '.', maker};
    if (load.failure)
        return DiagnoseFailedStep(facts, *load.failure);
    return {ExitCode::ModuleInterfaceNull, StepId::Interfaces, "The factory of " + file + " has no ISSOClientModule.",
            "Ask the plugin's maker for a module that keeps the contract."};
}

std::optional<Diagnosis> DiagnoseMachine(const StartUpFacts& facts)
{
    const ModuleFacts& module = facts.module;
    const std::string file = Quoted(facts.modulePath);
    const std::string replace = std::string("Replace it by the module for ") + BitsText(module.wanted) +
                                " hosts, or name that one in the version compatibility file.";
    if (!module.module || !module.dll)
        return Diagnosis{ExitCode::ModuleFormat, StepId::ModuleFile, file + " is no Windows DLL.", replace};
    if (module.machine != module.wanted)
        return Diagnosis{ExitCode::ModuleArchitecture, StepId::ModuleFile,
                         file + " is not for " + BitsText(module.wanted) + " x86 processes.", replace};
    return std::nullopt;
}

std::optional<Diagnosis> DiagnoseFormat(const StartUpFacts& facts)
{
    if (std::optional<Diagnosis> failure = DiagnoseMachine(facts))
        return failure;
    if (!facts.module.factorySymbol)
        return Diagnosis{ExitCode::FactorySymbolMissing, StepId::ModuleFile,
                         Quoted(facts.modulePath) + " does not export its factory function.",
                         "Ask the plugin's maker for a module that keeps the contract."};
    return std::nullopt;
}

Diagnosis DiagnoseFileInUse(const StartUpFacts& facts, const std::string& remedy)
{
    return {ExitCode::FileInUse, StepId::Signature,
            Quoted(facts.modulePath) + " cannot be kept from changing: " + ErrorText(facts.lockError) + '.', remedy};
}

std::optional<Diagnosis> DiagnoseLoad(const StartUpFacts& facts)
{
    const LoadOutcome& load = *facts.load;
    if (load.end == LoadOutcome::End::Regular && load.loaded && load.clientModule)
        return std::nullopt;
    if (load.libraryBegun) // The load ended before it reached the plugin.
        return DiagnoseLibrary(facts);
    if (std::optional<Diagnosis> failure = DiagnoseMachine(facts)) // More precise than the platform's error.
        return failure;
    return DiagnoseFailedLoad(facts);
}

Diagnosis DiagnoseSuccess(const StartUpFacts& facts)
{
    const std::string file = Quoted(facts.modulePath);
    const std::string condition = facts.library.exists && facts.libraryTrust == LibraryTrust::NotSaid
                                      ? ", provided that its library trusts the root and the signers of this tool"
                                      : "";
    if (facts.load)
        return {ExitCode::Starts, std::nullopt,
                "A host starts: " + file + " was loaded and has its interfaces" + condition + '.', ""};
    return {ExitCode::Starts, std::nullopt,
            "Everything is in place up to loading " + file + ", which was not tried (--load does)" + condition + '.',
            ""};
}

} // namespace

std::optional<Diagnosis> DiagnoseModule(const StartUpFacts& facts)
{
    const std::string file = Quoted(facts.modulePath);
    if (facts.modulePathDefect) // Before the file: the path is the cause whether or not a file exists there.
        return DiagnoseRefusedPath(facts);
    if (!facts.module.exists)
        return Diagnosis{ExitCode::ModuleMissing, StepId::ModuleFile, "The plugin module " + file + " is not there.",
                         "Repair the installation of the server application: it brings the plugin module."};
    if (facts.lockError == ERROR_SHARING_VIOLATION)
        return DiagnoseFileInUse(facts, "End the program that has the file open for writing, such as an installer or a "
                                        "scanner.");
    if (!facts.module.readable)
        return Diagnosis{ExitCode::ModuleFormat, StepId::ModuleFile,
                         file + " cannot be read: " + ErrorText(facts.module.readError) + '.',
                         "Give the user the right to read it; where it is a folder, repair the installation."};
    if (facts.signature && !LoadingAllowed(facts.signature->result))
        return DiagnoseRefusedSignature(facts);
    if (facts.lockError != ERROR_SUCCESS)
        return DiagnoseFileInUse(facts, "Give the user the right to read the file, and see that nothing locks it.");
    if (!facts.accepted)
        return Diagnosis{ExitCode::LoadFailed, StepId::Load, "The library does not load " + file + '.',
                         "Run the tool again; the machine changed while it looked."};
    if (!facts.load)
        return DiagnoseFormat(facts);
    return DiagnoseLoad(facts);
}

Diagnosis Diagnose(const StartUpFacts& facts)
{
    if (facts.localSystem)
        return {ExitCode::LocalSystemAccount, StepId::Account,
                "The account is the local system's, under which the library refuses to start.",
                "Run the host under the account of the user who is to sign in."};
    if (std::optional<Diagnosis> failure = DiagnoseLibrary(facts))
        return *failure;
    if (facts.modulePath.empty())
    {
        if (facts.compatibilityFile.empty())
            return DiagnoseMissingCompatibilityFile(facts);
        if (!facts.compatibilityError.empty())
            return {ExitCode::CompatibilityFileInvalid, StepId::CompatibilityFile,
                    "The version compatibility file " + Quoted(facts.compatibilityFile) +
                        " is not used: " + facts.compatibilityError + '.',
                    "Mend that file, or repair the installation of the server application."};
        return DiagnoseEntries(facts);
    }
    const Diagnosis diagnosis = DiagnoseModule(facts).value_or(DiagnoseSuccess(facts));
    return DiagnoseOtherTrust(facts, diagnosis).value_or(diagnosis);
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace Orlindex::Doctor
