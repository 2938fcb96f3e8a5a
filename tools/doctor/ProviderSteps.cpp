#include "ProviderSteps.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include "Texts.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/Url.h"

namespace Orlindex::Doctor {

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;

namespace {

using std::chrono::seconds;

/// The agent's log line for a failure, in its two parts.
std::pair<std::string, std::string> CauseAndRemedy(const Failure& failure)
{
    std::string line = LogLine(failure);
    for (const FailureKind& kind : FailureKinds())
    {
        const std::string remedy = kind.remedy;
        if (kind.code == failure.code && line.size() > remedy.size())
            return {line.substr(0, line.size() - remedy.size() - 1), remedy};
    }
    return {line, "See the log of the sign-in agent."};
}

struct EndpointRow
{
    const char* name;
    std::string Metadata::* address;
    const char* without; ///< What its absence means.
};

constexpr EndpointRow endpointRows[] = {
    {"authorization", &Metadata::authorizationEndpoint, ""},
    {"token", &Metadata::tokenEndpoint, ""},
    {"key set", &Metadata::keySet, ""},
    {"userinfo", &Metadata::userInfoEndpoint, "the profile holds the claims of the ID token alone"},
    {"revocation", &Metadata::revocationEndpoint, "after a logout, tokens work until they expire"},
    {"end of the session", &Metadata::endSessionEndpoint, "after a logout, the provider's own session goes on"},
    {"device authorization", &Metadata::deviceEndpoint, "no sign-in with another device"},
    {"pushed requests", &Metadata::pushedRequestEndpoint, "the browser carries the request"},
};

const char* KeyTypeText(PublicKey::Type type)
{
    switch (type)
    {
    case PublicKey::Type::Rsa:
        return "RSA";
    case PublicKey::Type::P256:
        return "P-256";
    case PublicKey::Type::P384:
        return "P-384";
    }
    return "";
}

/// Whether a key of the set can verify a token of the algorithm.
bool CanVerify(const std::vector<ProviderKey>& keys, const SigningAlgorithm& algorithm)
{
    return std::any_of(keys.begin(), keys.end(), [&](const ProviderKey& key) {
        return key.key.type == algorithm.keyType && (!key.algorithm || *key.algorithm == algorithm.name);
    });
}

/// Of a problem before any reply: which step fails, and how.
bool IsUnreachable(const HttpReply& reply)
{
    return reply.problem != HttpProblem::None && reply.problem != HttpProblem::TlsRefused &&
           reply.problem != HttpProblem::ReplyTooLarge;
}

} // namespace

std::optional<Diagnosis> ProviderSteps::Run()
{
    const HttpReply reply = Get(DiscoveryAddress(config_.issuer), Limits::Metadata);
    if (CheckName(reply) && CheckTls(reply))
        CheckDiscovery(reply);
    CheckPorts();
    CheckClock(reply);
    return first_;
}

HttpReply ProviderSteps::Get(const std::string& url, std::size_t maxReply)
{
    HttpRequest request;
    request.url = url;
    request.maxReply = maxReply;
    request.limit = config_.requestLimit;
    return http_.Send(request);
}

void ProviderSteps::Fail(Finding finding, StepId step, ExitCode code, std::string cause, std::string remedy)
{
    finding.mark = Mark::Failed;
    report_.Add(std::move(finding));
    if (!first_)
        first_ = Diagnosis{code, step, std::move(cause), std::move(remedy)};
}

void ProviderSteps::Fail(Finding finding, StepId step, ExitCode code, const Failure& failure)
{
    auto [cause, remedy] = CauseAndRemedy(failure);
    finding.note = failure.came;
    Fail(std::move(finding), step, code, std::move(cause), std::move(remedy));
}

// --- Reaching the provider ------------------------------------------------------------------------------------------

bool ProviderSteps::CheckName(const HttpReply& reply)
{
    report_.Begin(StepId::NameResolution);
    const std::string host = ParseUrl(config_.issuer).value_or(Url()).host; // Parsed before, with the configuration.
    const NameResolution resolution = ResolveName(host);
    Finding finding = {Mark::Ok, "address", host, Joined(resolution.addresses), "resolved", "", ""};
    if (resolution.error == 0)
    {
        report_.Add(std::move(finding));
        return true;
    }
    finding.result = "not-resolved";
    finding.note = "no address: " + ErrorText(static_cast<unsigned long>(resolution.error));
    if (!IsUnreachable(reply))
    {
        // A proxy resolves names itself.
        finding.mark = Mark::Warning;
        finding.note += "; the provider was reached nevertheless, as through a proxy";
        report_.Add(std::move(finding));
        return true;
    }
    Fail(std::move(finding), StepId::NameResolution, ExitCode::ProviderNameNotResolved,
         "The host name \"" + host + "\" of the issuer has no address.",
         "Check the spelling of \"issuer\" in the configuration, the network connection and the name servers.");
    return false;
}

bool ProviderSteps::CheckTls(const HttpReply& reply)
{
    report_.Begin(StepId::Tls);
    const bool isHttps = ParseUrl(config_.issuer).value_or(Url()).isHttps;
    Finding finding = {Mark::Ok, "connection", isHttps ? "TLS" : "connection", config_.issuer, "connected", "", ""};
    if (IsUnreachable(reply))
    {
        finding.result = "unreachable";
        Fail(std::move(finding), StepId::Tls, ExitCode::ProviderUnreachable,
             TransportFailure(reply, DiscoveryAddress(config_.issuer)).value_or(Failure()));
        return false;
    }
    if (reply.problem == HttpProblem::TlsRefused)
    {
        finding.result = "refused";
        Fail(std::move(finding), StepId::Tls, ExitCode::ProviderTlsRefused,
             TransportFailure(reply, DiscoveryAddress(config_.issuer)).value_or(Failure()));
        return false;
    }
    if (!isHttps)
    {
        finding.mark = Mark::Warning;
        finding.note = "http, which \"allowInsecureLoopback\" allows on this machine alone";
    }
    else
        finding.note = "the certificate is valid for the host name, and Windows trusts its root";
    report_.Add(std::move(finding));
    return true;
}

// --- What the provider says -----------------------------------------------------------------------------------------

void ProviderSteps::CheckDiscovery(const HttpReply& reply)
{
    report_.Begin(StepId::Discovery);
    const std::string url = DiscoveryAddress(config_.issuer);
    Finding document = {Mark::Ok, "document", "discovery document", url, "usable", "", ""};
    const Outcome<Metadata> outcome =
        ParseMetadata(reply, {config_.issuer, config_.allowInsecureLoopback, config_.assumePkce});
    const Failure* const failure = FailureOf(outcome);
    if (failure == nullptr)
    {
        report_.Add(std::move(document));
        const Metadata& metadata = ResultOf(outcome);
        ReportIssuer();
        ReportEndpoints(metadata);
        ReportPkce();
        CheckAlgorithms(metadata);
        CheckKeys(metadata);
        return;
    }
    std::string problem;
    const auto root = reply.problem == HttpProblem::None ? ParseObject(reply.body.View(), problem) : std::nullopt;
    const bool isOfIssuer = root && Member(*root, "issuer") == config_.issuer;
    if (failure->code != IdDiscoveryOfOtherIssuer && !isOfIssuer)
    {
        document.result = "unusable";
        Fail(std::move(document), StepId::Discovery, ExitCode::ProviderDiscoveryUnusable, *failure);
        return;
    }
    report_.Add(std::move(document));
    if (failure->code == IdDiscoveryOfOtherIssuer)
    {
        report_.Begin(StepId::Issuer);
        Fail({Mark::Failed, "issuer", "issuer", config_.issuer, "other", "", ""}, StepId::Issuer,
             ExitCode::ProviderOtherIssuer, *failure);
        return;
    }
    ReportIssuer();
    if (failure->code == IdPkceNotOffered)
    {
        report_.Begin(StepId::Pkce);
        Fail({Mark::Failed, "pkce", "PKCE with S256", "", "not-offered", "", ""}, StepId::Pkce,
             ExitCode::ProviderPkceMissing, *failure);
        return;
    }
    report_.Begin(StepId::Endpoints);
    Fail({Mark::Failed, "endpoint", "endpoints", failure->expected, "unusable", "", ""}, StepId::Endpoints,
         ExitCode::ProviderEndpointsUnusable, *failure);
}

void ProviderSteps::ReportIssuer()
{
    report_.Begin(StepId::Issuer);
    report_.Add({Mark::Ok, "issuer", "issuer", config_.issuer, "same", "", "as in the configuration"});
}

void ProviderSteps::ReportEndpoints(const Metadata& metadata)
{
    report_.Begin(StepId::Endpoints);
    for (const EndpointRow& row : endpointRows)
    {
        const std::string& address = metadata.*row.address;
        Finding finding = {Mark::Ok, "endpoint", row.name, address, "offered", "", ""};
        if (address.empty())
        {
            finding.mark = Mark::Info;
            finding.result = "not-offered";
            finding.note = std::string("not offered: ") + row.without;
        }
        else if (row.address == &Metadata::pushedRequestEndpoint)
            finding.note = metadata.requiresPushedRequests ? "required, and therefore used" : "not required: not used";
        if (address.empty() && row.address == &Metadata::deviceEndpoint && config_.signIn == SignInMethod::Device)
            Fail(std::move(finding), StepId::Endpoints, ExitCode::ProviderEndpointsUnusable,
                 {IdDeviceGrantNotOffered, "\"device_authorization_endpoint\" in the discovery document", "none"});
        else
            report_.Add(std::move(finding));
    }
}

void ProviderSteps::ReportPkce()
{
    report_.Begin(StepId::Pkce);
    Finding finding = {Mark::Ok, "pkce", "PKCE with S256", "", "offered", "", "offered"};
    if (config_.assumePkce)
        finding.note = "offered, or assumed because of \"assumePkce\" in the configuration";
    report_.Add(std::move(finding));
}

void ProviderSteps::CheckAlgorithms(const Metadata& metadata)
{
    report_.Begin(StepId::Algorithms);
    Finding finding = {Mark::Ok, "algorithm", "ID tokens", Joined(metadata.algorithms), "usable", "", ""};
    if (metadata.algorithms.empty())
    {
        finding.mark = Mark::Info;
        finding.result = "not-listed";
        finding.note = "the provider lists none: every algorithm that the agent knows is accepted";
        report_.Add(std::move(finding));
        return;
    }
    std::vector<std::string> usable;
    std::copy_if(metadata.algorithms.begin(), metadata.algorithms.end(), std::back_inserter(usable),
                 [](const std::string& name) { return FindSigningAlgorithm(name) != nullptr; });
    if (!usable.empty())
    {
        finding.note = "of these, the agent accepts " + Joined(usable);
        report_.Add(std::move(finding));
        return;
    }
    finding.result = "not-usable";
    finding.note = "the agent accepts none of them";
    Fail(std::move(finding), StepId::Algorithms, ExitCode::ProviderAlgorithmsUnusable,
         "The provider signs ID tokens with " + Joined(metadata.algorithms) + ", and the agent accepts none of these.",
         "Let the provider sign ID tokens of this client with RS256, PS256, ES256 or ES384.");
}

void ProviderSteps::CheckKeys(const Metadata& metadata)
{
    report_.Begin(StepId::Keys);
    Finding document = {Mark::Ok, "document", "key set", metadata.keySet, "usable", "", ""};
    const Outcome<std::vector<ProviderKey>> outcome =
        ParseKeySet(Get(metadata.keySet, Limits::KeySet), metadata.keySet);
    if (const Failure* const failure = FailureOf(outcome))
    {
        document.result = "unusable";
        Fail(std::move(document), StepId::Keys, ExitCode::ProviderKeysUnusable, *failure);
        return;
    }
    report_.Add(std::move(document));
    const std::vector<ProviderKey>& keys = ResultOf(outcome);
    for (const ProviderKey& key : keys)
    {
        std::string text = KeyTypeText(key.key.type);
        if (key.key.type == PublicKey::Type::Rsa)
            text += " of " + std::to_string(key.key.modulus.size() * 8) + " bits";
        report_.Add({Mark::Ok, "key", key.keyId.value_or("key without a name"), text, "usable", "",
                     key.algorithm ? "for " + *key.algorithm : std::string()});
    }
    const std::vector<std::string>& names = metadata.algorithms;
    const bool canVerify =
        names.empty() ? !keys.empty() : std::any_of(names.begin(), names.end(), [&](const auto& name) {
            const SigningAlgorithm* const algorithm = FindSigningAlgorithm(name);
            return algorithm != nullptr && CanVerify(keys, *algorithm);
        });
    // Without a usable algorithm, the step before has failed.
    if (canVerify || first_)
        return;
    Fail({Mark::Failed, "key", "keys", "", "none", "", "no key for the algorithms of the step before"}, StepId::Keys,
         ExitCode::ProviderKeysUnusable, "The provider's key set has no key that can verify an ID token.",
         "Publish the signing key at " + metadata.keySet + ": RSA of at least 2048 bits, P-256 or P-384.");
}

// --- What this machine needs ----------------------------------------------------------------------------------------

void ProviderSteps::CheckPorts()
{
    report_.Begin(StepId::RedirectPorts);
    if (config_.signIn == SignInMethod::Device)
    {
        report_.Add(
            {Mark::Info, "port", "redirect ports", "", "not-used", "", "not used: users sign in on another device"});
        return;
    }
    const bool isAny = config_.redirectPorts.empty();
    const std::vector<std::uint16_t> ports = isAny ? std::vector<std::uint16_t>{0} : config_.redirectPorts;
    std::size_t free = 0;
    for (const std::uint16_t port : ports)
    {
        const int error = TryPort(config_.redirectHost, port);
        const std::string address = "http://" + config_.redirectHost + (isAny ? "" : ":" + std::to_string(port));
        Finding finding = {Mark::Ok,
                           "port",
                           isAny ? "any port" : "port " + std::to_string(port),
                           address + config_.redirectPath,
                           "free",
                           "",
                           ""};
        if (error == 0)
            ++free;
        else
        {
            finding.mark = Mark::Warning;
            finding.result = "not-free";
            finding.note = ErrorText(static_cast<unsigned long>(error));
        }
        report_.Add(std::move(finding));
    }
    if (free == 0)
        Fail({Mark::Failed, "port", "free ports", "0", "none", "", ""}, StepId::RedirectPorts,
             ExitCode::ProviderNoRedirectPort,
             {IdNoRedirectPort, "a free port among those of \"redirectPorts\"", "none"});
}

void ProviderSteps::CheckClock(const HttpReply& reply)
{
    report_.Begin(StepId::Clock);
    const auto now = std::chrono::system_clock::now();
    Finding finding = {Mark::Ok, "clock", "this machine's clock", SystemTimeText(now), "right", "", ""};
    const std::optional<TimePoint> providerTime = ParseHttpDate(reply.date);
    if (!providerTime)
    {
        finding.mark = Mark::Info;
        finding.result = "not-compared";
        finding.note = "not compared: the provider has not sent its time";
        report_.Add(std::move(finding));
        return;
    }
    const auto difference = std::chrono::duration_cast<seconds>(std::chrono::abs(now - *providerTime));
    const std::string text = std::to_string(difference.count()) + " seconds " +
                             (now < *providerTime ? "behind" : "ahead of") + " the provider's";
    finding.note = text;
    if (difference <= config_.clockTolerance)
    {
        report_.Add(std::move(finding));
        return;
    }
    finding.result = "off";
    Fail(std::move(finding), StepId::Clock, ExitCode::ProviderClockOff,
         "The clock of this machine is " + text + ", and " + std::to_string(config_.clockTolerance.count()) +
             " seconds are tolerated.",
         "Set the clock of this machine, or \"clockToleranceSeconds\" in the configuration.");
}

} // namespace Orlindex::Doctor
