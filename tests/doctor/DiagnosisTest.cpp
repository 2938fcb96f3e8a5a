// Diagnoses of failures that no test can produce on this machine, the recorder, and the messages of the process that
// loads a plugin.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/FileAccess.h"
#include "doctor/LoadMessages.h"
#include "doctor/StartUpFacts.h"
#include "doctor/StartUpRecorder.h"
#include "support/Text.h"

namespace OrlindexTest {

using namespace Orlindex::Doctor;
using Kestrany::IdentityServices::BinaryTrustResult;
using Kestrany::IdentityServices::DirectoryOrigin;
using Kestrany::IdentityServices::DirectoryState;
using Kestrany::IdentityServices::LoadState;
using Kestrany::IdentityServices::LoadStep;
using Kestrany::IdentityServices::ModulePathDefect;
using Kestrany::IdentityServices::SearchList;
using Kestrany::IdentityServices::SettingState;
using Kestrany::IdentityServices::SignerInfo;
using Kestrany::IdentityServices::StartUpFile;
using testing::HasSubstr;

namespace {

/// The facts of a start-up without a failure.
StartUpFacts GoodFacts()
{
    StartUpFacts facts;
    facts.hostDirectory = L"C:\\Host";
    facts.serverDirectory = L"C:\\Server";
    facts.compatibilityFile = L"C:\\Server\\TALIXVersionCompatibility.config";
    facts.modulePath = L"C:\\Server\\Plugin.dll";
    facts.module.exists = facts.module.readable = facts.module.module = true;
    facts.module.dll = facts.module.factorySymbol = true;
    facts.module.machine = ToolMachine;
    facts.signature = SignatureFacts();
    facts.signature->platformResult = 0;
    facts.signature->result = BinaryTrustResult::Valid;
    facts.accepted = true;
    return facts;
}

ExitCode CodeOfResult(unsigned long platformResult, BinaryTrustResult result)
{
    StartUpFacts facts = GoodFacts();
    facts.signature->platformResult = static_cast<long>(platformResult);
    facts.signature->result = result;
    facts.signature->signers.push_back(SignerInfo{true, {}});
    return Diagnose(facts).code;
}

ExitCode CodeOfStep(LoadStep step, unsigned long error)
{
    StartUpFacts facts = GoodFacts();
    facts.load = LoadOutcome();
    facts.load->failure = {step, LoadState::Failed, error};
    return Diagnose(facts).code;
}

} // namespace

TEST(DoctorDiagnosis, AStartUpWithoutFailureStarts)
{
    EXPECT_EQ(Diagnose(GoodFacts()).code, ExitCode::Starts);
}

TEST(DoctorDiagnosis, TheLocalSystemAccountIsTheFirstCause)
{
    StartUpFacts facts = GoodFacts();
    facts.localSystem = true;
    facts.modulePath.clear();
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LocalSystemAccount);
}

TEST(DoctorDiagnosis, EachResultOfTheSystemHasItsExitCode)
{
    const auto unknown = BinaryTrustResult::UnknownError;
    const auto distrusted = BinaryTrustResult::NotTrusted;
    EXPECT_EQ(CodeOfResult(0x800B0101, unknown), ExitCode::CertificateExpired);
    EXPECT_EQ(CodeOfResult(0x80096010, unknown), ExitCode::FileChanged);
    EXPECT_EQ(CodeOfResult(0x800B010A, unknown), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfResult(0x800B0111, distrusted), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfResult(0x80092026, distrusted), ExitCode::SignatureRefused);
    EXPECT_EQ(CodeOfResult(0x800B0109, distrusted), ExitCode::RootNotTrusted);
    EXPECT_EQ(CodeOfResult(0x800B0100, BinaryTrustResult::SignatureInvalid), ExitCode::SignatureMissing);
}

TEST(DoctorDiagnosis, BelowThePinnedRootOtherChainFaultsDoNotFail)
{
    StartUpFacts facts = GoodFacts();
    facts.signature->platformResult = static_cast<long>(0x800B0109);
    facts.signature->signers.push_back(SignerInfo{true, {}, CERT_TRUST_IS_NOT_TIME_VALID});
    EXPECT_EQ(Diagnose(facts).code, ExitCode::Starts);
}

