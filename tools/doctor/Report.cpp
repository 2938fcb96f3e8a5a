#include "Report.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

constexpr std::size_t longestText = std::size_t{16} * 1024; ///< Bytes. A hostile file may contain a text of millions.

std::string Shortened(const std::string& text)
{
    if (text.size() <= longestText)
        return text;
    std::size_t end = longestText;
    const auto continues = [&] { return (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80; };
    for (int back = 0; back < 3 && continues(); ++back) // A character has at most three bytes after its first.
        --end;
    return text.substr(0, end) + "... and " + std::to_string(text.size() - end) + " more bytes";
}

} // namespace

Mark Step::Outcome() const
{
    Mark worst = Mark::Ok;
    for (const Finding& finding : findings)
        worst = std::max(worst, finding.mark);
    return worst == Mark::Info ? Mark::Ok : worst;
}

const char* StepName(StepId id)
{
    switch (id)
    {
    case StepId::Account:
        return "account";
    case StepId::Library:
        return "library";
    case StepId::ClientConfig:
        return "client-config";
    case StepId::Registry:
        return "registry";
    case StepId::ServerApplication:
        return "server-application";
    case StepId::CompatibilityFile:
        return "compatibility-file";
    case StepId::CompatibilityEntries:
        return "compatibility-entries";
    case StepId::ModuleFile:
        return "module-file";
    case StepId::Signature:
        return "signature";
    case StepId::Load:
        return "load";
    case StepId::Interfaces:
        return "interfaces";
    case StepId::ProviderConfig:
        return "provider-config";
    case StepId::NameResolution:
        return "name-resolution";
    case StepId::Tls:
        return "tls";
    case StepId::Discovery:
        return "discovery";
    case StepId::Issuer:
        return "issuer";
    case StepId::Endpoints:
        return "endpoints";
    case StepId::Pkce:
        return "pkce";
    case StepId::Algorithms:
        return "algorithms";
    case StepId::Keys:
        return "keys";
    case StepId::RedirectPorts:
        return "redirect-ports";
    case StepId::Clock:
        return "clock";
    }
    return "";
}

const char* StepTitle(StepId id)
{
    switch (id)
    {
    case StepId::Account:
        return "Account";
    case StepId::Library:
        return "Library";
    case StepId::ClientConfig:
        return "Client config file";
    case StepId::Registry:
        return "Registry";
    case StepId::ServerApplication:
        return "Server application";
    case StepId::CompatibilityFile:
        return "Version compatibility file";
    case StepId::CompatibilityEntries:
        return "Entries of the version compatibility file";
    case StepId::ModuleFile:
        return "Plugin module file";
    case StepId::Signature:
        return "Signature";
    case StepId::Load:
        return "Load";
    case StepId::Interfaces:
        return "Interfaces";
    case StepId::ProviderConfig:
        return "Configuration";
    case StepId::NameResolution:
        return "Name resolution";
    case StepId::Tls:
        return "Connection";
    case StepId::Discovery:
        return "Discovery document";
    case StepId::Issuer:
        return "Issuer";
    case StepId::Endpoints:
        return "Endpoints";
    case StepId::Pkce:
        return "PKCE";
    case StepId::Algorithms:
        return "Algorithms";
    case StepId::Keys:
        return "Keys";
    case StepId::RedirectPorts:
        return "Redirect ports";
    case StepId::Clock:
        return "Clock";
    }
    return "";
}

const char* MarkName(Mark mark)
{
    switch (mark)
    {
    case Mark::Ok:
        return "ok";
    case Mark::Info:
        return "info";
    case Mark::Warning:
        return "warning";
    case Mark::Failed:
        return "failed";
    }
    return "";
}

void Report::Begin(StepId id)
{
    if (!steps_.empty() && steps_.back().id == id)
        return;
    steps_.push_back({id, {}});
    if (listener_)
        listener_->OnStep(id);
}

std::string Presentable(const std::string& text)
{
    return Kestrany::IdentityServices::Narrow(Kestrany::IdentityServices::Widen(Shortened(text)));
}

Diagnosis Presentable(const Diagnosis& diagnosis)
{
    return {diagnosis.code, diagnosis.step, Presentable(diagnosis.cause), Presentable(diagnosis.remedy)};
}

void Report::Add(Finding finding)
{
    for (std::string* const text : {&finding.name, &finding.value, &finding.source, &finding.note})
        *text = Presentable(*text);
    if (listener_)
        listener_->OnFinding(finding);
    steps_.back().findings.push_back(std::move(finding));
}

} // namespace Orlindex::Doctor
