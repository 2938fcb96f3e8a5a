// Verdicts of what no test can bring about on this machine, and the messages of the process that loads a plugin.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/LoadMessages.h"
#include "doctor/StartFacts.h"

namespace OrlindexTest {

using namespace Orlindex::Doctor;
using Kestrany::IdentityServices::BinaryTrustResult;
using Kestrany::IdentityServices::LoadState;
using Kestrany::IdentityServices::LoadStep;
using Kestrany::IdentityServices::SignerEvidence;
using Kestrany::IdentityServices::TrustEvidence;
using testing::HasSubstr;

namespace {

/// Of a start that comes to its end.
StartFacts SoundFacts()
{
    StartFacts facts;
    facts.hostDirectory = L"C:\\Host";
    facts.serverDirectory = L"C:\\Server";
    facts.compatibilityFile = L"C:\\Server\\TALIXVersionCompatibility.config";
    facts.entryChosen = true;
    facts.modulePath = L"C:\\Server\\Plugin.dll";
    facts.module.exists = facts.module.readable = facts.module.module = true;
    facts.module.dll = facts.module.x64 = facts.module.factorySymbol = true;
    facts.trust = TrustEvidence();
    facts.trust->platformAnswer = 0;
    facts.trust->result = BinaryTrustResult::Valid;
    return facts;
}

ExitCode CodeOfAnswer(unsigned long answer, BinaryTrustResult result)
{
    StartFacts facts = SoundFacts();
    facts.trust->platformAnswer = static_cast<long>(answer);
    facts.trust->result = result;
    facts.trust->signers.push_back(SignerEvidence{true, {}});
    return Diagnose(facts).code;
}

ExitCode CodeOfStep(LoadStep step, unsigned long error)
{
    StartFacts facts = SoundFacts();
    facts.load = LoadOutcome();
    facts.load->failure = {step, LoadState::Failed, error};
    return Diagnose(facts).code;
}

} // namespace

TEST(DoctorDiagnosis, SoundFactsStart)
{
    EXPECT_EQ(Diagnose(SoundFacts()).code, ExitCode::Starts);
}

TEST(DoctorDiagnosis, TheLocalSystemAccountIsTheFirstCause)
{
    StartFacts facts = SoundFacts();
    facts.localSystem = true;
    facts.modulePath.clear();
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LocalSystemAccount);
}

TEST(DoctorDiagnosis, EachAnswerOfTheSystemHasItsCode)
{
    const auto unknown = BinaryTrustResult::UnknownError;
    const auto distrusted = BinaryTrustResult::NotTrusted;
    EXPECT_EQ(CodeOfAnswer(0x800B0101, unknown), ExitCode::CertificateExpired);
    EXPECT_EQ(CodeOfAnswer(0x80096010, unknown), ExitCode::FileChanged);
    EXPECT_EQ(CodeOfAnswer(0x800B010A, unknown), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfAnswer(0x800B0111, distrusted), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfAnswer(0x80092026, distrusted), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfAnswer(0x800B0109, distrusted), ExitCode::RootNotTrusted);
    EXPECT_EQ(CodeOfAnswer(0x800B0100, BinaryTrustResult::SignatureInvalid), ExitCode::SignatureMissing);
}

TEST(DoctorDiagnosis, AModuleForAnotherMachineOrNoDllIsNamedWithoutLoadingIt)
{
    StartFacts facts = SoundFacts();
    facts.module.x64 = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleArchitecture);
    facts.module.dll = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
}

TEST(DoctorDiagnosis, EachStepOfALoadHasItsCode)
{
    EXPECT_EQ(CodeOfStep(LoadStep::CompareFile, 0), ExitCode::OtherFileLoaded);
    EXPECT_EQ(CodeOfStep(LoadStep::LoadModule, 193), ExitCode::LoadFailed);
    EXPECT_EQ(CodeOfStep(LoadStep::FindFile, 2), ExitCode::LoadFailed);
}

TEST(DoctorLoadMessages, ALineIsReadAsItWasWritten)
{
    const LoadMessage message = {
        LoadMessage::Kind::Step, static_cast<unsigned long>(LoadStep::FindSymbol), LoadState::Failed, 127, {}};
    const auto read = ParseLoadMessage(LineOf(message));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->kind, message.kind);
    EXPECT_EQ(read->number, message.number);
    EXPECT_EQ(read->state, message.state);
    EXPECT_EQ(read->error, message.error);
    EXPECT_EQ(read->text, "");
}

TEST(DoctorLoadMessages, ATextStaysOnItsLine)
{
    const std::string line = LineOf({LoadMessage::Kind::Exception, 0, LoadState::Failed, 0, "two\nlines  "});
    EXPECT_EQ(line.find('\n'), std::string::npos);
    ASSERT_TRUE(ParseLoadMessage(line));
    EXPECT_EQ(ParseLoadMessage(line)->text, "two lines  ");
}

TEST(DoctorLoadMessages, WhatIsNoMessageIsNone)
{
    for (const char* const line :
         {"", "x", "1", "1 2 3", "9 0 0 0 ", "1 999 1 0 ", "1 1 7 0 ", "4 2 0 0 ", "2 99 0 0 "})
        EXPECT_FALSE(ParseLoadMessage(line)) << line;
}

} // namespace OrlindexTest
