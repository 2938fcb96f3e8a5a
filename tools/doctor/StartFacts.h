#ifndef ORLINDEX_DOCTOR_STARTFACTS_H
#define ORLINDEX_DOCTOR_STARTFACTS_H

#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "Report.h"
#include "load/signature/SignatureInfo.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

namespace Ids = Kestrany::IdentityServices;

/// How the load of the plugin went, in a process of its own.
struct LoadOutcome
{
    enum class End
    {
        Regular,
        Ended, ///< The process ended before the load did.
        Hung,
        CutOff ///< It wrote more messages than are read, and was ended.
    };

    End end = End::Regular;
    bool loaded = false;
    bool libraryBegun = false; ///< The load ended while the host's library was loaded.
    unsigned long libraryError = 0;
    unsigned long processExitCode = 0;
    unsigned timeoutSeconds = 0;
    std::optional<Ids::LoadStep> begun;        ///< The step under way where the load ended.
    std::optional<Ids::LoadFinding> failure;   ///< The step that failed.
    std::optional<std::wstring> exception;     ///< What the plugin threw.
    bool clientModule = false;                 ///< Whether the factory has an ISSOClientModule.
    std::vector<std::string> missingLibraries; ///< Among those that the module names.
};

/// The kind of process that a module is for.
enum class Machine
{
    X64,
    X86, ///< 32 bits
    Other
};

/// This tool takes the steps of the hosts of its own kind: the registry's view, the module's key in the version
/// compatibility file and the factory function's name depend on it.
inline constexpr Machine ToolMachine = sizeof(void*) == 8 ? Machine::X64 : Machine::X86;

/// What is known of a module's file as it lies on the disk.
struct ModuleFacts
{
    Machine wanted = ToolMachine; ///< That of the hosts which are answered for.
    bool exists = false;
    bool readable = false;
    bool module = false; ///< A Windows module.
    bool dll = false;
    Machine machine = Machine::Other;
    bool factorySymbol = false; ///< Of the plugin's.
    unsigned long readError = 0;
};

/// What the version record of the host's library says of whom it trusts, beside what this tool trusts.
enum class LibraryTrust
{
    NotSaid,
    Same,
    Other
};

/// The verification of the module's signature, and what the platform keeps about it.
struct SignatureFacts
{
    Ids::BinaryTrustResult result = Ids::BinaryTrustResult::UnknownError;
    std::optional<LONG> platformResult; ///< nullopt if the platform was not asked.
    std::vector<Ids::SignerInfo> signers;
};

/// The elements of a version compatibility file.
struct EntryFacts
{
    std::size_t defective = 0;
    std::size_t sound = 0;
    std::optional<Ids::EntryFinding> firstDefective;
    std::vector<Ids::EntryFinding> firstSound;
};

/// What a start saw, as far as the verdict depends on it.
struct StartFacts
{
    bool localSystem = false;

    std::wstring hostDirectory;
    ModuleFacts library; ///< The one in the host's folder.
    LibraryTrust libraryTrust = LibraryTrust::NotSaid;
    std::vector<std::string> libraryNeeds; ///< Libraries that it names and that are not found, where it does not load.

    std::wstring clientConfigFile; ///< Empty where there is none.
    std::string clientConfigError; ///< In words; empty where the file could be read.

    std::string registryProblem; ///< In words; empty where the key is absent or sound.
    std::wstring registeredLocation;

    std::wstring serverDirectory; ///< Empty where it was not found.

    std::wstring compatibilityFile; ///< Empty where it was not found.
    std::string compatibilityError; ///< In words.
    EntryFacts entries;

    std::wstring modulePath;
    std::optional<Ids::ModulePathDefect> modulePathDefect;
    ModuleFacts module;

    std::optional<SignatureFacts> signature;
    unsigned long lockError = 0;
    bool accepted = false; ///< Whether the library's own check would go on to load the module.

    std::optional<LoadOutcome> load;
};

/// The first failure of a start, and what to do about it.
Verdict Diagnose(const StartFacts& facts);

/// The part of it from the module's file on.
std::optional<Verdict> DiagnoseModule(const StartFacts& facts);

} // namespace Orlindex::Doctor

#endif
