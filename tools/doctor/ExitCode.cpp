#include "ExitCode.h"

#include <algorithm>
#include <iterator>

namespace Orlindex::Doctor {
namespace {

const ExitCodeRow rows[] = {
    {ExitCode::Starts, "starts",
     "a host would start; `check`: the module keeps the contract; `provider`: nothing speaks against a sign-in"},
    {ExitCode::UsageError, "usage-error", "the command line is wrong"},
    {ExitCode::ToolError, "tool-error", "the tool itself failed"},
    {ExitCode::LocalSystemAccount, "local-system-account", "the account is the local system's, which may not sign in"},
    {ExitCode::ClientConfigInvalid, "client-config-invalid",
     "no server application, and the client config file cannot be read"},
    {ExitCode::RegistryUnusable, "registry-unusable",
     "no server application, and the registry has its key, but no usable location"},
    {ExitCode::ServerApplicationNotFound, "server-application-not-found",
     "no server application where it is looked for"},
    {ExitCode::LibraryUnusable, "library-unusable", "the host's Orlindex.dll cannot be loaded"},
    {ExitCode::OtherLibraryMachine, "other-library-machine",
     "the host's Orlindex.dll is for 32-bit hosts and this tool for 64-bit ones, or the other way round"},
    {ExitCode::OtherLibraryTrust, "other-library-trust",
     "all else is in place, but the host's Orlindex.dll trusts another root or other signers than this tool"},
    {ExitCode::CompatibilityFileNotFound, "compatibility-file-not-found", "no version compatibility file"},
    {ExitCode::CompatibilityFileInvalid, "compatibility-file-invalid", "the version compatibility file cannot be read"},
    {ExitCode::CompatibilityListEmpty, "compatibility-list-empty", "the version compatibility file lists no plugin"},
    {ExitCode::CompatibilityEntriesDefective, "compatibility-entries-defective",
     "every entry of the version compatibility file has a defect"},
    {ExitCode::NoEntryServes, "no-entry-serves", "no entry serves this version of the library"},
    {ExitCode::ModuleNotOffered, "module-not-offered",
     "`check`: the version compatibility file would not choose the module"},
    {ExitCode::ModuleMissing, "module-missing", "the plugin module is not there"},
    {ExitCode::ModulePathRefused, "module-path-refused",
     "the plugin module's path is one that the system's loader takes for another file"},
    {ExitCode::ModuleFormat, "module-format", "the plugin module is no Windows DLL, or cannot be read"},
    {ExitCode::ModuleArchitecture, "module-architecture",
     "the plugin module is not for the hosts that the tool answers for"},
    {ExitCode::FactorySymbolMissing, "factory-symbol-missing",
     "the plugin module does not export its factory function"},
    {ExitCode::SignatureMissing, "signature-missing", "the plugin module is not signed"},
    {ExitCode::FileChanged, "file-changed", "the plugin module was changed after it was signed"},
    {ExitCode::SignerNotAccepted, "signer-not-accepted", "the plugin module's signer is not an accepted one"},
    {ExitCode::RootNotTrusted, "root-not-trusted", "the signature's root is neither trusted by the system nor pinned"},
    {ExitCode::CertificateExpired, "certificate-expired", "a certificate of the signature is not valid at this time"},
    {ExitCode::SignatureRefused, "signature-refused", "the system refuses the signature for another reason"},
    {ExitCode::FileInUse, "file-in-use",
     "the plugin module cannot be kept from changing, as where another process writes it"},
    {ExitCode::LoadFailed, "load-failed", "the system cannot load the plugin module"},
    {ExitCode::OtherFileLoaded, "other-file-loaded", "the system loaded another file than the one verified"},
    {ExitCode::FactoryNull, "factory-null", "the plugin's factory function answered null"},
    {ExitCode::PluginThrew, "plugin-threw", "the plugin threw an exception"},
    {ExitCode::PluginCrashed, "plugin-crashed", "the plugin ended its process"},
    {ExitCode::PluginHung, "plugin-hung", "the plugin did not answer in time"},
    {ExitCode::ModuleInterfaceNull, "module-interface-null", "the plugin's factory has no ISSOClientModule"},
    {ExitCode::TooManyMessages, "too-many-messages",
     "the process that loads the plugin wrote more messages than a load has"},
    {ExitCode::ProviderConfigNotFound, "provider-config-not-found",
     "`provider`: there is no configuration of a provider"},
    {ExitCode::ProviderConfigInvalid, "provider-config-invalid",
     "`provider`: the configuration is wrong, or lacks the server"},
    {ExitCode::ProviderNameNotResolved, "provider-name-not-resolved",
     "`provider`: the issuer's host name has no address"},
    {ExitCode::ProviderUnreachable, "provider-unreachable",
     "`provider`: no complete reply comes from the issuer's address"},
    {ExitCode::ProviderTlsRefused, "provider-tls-refused",
     "`provider`: Windows does not trust the provider's TLS connection"},
    {ExitCode::ProviderDiscoveryUnusable, "provider-discovery-unusable",
     "`provider`: the discovery document is not there or not usable"},
    {ExitCode::ProviderOtherIssuer, "provider-other-issuer", "`provider`: the discovery document is of another issuer"},
    {ExitCode::ProviderEndpointsUnusable, "provider-endpoints-unusable",
     "`provider`: an endpoint is missing or no https address"},
    {ExitCode::ProviderPkceMissing, "provider-pkce-missing", "`provider`: the provider does not offer PKCE with S256"},
    {ExitCode::ProviderAlgorithmsUnusable, "provider-algorithms-unusable",
     "`provider`: the agent accepts no algorithm of the provider's ID tokens"},
    {ExitCode::ProviderKeysUnusable, "provider-keys-unusable", "`provider`: the provider's key set is not usable"},
    {ExitCode::ProviderNoRedirectPort, "provider-no-redirect-port",
     "`provider`: no port is free for the redirect from the browser"},
    {ExitCode::ProviderClockOff, "provider-clock-off",
     "`provider`: this machine's clock differs from the provider's by more than the tolerance"},
};

} // namespace

const ExitCodeRow* FindExitCode(ExitCode code)
{
    const auto* const row =
        std::find_if(std::begin(rows), std::end(rows), [code](const ExitCodeRow& each) { return each.code == code; });
    return row == std::end(rows) ? nullptr : row;
}

std::string ExitCodeLines()
{
    std::string lines;
    for (const ExitCodeRow& row : rows)
    {
        std::string number = std::to_string(static_cast<int>(row.code));
        number.insert(0, 4 - number.size(), ' ');
        lines += number + "  " + row.meaning + '\n';
    }
    return lines;
}

} // namespace Orlindex::Doctor