TEST(DoctorSignature, EachOtherChainFaultIsAWarningWithNameAndText)
{
    SignatureFacts signature;
    signature.result = BinaryTrustResult::Valid;
    signature.signers.push_back(SignerInfo{true, {}});
    for (DWORD bit = 1; bit != 0; bit <<= 1)
    {
        signature.signers.front().otherChainFaults = bit;
        Report report(nullptr);
        report.Begin(StepId::Signature);
        AddSignature(report, signature);
        const std::vector<Finding>& findings = report.Steps().back().findings;
        ASSERT_EQ(findings.size(), 3U) << "the signer, the fault, the signature";
        EXPECT_EQ(findings[1].mark, Mark::Warning);
        EXPECT_EQ(findings[1].result, "chain-fault");
        EXPECT_THAT(findings[1].value, testing::AnyOf(testing::StartsWith("CERT_TRUST_"), testing::StartsWith("0x")));
        EXPECT_THAT(findings[1].note, HasSubstr("; the library does not check this"));
    }
    signature.signers.front().otherChainFaults = CERT_TRUST_IS_NOT_TIME_VALID | CERT_TRUST_IS_REVOKED | 0x40000000;
    signature.result = BinaryTrustResult::UnknownError;
    Report report(nullptr);
    report.Begin(StepId::Signature);
    AddSignature(report, signature);
    std::vector<std::string> shown;
    for (const Finding& finding : report.Steps().back().findings)
        if (finding.result == "chain-fault")
            shown.push_back(finding.value + ": " + finding.note);
    EXPECT_THAT(shown, testing::ElementsAre(
                           "CERT_TRUST_IS_NOT_TIME_VALID: a certificate of the chain is not valid at this time",
                           "CERT_TRUST_IS_REVOKED: a certificate of the chain is revoked",
                           "0x40000000: the system reports faults that this tool has no words for"));
}

TEST(DoctorDiagnosis, TheSignerIsTheCauseOnlyIfTheNamesWereCompared)
{
    StartUpFacts facts = GoodFacts();
    facts.signature->result = BinaryTrustResult::NotTrusted;
    for (const unsigned long result : {0x800B0111UL, 0x80092026UL, 0x800B0004UL})
    {
        facts.signature->platformResult = static_cast<long>(result);
        facts.signature->signers.clear();
        EXPECT_EQ(Diagnose(facts).code, ExitCode::SignatureRefused) << result;
        facts.signature->signers.push_back(SignerInfo{false, {}});
        EXPECT_EQ(Diagnose(facts).code, ExitCode::SignatureRefused) << result;
    }
    for (const unsigned long result : {0UL, 0x800B0109UL})
    {
        facts.signature->platformResult = static_cast<long>(result);
        EXPECT_EQ(Diagnose(facts).code, ExitCode::SignerNotAccepted) << result;
    }
}

TEST(DoctorDiagnosis, AModuleForAnotherMachineIsTheCauseOfAFailedLoad)
{
    StartUpFacts facts = GoodFacts();
    facts.load = LoadOutcome();
    facts.load->failure = {LoadStep::LoadModule, LoadState::Failed, ERROR_BAD_EXE_FORMAT};
    facts.module.machine = Machine::X86;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleArchitecture);
    facts.module.dll = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
    facts.load->failure = {LoadStep::FindSymbol, LoadState::Failed, ERROR_PROC_NOT_FOUND};
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
}

TEST(DoctorDiagnosis, AnUnusableLibraryIsTheCauseBeforeAnyPlugin)
{
    StartUpFacts facts = GoodFacts();
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
    EXPECT_NE(Diagnose(facts).code, ExitCode::LibraryUnusable) << "a host may find another library";
}

TEST(DoctorDiagnosis, TheLibraryIsTheCauseIfItsLoadEndsTheProcess)
{
    for (const LoadOutcome::End end : {LoadOutcome::End::Ended, LoadOutcome::End::Hung, LoadOutcome::End::CutOff})
    {
        StartUpFacts facts = GoodFacts();
        facts.load = LoadOutcome();
        facts.load->end = end;
        facts.load->libraryBegun = true;
        EXPECT_EQ(Diagnose(facts).code, ExitCode::LibraryUnusable);
        const std::optional<Diagnosis> ofModule = DiagnoseModule(facts);
        ASSERT_TRUE(ofModule);
        EXPECT_EQ(ofModule->code, ExitCode::LibraryUnusable);
    }
}

TEST(DoctorDiagnosis, AFileThatCannotBeLockedFails)
{
    for (const unsigned long error : {ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED, ERROR_LOCK_VIOLATION})
    {
        StartUpFacts facts = GoodFacts();
        facts.accepted = false;
        facts.lockError = error;
        EXPECT_EQ(Diagnose(facts).code, ExitCode::FileInUse) << error;
    }
}

TEST(DoctorDiagnosis, AModuleThatTheLibraryRefusesFails)
{
    StartUpFacts facts = GoodFacts();
    facts.accepted = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::LoadFailed);
    EXPECT_TRUE(DiagnoseModule(facts));
}

TEST(DoctorDiagnosis, TheRemedyForARefusedPathNamesWhereItIsWritten)
{
    StartUpFacts facts = GoodFacts();
    facts.modulePathDefect = ModulePathDefect::NoExtension;
    EXPECT_THAT(Diagnose(facts).remedy, HasSubstr("TALIXVersionCompatibility.config"));
    facts.compatibilityFile.clear();
    EXPECT_EQ(Diagnose(facts).remedy, "Name the module's file with its extension.");
}

