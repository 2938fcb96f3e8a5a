// Diagnoses of what no test can cause on this machine, and the messages of the process that loads a plugin.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/FullPath.h"
#include "doctor/LoadMessages.h"
#include "doctor/StartFacts.h"
#include "doctor/StartRecorder.h"
#include "support/Text.h"

namespace OrlindexTest {

using namespace Orlindex::Doctor;
using Kestrany::IdentityServices::BinaryTrustResult;
using Kestrany::IdentityServices::DirectoryOrigin;
using Kestrany::IdentityServices::DirectoryState;
using Kestrany::IdentityServices::LoadState;
using Kestrany::IdentityServices::LoadStep;
using Kestrany::IdentityServices::ModulePathDefect;
using Kestrany::IdentityServices::SearchedDirectory;
using Kestrany::IdentityServices::SettingState;
using Kestrany::IdentityServices::SignerEvidence;
using Kestrany::IdentityServices::StartFile;
using Kestrany::IdentityServices::TrustEvidence;
using testing::HasSubstr;

namespace {

/// The facts of a start-up that succeeds.
StartFacts SoundFacts()
{
    StartFacts facts;
    facts.hostDirectory = L"C:\\Host";
    facts.serverDirectory = L"C:\\Server";
    facts.compatibilityFile = L"C:\\Server\\TALIXVersionCompatibility.config";
    facts.modulePath = L"C:\\Server\\Plugin.dll";
    facts.module.exists = facts.module.readable = facts.module.module = true;
    facts.module.dll = facts.module.factorySymbol = true;
    facts.module.machine = ToolMachine;
    facts.trust = TrustEvidence();
    facts.trust->platformAnswer = 0;
    facts.trust->result = BinaryTrustResult::Valid;
    facts.accepted = true;
    return facts;
}

ExitCode CodeOfTrustResult(unsigned long platformResult, BinaryTrustResult result)
{
    StartFacts facts = SoundFacts();
    facts.trust->platformAnswer = static_cast<long>(platformResult);
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

TEST(DoctorDiagnosis, EachTrustResultOfTheSystemHasItsCode)
{
    const auto unknown = BinaryTrustResult::UnknownError;
    const auto distrusted = BinaryTrustResult::NotTrusted;
    EXPECT_EQ(CodeOfTrustResult(0x800B0101, unknown), ExitCode::CertificateExpired);
    EXPECT_EQ(CodeOfTrustResult(0x80096010, unknown), ExitCode::FileChanged);
    EXPECT_EQ(CodeOfTrustResult(0x800B010A, unknown), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfTrustResult(0x800B0111, distrusted), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfTrustResult(0x80092026, distrusted), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfTrustResult(0x800B0109, distrusted), ExitCode::RootNotTrusted);
    EXPECT_EQ(CodeOfTrustResult(0x800B0100, BinaryTrustResult::SignatureInvalid), ExitCode::SignatureMissing);
}

TEST(DoctorDiagnosis, BelowThePinnedRootOtherFaultsOfTheChainStopNoStart)
{
    StartFacts facts = SoundFacts();
    facts.trust->platformAnswer = static_cast<long>(0x800B0109);
    facts.trust->signers.push_back(SignerEvidence{true, {}, CERT_TRUST_IS_NOT_TIME_VALID});
    EXPECT_EQ(Diagnose(facts).code, ExitCode::Starts);
}

TEST(DoctorSignature, EachOtherFaultOfAChainIsAWarningWithItsNameAndItsWords)
{
    TrustEvidence evidence;
    evidence.result = BinaryTrustResult::Valid;
    evidence.signers.push_back(SignerEvidence{true, {}});
    for (DWORD bit = 1; bit != 0; bit <<= 1)
    {
        evidence.signers.front().otherChainFaults = bit;
        Report report(nullptr);
        report.Begin(StepId::Signature);
        AddSignature(report, evidence);
        const std::vector<Finding>& findings = report.Steps().back().findings;
        ASSERT_EQ(findings.size(), 3U) << "the signer, the fault, the signature";
        EXPECT_EQ(findings[1].mark, Mark::Warning);
        EXPECT_EQ(findings[1].result, "chain-fault");
        EXPECT_THAT(findings[1].value, testing::AnyOf(testing::StartsWith("CERT_TRUST_"), testing::StartsWith("0x")));
        EXPECT_THAT(findings[1].note, HasSubstr("; the library does not check this"));
    }
    evidence.signers.front().otherChainFaults = CERT_TRUST_IS_NOT_TIME_VALID | CERT_TRUST_IS_REVOKED | 0x40000000;
    evidence.result = BinaryTrustResult::UnknownError;
    Report report(nullptr);
    report.Begin(StepId::Signature);
    AddSignature(report, evidence);
    std::vector<std::string> shown;
    for (const Finding& finding : report.Steps().back().findings)
        if (finding.result == "chain-fault")
            shown.push_back(finding.value + ": " + finding.note);
    EXPECT_THAT(shown, testing::ElementsAre(
                           "CERT_TRUST_IS_NOT_TIME_VALID: a certificate of the chain is not valid at this time",
                           "CERT_TRUST_IS_REVOKED: a certificate of the chain is revoked",
                           "0x40000000: the system reports faults that this tool has no words for"));
}

TEST(DoctorDiagnosis, ANameIsToBlameOnlyWhereTheNamesWereLookedAt)
{
    StartFacts facts = SoundFacts();
    facts.trust->result = BinaryTrustResult::NotTrusted;
    for (const unsigned long result : {0x800B0111UL, 0x80092026UL, 0x800B0004UL})
    {
        facts.trust->platformAnswer = static_cast<long>(result);
        facts.trust->signers.clear();
        EXPECT_EQ(Diagnose(facts).code, ExitCode::SignatureRefused) << result;
        facts.trust->signers.push_back(SignerEvidence{false, {}});
        EXPECT_EQ(Diagnose(facts).code, ExitCode::SignatureRefused) << result;
    }
    for (const unsigned long result : {0UL, 0x800B0109UL})
    {
        facts.trust->platformAnswer = static_cast<long>(result);
        EXPECT_EQ(Diagnose(facts).code, ExitCode::SignerNotAccepted) << result;
    }
}

TEST(DoctorDiagnosis, AModuleForAnotherMachineIsNamedWhereItsLoadFailed)
{
    StartFacts facts = SoundFacts();
    facts.load = LoadOutcome();
    facts.load->failure = {LoadStep::LoadModule, LoadState::Failed, ERROR_BAD_EXE_FORMAT};
    facts.module.machine = Machine::X86;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleArchitecture);
    facts.module.dll = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
    facts.load->failure = {LoadStep::FindSymbol, LoadState::Failed, ERROR_PROC_NOT_FOUND};
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
}

TEST(DoctorDiagnosis, ALibraryThatCannotBeLoadedIsTheCauseBeforeAnyPlugin)
{
    StartFacts facts = SoundFacts();
    facts.library.exists = facts.library.readable = facts.library.module = true;
    facts.library.dll = true;
    facts.library.machine = ToolMachine;
    facts.load = LoadOutcome();
    facts.load->loaded = facts.load->clientModule = true;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::Starts);
    facts.load->libraryError = ERROR_DLL_INIT_FAILED;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LibraryUnusable);
    facts.modulePath.clear();
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LibraryUnusable);
    facts.library.exists = false;
    EXPECT_NE(Diagnose(facts).code, ExitCode::LibraryUnusable) << "a host may find another one";
}

