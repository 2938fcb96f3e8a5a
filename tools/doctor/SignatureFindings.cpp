#include <cstdio>

#include "StartRecorder.h"
#include "Words.h"
#include "base/Text.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

enum class RootTrust
{
    System,
    Pinned,
    Unknown
};

RootTrust TrustOf(const CertificateInfo& root, const SignatureFacts& signature)
{
    if (root.digest && IsPinnedRoot(*root.digest))
        return RootTrust::Pinned;
    return signature.platformResult == LONG{ERROR_SUCCESS} ? RootTrust::System : RootTrust::Unknown;
}

std::string CertificateNote(const CertificateInfo& certificate)
{
    return "valid from " + TimeWords(certificate.notBefore) + " to " + TimeWords(certificate.notAfter) +
           (certificate.digest ? ", SHA-256 " + DigestWords(*certificate.digest) : std::string());
}

void AddRoot(Report& report, const CertificateInfo& root, const SignatureFacts& signature)
{
    Finding line = {Mark::Ok, "certificate", "root", Narrow(root.subject), "", "", ""};
    switch (TrustOf(root, signature))
    {
    case RootTrust::Pinned:
        line.result = "pinned";
        line.note = "the pinned root, ";
        break;
    case RootTrust::System:
        line.result = "system-trusted";
        line.note = "trusted by the system, ";
        break;
    case RootTrust::Unknown:
        line.mark = signature.result == BinaryTrustResult::NotTrusted ? Mark::Failed : Mark::Info;
        line.result = "unknown";
        line.note = "neither the pinned root nor known to be trusted by the system, ";
        break;
    }
    line.note += CertificateNote(root);
    report.Add(std::move(line));
}

struct ChainFault
{
    DWORD bit;
    const char* name;
    const char* words;
};

constexpr ChainFault chainFaults[] = {
    {CERT_TRUST_IS_NOT_TIME_VALID, "CERT_TRUST_IS_NOT_TIME_VALID",
     "a certificate of the chain is not valid at this time"},
    {CERT_TRUST_IS_NOT_TIME_NESTED, "CERT_TRUST_IS_NOT_TIME_NESTED", "a certificate is valid longer than its issuer's"},
    {CERT_TRUST_IS_REVOKED, "CERT_TRUST_IS_REVOKED", "a certificate of the chain is revoked"},
    {CERT_TRUST_IS_NOT_SIGNATURE_VALID, "CERT_TRUST_IS_NOT_SIGNATURE_VALID",
     "the signature of a certificate of the chain is not valid"},
    {CERT_TRUST_IS_NOT_VALID_FOR_USAGE, "CERT_TRUST_IS_NOT_VALID_FOR_USAGE",
     "a certificate of the chain is not meant for signing programs"},
    {CERT_TRUST_IS_CYCLIC, "CERT_TRUST_IS_CYCLIC", "the chain holds a certificate twice"},
    {CERT_TRUST_INVALID_EXTENSION, "CERT_TRUST_INVALID_EXTENSION", "a certificate has an extension that is not valid"},
    {CERT_TRUST_INVALID_POLICY_CONSTRAINTS, "CERT_TRUST_INVALID_POLICY_CONSTRAINTS",
     "a certificate breaks the policy constraints of its issuers"},
    {CERT_TRUST_INVALID_BASIC_CONSTRAINTS, "CERT_TRUST_INVALID_BASIC_CONSTRAINTS",
     "a certificate breaks the basic constraints of its issuers"},
    {CERT_TRUST_INVALID_NAME_CONSTRAINTS, "CERT_TRUST_INVALID_NAME_CONSTRAINTS",
     "a certificate has name constraints that are not valid"},
    {CERT_TRUST_HAS_NOT_SUPPORTED_NAME_CONSTRAINT, "CERT_TRUST_HAS_NOT_SUPPORTED_NAME_CONSTRAINT",
     "a certificate has a name constraint that the system does not support"},
    {CERT_TRUST_HAS_NOT_DEFINED_NAME_CONSTRAINT, "CERT_TRUST_HAS_NOT_DEFINED_NAME_CONSTRAINT",
     "a certificate has a name that no name constraint of its issuers defines"},
    {CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT, "CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT",
     "a certificate has a name that its issuers do not permit"},
    {CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT, "CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT",
     "a certificate has a name that its issuers exclude"},
    {CERT_TRUST_IS_PARTIAL_CHAIN, "CERT_TRUST_IS_PARTIAL_CHAIN", "a certificate of the chain is missing"},
    {CERT_TRUST_CTL_IS_NOT_TIME_VALID, "CERT_TRUST_CTL_IS_NOT_TIME_VALID",
     "a certificate trust list is not valid at this time"},
    {CERT_TRUST_CTL_IS_NOT_SIGNATURE_VALID, "CERT_TRUST_CTL_IS_NOT_SIGNATURE_VALID",
     "the signature of a certificate trust list is not valid"},
    {CERT_TRUST_CTL_IS_NOT_VALID_FOR_USAGE, "CERT_TRUST_CTL_IS_NOT_VALID_FOR_USAGE",
     "a certificate trust list is not meant for signing programs"},
    {CERT_TRUST_HAS_WEAK_SIGNATURE, "CERT_TRUST_HAS_WEAK_SIGNATURE", "a certificate is signed with a weak algorithm"},
    {CERT_TRUST_NO_ISSUANCE_CHAIN_POLICY, "CERT_TRUST_NO_ISSUANCE_CHAIN_POLICY",
     "the chain has no issuance policy, and a certificate requires one"},
    {CERT_TRUST_IS_EXPLICIT_DISTRUST, "CERT_TRUST_IS_EXPLICIT_DISTRUST",
     "a certificate of the chain is distrusted on this machine"},
    {CERT_TRUST_HAS_NOT_SUPPORTED_CRITICAL_EXT, "CERT_TRUST_HAS_NOT_SUPPORTED_CRITICAL_EXT",
     "a certificate has a critical extension that the system does not support"},
};

