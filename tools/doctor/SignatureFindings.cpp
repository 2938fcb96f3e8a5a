#include "StartRecorder.h"
#include "Words.h"
#include "base/TextConversion.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

enum class RootTrust
{
    System,
    Pinned,
    Unknown
};

RootTrust TrustOf(const CertificateEvidence& root, const TrustEvidence& evidence)
{
    if (root.digest && IsPinnedRoot(*root.digest))
        return RootTrust::Pinned;
    return evidence.platformAnswer == LONG{ERROR_SUCCESS} ? RootTrust::System : RootTrust::Unknown;
}

std::string CertificateNote(const CertificateEvidence& certificate)
{
    return "valid from " + TimeWords(certificate.notBefore) + " to " + TimeWords(certificate.notAfter) +
           (certificate.digest ? ", SHA-256 " + DigestWords(*certificate.digest) : std::string());
}

void AddRoot(Report& report, const CertificateEvidence& root, const TrustEvidence& evidence)
{
    Finding line = {Mark::Ok, "certificate", "root", Narrow(root.subject), "", "", ""};
    switch (TrustOf(root, evidence))
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
        line.mark = evidence.result == BinaryTrustResult::NotTrusted ? Mark::Failed : Mark::Info;
        line.result = "unknown";
        line.note = "neither the pinned root nor known to be trusted by the system, ";
        break;
    }
    line.note += CertificateNote(root);
    report.Add(std::move(line));
}

void AddSigner(Report& report, const SignerEvidence& signer, const TrustEvidence& evidence)
{
    const std::string name = signer.chain.empty() ? std::string() : Narrow(signer.chain.front().name);
    report.Add({signer.nameAccepted ? Mark::Ok : Mark::Failed, "signer", "signer", name,
                signer.nameAccepted ? "accepted" : "not-accepted", "",
                signer.nameAccepted ? "an accepted name" : "not among the accepted names"});
    for (std::size_t index = 0; index + 1 < signer.chain.size(); ++index)
        report.Add({Mark::Info, "certificate", index == 0 ? "signer's certificate" : "intermediate certificate",
                    Narrow(signer.chain[index].subject), "", "", CertificateNote(signer.chain[index])});
    if (!signer.chain.empty())
        AddRoot(report, signer.chain.back(), evidence);
}

} // namespace

void AddSignature(Report& report, const TrustEvidence& evidence)
{
    for (const SignerEvidence& signer : evidence.signers)
        AddSigner(report, signer, evidence);
    if (evidence.platformAnswer)
        report.Add(
            {Mark::Info, "signature", "system's answer", TrustAnswerWords(*evidence.platformAnswer), "", "", ""});
    const bool allowed = LoadingAllowed(evidence.result);
    report.Add({allowed ? Mark::Ok : Mark::Failed, "signature", "signature", allowed ? "valid" : "not valid",
                TrustResultName(evidence.result), "",
                allowed ? "the library may load the module" : "the library does not load the module"});
}

} // namespace Orlindex::Doctor
