// `provider`: the OpenID Connect provider that the sign-in agent is configured for, step by step, by the agent's own
// code.

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "ProviderSteps.h"
#include "Texts.h"
#include "base/Files.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"
#include "identity/LoginService.h"
#include "identity/openid/windows/WinHttpClient.h"
#include "locate/SSOPathResolver.h"

namespace Orlindex::Doctor {

using namespace Ids;
using namespace Kestrany::Agent;
using Kestrany::Agent::OpenId::ProviderConfig;
using Kestrany::Agent::OpenId::ProviderConfigs;
using Kestrany::Agent::OpenId::WinHttpClient;

namespace {

constexpr wchar_t configFileName[] = L"Pellwick.config.json";
constexpr unsigned long long largestConfig = 1024 * 1024; // Bytes, as for the agent.

Diagnosis ConfigFailure(ExitCode code, std::string cause, std::string remedy)
{
    return {code, StepId::ProviderConfig, std::move(cause), std::move(remedy)};
}

/// The configuration file: the one of --config, or the one beside the server application.
std::optional<Diagnosis> FindConfigFile(const Options& options, const std::wstring& host, Report& report,
                                        std::wstring& file)
{
    Finding finding = {Mark::Failed, "file", "configuration", "", "not-found", "beside the server application", ""};
    file = options.config;
    if (file.empty())
    {
        SSOPathResolver manager(SplitVersion(ProductVersion), nullptr, {host, host, {}, {}, nullptr});
        manager.LoadClientConfig(); // It may name folders of the server application.
        if (!manager.FindSSOServerApp())
        {
            finding.note = "the server application is not found, which has the file beside it";
            report.Add(std::move(finding));
            return ConfigFailure(ExitCode::ProviderConfigNotFound,
                                 "The server application, which has the configuration beside it, is not found.",
                                 "Run orlindex-doctor without a command to see why, or name the file with --config.");
        }
        file = JoinPath(manager.GetSSOServerAppExeDirPath(), configFileName);
    }
    else
        finding.source = "--config";
    finding.value = Narrow(file);
    if (PathExists(file))
        return std::nullopt;
    finding.note = options.config.empty() ? "not there: users are simulated" : "not there";
    report.Add(std::move(finding));
    return ConfigFailure(ExitCode::ProviderConfigNotFound, "There is no file " + Quoted(file) + '.',
                         options.config.empty() ? "Write one that names the issuer; without it, users are simulated."
                                                : "Name an existing file with --config.");
}

std::optional<ProviderConfigs> ReadConfigs(const std::wstring& file, std::string& problem)
{
    const FileContents contents = ReadFileContents(file, largestConfig);
    if (contents.IsRead())
        return OpenId::ReadProviderConfigs(contents.bytes, Narrow(file), problem);
    problem = Narrow(file) + ": cannot be read: " + ErrorText(contents.error);
    return std::nullopt;
}

/// The provider of --server; without it, of the first server that is configured, in the order of Servers.
const ProviderConfig* ChooseProvider(const ProviderConfigs& configs, const std::string& wanted, std::string& server)
{
    for (const Server each : Servers)
    {
        const auto found = configs.servers.find(each);
        server = ServerName(each);
        if (found != configs.servers.end() && (wanted.empty() || wanted == server))
            return &found->second;
    }
    server = wanted;
    return nullptr;
}

} // namespace

Diagnosis RunProvider(const Options& options, const std::wstring& host, Report& report)
{
    report.Begin(StepId::ProviderConfig);
    std::wstring file;
    if (std::optional<Diagnosis> failure = FindConfigFile(options, host, report, file))
        return *std::move(failure);
    Finding finding = {Mark::Ok, "file", "configuration", Narrow(file), "read", "", ""};
    std::string problem;
    const std::optional<ProviderConfigs> configs = ReadConfigs(file, problem);
    if (!configs)
    {
        finding.mark = Mark::Failed;
        finding.result = "invalid";
        finding.note = problem;
        report.Add(std::move(finding));
        return ConfigFailure(ExitCode::ProviderConfigInvalid,
                             "The configuration of the provider is wrong: " + problem + '.',
                             "Correct the file, then quit the server application: Pellwick.exe --quit.");
    }
    report.Add(std::move(finding));
    std::string server;
    const ProviderConfig* const config = ChooseProvider(*configs, Narrow(options.server), server);
    if (config == nullptr)
    {
        report.Add(
            {Mark::Failed, "setting", "server", server, "not-set", Narrow(file), "this server is not configured"});
        return ConfigFailure(ExitCode::ProviderConfigInvalid,
                             Quoted(file) + " does not configure the server \"" + server + "\".",
                             "Give \"servers\" a member \"" + server + "\", or name another server with --server.");
    }
    report.Add({Mark::Ok, "setting", "server", server, "set", options.server.empty() ? Narrow(file) : "--server", ""});
    report.Add(
        {Mark::Ok, "setting", "issuer", config->issuer, "set", Narrow(file) + ": servers." + server + ".issuer", ""});
    WinHttpClient http;
    if (std::optional<Diagnosis> failure = ProviderSteps(*config, http, report).Run())
        return *std::move(failure);
    return {ExitCode::Starts, std::nullopt,
            "The agent can sign users in with " + config->issuer + ", as far as that can be seen without a sign-in.",
            ""};
}

} // namespace Orlindex::Doctor
