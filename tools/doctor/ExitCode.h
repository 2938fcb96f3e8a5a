#ifndef ORLINDEX_DOCTOR_EXITCODE_H
#define ORLINDEX_DOCTOR_EXITCODE_H

#include <string>

namespace Orlindex::Doctor {

/// The tool's exit code: the first step that fails, and how. A number is never reused for another
/// meaning.
enum class ExitCode
{
    Starts = 0,
    UsageError = 2,
    ToolError = 3,

    LocalSystemAccount = 10,
    ClientConfigInvalid = 11,
    RegistryUnusable = 12,
    ServerApplicationNotFound = 13,
    LibraryUnusable = 14,
    OtherLibraryMachine = 15,
    OtherLibraryTrust = 16,

    CompatibilityFileNotFound = 20,
    CompatibilityFileInvalid = 21,
    CompatibilityListEmpty = 22,
    CompatibilityEntriesDefective = 23,
    NoEntryServes = 24,
    ModuleNotOffered = 25,

    ModuleMissing = 30,
    ModulePathRefused = 31,
    ModuleFormat = 32,
    ModuleArchitecture = 33,
    FactorySymbolMissing = 34,

    SignatureMissing = 40,
    FileChanged = 41,
    SignerNotAccepted = 42,
    RootNotTrusted = 43,
    CertificateExpired = 44,
    SignatureRefused = 45,
    FileInUse = 46,

    LoadFailed = 50,
    OtherFileLoaded = 51,
    FactoryNull = 52,
    PluginThrew = 53,
    PluginCrashed = 54,
    PluginHung = 55,
    ModuleInterfaceNull = 56,
    TooManyMessages = 57,

    ProviderConfigNotFound = 60,
    ProviderConfigInvalid = 61,
    ProviderNameNotResolved = 62,
    ProviderUnreachable = 63,
    ProviderTlsRefused = 64,
    ProviderDiscoveryUnusable = 65,
    ProviderOtherIssuer = 66,
    ProviderEndpointsUnusable = 67,
    ProviderPkceMissing = 68,
    ProviderAlgorithmsUnusable = 69,
    ProviderKeysUnusable = 70,
    ProviderNoRedirectPort = 71,
    ProviderClockOff = 72
};

struct ExitCodeRow
{
    ExitCode code;
    const char* name; ///< As in the JSON report.
    const char* meaning;
};

/// Null for a number that is no exit code.
const ExitCodeRow* FindExitCode(ExitCode code);

/// A line for each code, for --help.
std::string ExitCodeLines();

} // namespace Orlindex::Doctor

#endif
