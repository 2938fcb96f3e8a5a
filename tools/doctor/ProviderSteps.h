#ifndef ORLINDEX_DOCTOR_PROVIDERSTEPS_H
#define ORLINDEX_DOCTOR_PROVIDERSTEPS_H

#include <optional>
#include <string>
#include <vector>

#include "ProviderMachine.h"
#include "Report.h"
#include "identity/openid/Failure.h"
#include "identity/openid/Jws.h"
#include "identity/openid/Metadata.h"
#include "identity/openid/ProviderConfig.h"
#include "identity/openid/Services.h"

namespace Orlindex::Doctor {

/// The steps of `provider` after its configuration is known. Each adds its findings; the first that fails is the
/// result.
class ProviderSteps
{
public:
    ProviderSteps(const Kestrany::Agent::OpenId::ProviderConfig& config, Kestrany::Agent::OpenId::Http& http,
                  Report& report)
        : config_(config), http_(http), report_(report)
    {
    }

    /// All steps. nullopt if none fails.
    std::optional<Diagnosis> Run();

private:
    using HttpReply = Kestrany::Agent::OpenId::HttpReply;
    using Failure = Kestrany::Agent::OpenId::Failure;
    using Metadata = Kestrany::Agent::OpenId::Metadata;

    HttpReply Get(const std::string& url, std::size_t maxReply);

    bool CheckName(const HttpReply& reply);
    bool CheckTls(const HttpReply& reply);
    void CheckDiscovery(const HttpReply& reply);
    void ReportIssuer();
    void ReportEndpoints(const Metadata& metadata);
    void ReportPkce();
    void CheckAlgorithms(const Metadata& metadata);
    void CheckKeys(const Metadata& metadata);
    void CheckPorts();
    void CheckClock(const HttpReply& reply);

    /// Adds the failed finding, and keeps the diagnosis if it is the first.
    void Fail(Finding finding, StepId step, ExitCode code, std::string cause, std::string remedy);
    void Fail(Finding finding, StepId step, ExitCode code, const Failure& failure);

    const Kestrany::Agent::OpenId::ProviderConfig& config_;
    Kestrany::Agent::OpenId::Http& http_;
    Report& report_;
    std::optional<Diagnosis> first_;
};

} // namespace Orlindex::Doctor

#endif