TEST(DoctorDiagnosis, APluginIsNotToBlameForTheEndOfTheLibrarysLoad)
{
    for (const LoadOutcome::End end : {LoadOutcome::End::Ended, LoadOutcome::End::Hung, LoadOutcome::End::CutOff})
    {
        StartFacts facts = SoundFacts();
        facts.load = LoadOutcome();
        facts.load->end = end;
        facts.load->libraryBegun = true;
        EXPECT_EQ(Diagnose(facts).code, ExitCode::LibraryUnusable);
        const std::optional<Verdict> ofModule = DiagnoseModule(facts);
        ASSERT_TRUE(ofModule);
        EXPECT_EQ(ofModule->code, ExitCode::LibraryUnusable);
    }
}

TEST(DoctorDiagnosis, AFileThatCannotBeLockedNeverStarts)
{
    for (const unsigned long error : {ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED, ERROR_LOCK_VIOLATION})
    {
        StartFacts facts = SoundFacts();
        facts.accepted = false;
        facts.holdError = error;
        EXPECT_EQ(Diagnose(facts).code, ExitCode::FileInUse) << error;
    }
}

TEST(DoctorDiagnosis, WhatTheLibraryRefusesNeverStarts)
{
    StartFacts facts = SoundFacts();
    facts.accepted = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LoadFailed);
    EXPECT_TRUE(DiagnoseModule(facts));
}

TEST(DoctorDiagnosis, ARefusedPathIsMendedWhereItStands)
{
    StartFacts facts = SoundFacts();
    facts.modulePathDefect = ModulePathDefect::NoExtension;
    EXPECT_THAT(Diagnose(facts).remedy, HasSubstr("TALIXVersionCompatibility.config"));
    facts.compatibilityFile.clear();
    EXPECT_EQ(Diagnose(facts).remedy, "Name the module's file with its extension.");
}

TEST(DoctorRecorder, AClientConfigFileFromTheCurrentDirectoryIsNamedByItsWholePath)
{
    Report report(nullptr);
    StartFacts facts;
    StartRecorder recorder(report, facts);
    const std::wstring full = FullPath(L"Orlindex.config");
    recorder.OnDocument({StartFile::ClientConfig, L"Orlindex.config", ERROR_SUCCESS, std::nullopt});
    recorder.OnSetting({"bundleId", SettingState::Set, L"b"});
    EXPECT_EQ(facts.clientConfigFile, full);
    const std::vector<Finding>& findings = report.Steps().back().findings;
    ASSERT_EQ(findings.size(), 3U);
    EXPECT_EQ(findings[0].mark, Mark::Warning);
    EXPECT_EQ(findings[0].source, "current directory");
    EXPECT_EQ(findings[1].source, Utf8(full));
    EXPECT_EQ(findings[2].source, Utf8(full) + ", key bundleId");
}