TEST(DoctorRecorder, AClientConfigFileOfTheCurrentDirectoryHasItsFullPath)
{
    Report report(nullptr);
    StartUpFacts facts;
    StartUpRecorder recorder(report, facts);
    const std::wstring full = FullPath(L"Orlindex.config");
    recorder.OnJsonFile({StartUpFile::ClientConfig, L"Orlindex.config", ERROR_SUCCESS, std::nullopt});
    recorder.OnSetting({"bundleId", SettingState::Set, L"b"});
    EXPECT_EQ(facts.clientConfigFile, full);
    const std::vector<Finding>& findings = report.Steps().back().findings;
    ASSERT_EQ(findings.size(), 3U);
    EXPECT_EQ(findings[0].mark, Mark::Warning);
    EXPECT_EQ(findings[0].source, "current directory");
    EXPECT_EQ(findings[1].source, Utf8(full));
    EXPECT_EQ(findings[2].source, Utf8(full) + ", key bundleId");
}

TEST(DoctorRecorder, OnlyTheFirstHundredDirectoriesAreStored)
{
    Report report(nullptr);
    StartUpFacts facts;
    StartUpRecorder recorder(report, facts);
    recorder.OnSearch(StartUpFile::ServerApplication,
                      {L"Pellwick.exe", SearchList(1'000'000, {L"", DirectoryOrigin::ClientConfig}),
                       std::vector<DirectoryState>(1'000'000, DirectoryState::Empty), L""});
    const std::vector<Finding>& findings = report.Steps().back().findings;
    ASSERT_EQ(findings.size(), 102U);
    EXPECT_EQ(findings[100].result, "not-shown");
    EXPECT_EQ(findings[100].value, "999900");
    EXPECT_EQ(findings[100].total, 1'000'000U);
    EXPECT_EQ(findings[101].result, "not-found");
}

TEST(DoctorReport, ALongTextIsCutBetweenCharacters)
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

TEST(DoctorDiagnosis, AModuleForAnotherMachineIsTheCauseWithoutALoad)
{
    StartUpFacts facts = GoodFacts();
    facts.module.machine = Machine::X86;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleArchitecture);
    facts.module.dll = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleFormat);
}

TEST(DoctorDiagnosis, AToolFor32BitHostsRequires32BitModules)
{
    StartUpFacts facts = GoodFacts();
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

TEST(DoctorDiagnosis, OtherTrustReplacesOnlyResultsThatDependOnIt)
{
    StartUpFacts facts = GoodFacts();
    facts.libraryTrust = LibraryTrust::Other;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryTrust);
    facts.signature->result = BinaryTrustResult::NotTrusted;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryTrust) << "a signer that this tool does not accept";
    facts.signature->signers.push_back(SignerInfo{true, {}});
    facts.signature->platformResult = static_cast<long>(0x800B0109);
    EXPECT_EQ(Diagnose(facts).code, ExitCode::OtherLibraryTrust) << "a root that this tool does not accept";
    facts.signature->platformResult = static_cast<long>(0x800B0111);
    EXPECT_EQ(Diagnose(facts).code, ExitCode::SignatureRefused) << "the system refuses it, whatever the tool trusts";
    facts.module.exists = false;
    EXPECT_EQ(Diagnose(facts).code, ExitCode::ModuleMissing);
}

TEST(DoctorDiagnosis, CauseAndRemedyAreOneSentenceEach)
{
    StartUpFacts facts = GoodFacts();
    const auto expectSentences = [&facts](const std::string& what) {
        const Diagnosis diagnosis = Diagnose(facts);
        for (const std::string& text : {diagnosis.cause, diagnosis.remedy})
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
    facts.signature->platformResult = static_cast<long>(0x800B0101);
    facts.signature->result = BinaryTrustResult::UnknownError;
    expectSentences("expired");
    facts.signature->platformResult = static_cast<long>(0x800B0109);
    facts.signature->result = BinaryTrustResult::NotTrusted;
    expectSentences("root");
}

TEST(DoctorDiagnosis, EachStepOfALoadHasItsExitCode)
{
    EXPECT_EQ(CodeOfStep(LoadStep::CompareFile, 0), ExitCode::OtherFileLoaded);
    EXPECT_EQ(CodeOfStep(LoadStep::LoadModule, 193), ExitCode::LoadFailed);
    EXPECT_EQ(CodeOfStep(LoadStep::FindFile, 2), ExitCode::LoadFailed);
}

TEST(DoctorLoadMessages, ALineIsParsedAsItWasWritten)
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

TEST(DoctorLoadMessages, ATextStaysOnOneLine)
{
    const std::string line = LineOf({LoadMessage::Kind::Exception, 0, LoadState::Failed, 0, "two\nlines  "});
    EXPECT_EQ(line.find('\n'), std::string::npos);
    ASSERT_TRUE(ParseLoadMessage(line));
    EXPECT_EQ(ParseLoadMessage(line)->text, "two lines  ");
}

TEST(DoctorLoadMessages, AnInvalidLineIsNotAMessage)
{
    for (const char* const line :
         {"", "x", "1", "1 2 3", "9 0 0 0 ", "1 999 1 0 ", "1 1 7 0 ", "4 2 0 0 ", "2 99 0 0 "})
        EXPECT_FALSE(ParseLoadMessage(line)) << line;
}

} // namespace OrlindexTest