/// What the system reports about a chain beside its root. The library does not ask for it: its answer is that of the
/// whole verification, and below the pinned root the signer's name alone decides.
void AddChainFaults(Report& report, const SignerInfo& signer, const SignatureFacts& signature)
{
    const char* const loaded = LoadingAllowed(signature.result) ? "; the library does not check this" : "";
    const auto add = [&](const std::string& name, const std::string& words) {
        report.Add({Mark::Warning, "certificate", "chain", name, "chain-fault", "", words + loaded});
    };
    DWORD rest = signer.otherChainFaults;
    for (const ChainFault& fault : chainFaults)
    {
        if ((signer.otherChainFaults & fault.bit) != 0)
            add(fault.name, fault.words);
        rest &= ~fault.bit;
    }
    if (rest != 0)
    {
        char bits[16] = {};
        std::snprintf(bits, sizeof bits, "0x%08lX", rest);
        add(bits, "the system reports faults that this tool has no words for");
    }
}

void AddSigner(Report& report, const SignerInfo& signer, const SignatureFacts& signature)
{
    const std::string name = signer.chain.empty() ? std::string() : Narrow(signer.chain.front().name);
    report.Add({signer.nameAccepted ? Mark::Ok : Mark::Failed, "signer", "signer", name,
                signer.nameAccepted ? "accepted" : "not-accepted", "",
                signer.nameAccepted ? "an accepted name" : "not among the accepted names"});
    for (std::size_t index = 0; index + 1 < signer.chain.size(); ++index)
        report.Add({Mark::Info, "certificate", index == 0 ? "signer's certificate" : "intermediate certificate",
                    Narrow(signer.chain[index].subject), "", "", CertificateNote(signer.chain[index])});
    if (!signer.chain.empty())
        AddRoot(report, signer.chain.back(), signature);
    AddChainFaults(report, signer, signature);
}

} // namespace

void AddSignature(Report& report, const SignatureFacts& signature)
{
    for (const SignerInfo& signer : signature.signers)
        AddSigner(report, signer, signature);
    if (signature.platformResult)
        report.Add(
            {Mark::Info, "signature", "system's answer", TrustAnswerWords(*signature.platformResult), "", "", ""});
    const bool allowed = LoadingAllowed(signature.result);
    report.Add({allowed ? Mark::Ok : Mark::Failed, "signature", "signature", allowed ? "valid" : "not valid",
                TrustResultName(signature.result), "",
                allowed ? "the library may load the module" : "the library does not load the module"});
}

} // namespace Orlindex::Doctor