TEST(DoctorRecorder, OfManyDirectoriesTheFirstHundredAreKept)
{
    Report report(nullptr);
    StartFacts facts;
    StartRecorder recorder(report, facts);
    recorder.OnSearch(
        {StartFile::ServerApplication, L"Pellwick.exe",
         std::vector<SearchedDirectory>(1'000'000, {L"", DirectoryOrigin::ClientConfig, DirectoryState::Empty}), L""});
    const std::vector<Finding>& findings = report.Steps().back().findings;
    ASSERT_EQ(findings.size(), 102U);
    EXPECT_EQ(findings[100].result, "not-shown");
    EXPECT_EQ(findings[100].value, "999900");
    EXPECT_EQ(findings[100].total, 1'000'000U);
    EXPECT_EQ(findings[101].result, "not-found");
}

TEST(DoctorReport, ATextIsCutBetweenCharacters)
{
    for (std::size_t ahead = 0; ahead < 4; ++ahead)
    {
        std::string text(ahead, 'a');
        while (text.size() < 20'000)
            text += "\xF0\x9F\x98\x80";
        const std::string shown = Presentable(text);
        EXPECT_EQ(shown.find("\xEF\xBF\xBD"), std::string::npos) << ahead;
        EXPECT_EQ(text.compare(0, 16'000, shown, 0, 16'000), 0);
        EXPECT_LT(shown.size(), 16'500U);
        EXPECT_THAT(shown, testing::EndsWith(" more bytes"));
    }
    EXPECT_EQ(Presentable(std::string(16'384, 'a')), std::string(16'384, 'a'));
}

TEST(DoctorDiagnosis, AModuleForAnotherMachineOrNoDllIsNamedWithoutLoadingIt)
{
    StartFacts facts = SoundFacts();
    facts.module.machine = Machine::X86;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleArchitecture);
    facts.module.dll = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
}

TEST(DoctorDiagnosis, AToolFor32BitHostsAsksFor32BitModules)
{
    StartFacts facts = SoundFacts();
    for (ModuleFacts* const module : {&facts.module, &facts.library})
    {
        module->exists = module->readable = module->module = module->dll = true;
        module->wanted = module->machine = Machine::X86;
    }
    EXPECT_EQ(Diagnose(facts).code, ExitCode::Starts);
    facts.module.machine = Machine::X64;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleArchitecture);
    EXPECT_THAT(Diagnose(facts).cause, HasSubstr("not for 32-bit"));
    EXPECT_THAT(Diagnose(facts).remedy, HasSubstr("for 32-bit hosts"));
    facts.library.machine = Machine::X64;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryMachine);
    EXPECT_THAT(Diagnose(facts).cause, HasSubstr("is for 64-bit hosts, and this tool answers for 32-bit ones"));
    facts.library.machine = Machine::Other;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LibraryUnusable);
}

TEST(DoctorDiagnosis, OtherTrustTakesThePlaceOnlyOfWhatDependsOnIt)
{
    StartFacts facts = SoundFacts();
    facts.libraryTrust = LibraryTrust::Other;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryTrust);
    facts.trust->result = BinaryTrustResult::NotTrusted;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryTrust) << "a signer that this tool does not accept";
    facts.trust->signers.push_back(SignerEvidence{true, {}});
    facts.trust->platformAnswer = static_cast<long>(0x800B0109);
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryTrust) << "a root that this tool does not accept";
    facts.trust->platformAnswer = static_cast<long>(0x800B0111);
    EXPECT_EQ(Diagnose(facts).code, ExitCode::SignatureRefused) << "by the system, whatever is trusted";
    facts.module.exists = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleMissing);
}

TEST(DoctorDiagnosis, CauseAndRemedyAreOneSentenceEach)
{
    StartFacts facts = SoundFacts();
    const auto expectSentences = [&facts](const std::string& what) {
        const Verdict verdict = Diagnose(facts);
        for (const std::string& text : {verdict.cause, verdict.remedy})
        {
            EXPECT_THAT(text, testing::Not(HasSubstr(". "))) << what;
            EXPECT_THAT(text, testing::EndsWith(".")) << what;
        }
    };
    facts.load = LoadOutcome();
    facts.load->failure = {LoadStep::LoadModule, LoadState::Failed, ERROR_MOD_NOT_FOUND};
    expectSentences("no load");
    facts.load->missingLibraries = {"a.dll", "b.dll"};
    expectSentences("missing libraries");
    facts.trust->platformAnswer = static_cast<long>(0x800B0101);
    facts.trust->result = BinaryTrustResult::UnknownError;
    expectSentences("expired");
    facts.trust->platformAnswer = static_cast<long>(0x800B0109);
    facts.trust->result = BinaryTrustResult::NotTrusted;
    expectSentences("root");
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
