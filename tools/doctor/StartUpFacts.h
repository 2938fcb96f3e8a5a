#ifndef ORLINDEX_DOCTOR_STARTUPFACTS_H
#define ORLINDEX_DOCTOR_STARTUPFACTS_H

#include <optional>
#include <string>
#include <vector>

#include "ModuleFile.h"
#include "Report.h"
#include "load/signature/SignatureInfo.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

namespace Ids = Kestrany::IdentityServices;

/// How the load of the plugin in a separate process went.
struct LoadOutcome
{
    enum class End
    {
        Regular, ///< The process reported the end of the load.
        Ended,   ///< The process ended before the load.
        Hung,    ///< The time-out passed.
        CutOff   ///< The process wrote more messages than the tool reads, and was ended.
    };

    End end = End::Regular;
    bool loaded = false;
    bool libraryBegun = false; ///< The load ended while the host's library was being loaded.
    unsigned long libraryError = 0;
    unsigned long processExitCode = 0;
    unsigned timeoutSeconds = 0;
    std::optional<Ids::LoadStep> begun;        ///< The step during which the load ended.
    std::optional<Ids::LoadFinding> failure;   ///< The step that failed.
    std::optional<std::wstring> exception;     ///< What the plugin threw.
    bool clientModule = false;                 ///< Whether the factory has an ISSOClientModule.
    std::vector<std::string> missingLibraries; ///< Those that the module imports.
};

/// Whether the host's library trusts the same root and signers as this tool, by its version record.
enum class LibraryTrust
{
    NotSaid,
    Same,
    Other
};

/// The verification of the module's signature, and what the platform knows about the signers.
struct SignatureFacts
{
    Ids::BinaryTrustResult result = Ids::BinaryTrustResult::UnknownError;
    std::optional<LONG> platformResult; ///< Of WinVerifyTrust; nullopt if it was not called.
    std::vector<Ids::SignerInfo> signers;
};

/// The elements of a version compatibility file.
struct EntryFacts
{
    std::size_t defective = 0;
    std::size_t valid = 0;
    std::optional<Ids::EntryFinding> firstDefective;
    std::vector<Ids::EntryFinding> firstValid;
};

/// What a start-up found, as far as the diagnosis depends on it. Texts are UTF-8.
struct StartUpFacts
{
    bool localSystem = false;

    std::wstring hostDirectory;
    ModuleFacts library; ///< Orlindex.dll in the host's folder.
    LibraryTrust libraryTrust = LibraryTrust::NotSaid;
    std::vector<std::string> libraryNeeds; ///< If it does not load: the libraries it imports that are not found.

    std::wstring clientConfigFile; ///< Empty if there is none.
    std::string clientConfigError; ///< Empty if the file could be read.

    std::string registryProblem; ///< Empty if the key is absent or usable.
    std::wstring registeredLocation;

    std::wstring serverDirectory; ///< Empty if it was not found.

    std::wstring compatibilityFile; ///< Empty if it was not found.
    std::string compatibilityError; ///< Empty if the file could be read.
    EntryFacts entries;

    std::wstring modulePath;
    std::optional<Ids::ModulePathDefect> modulePathDefect;
    ModuleFacts module;

    std::optional<SignatureFacts> signature;
    unsigned long lockError = 0;
    bool accepted = false; ///< Whether the library's own checks let the module be loaded.

    std::optional<LoadOutcome> load;
};

/// The first failure of a start-up, and what to do about it; ExitCode::Starts if nothing failed.
Diagnosis Diagnose(const StartUpFacts& facts);

/// The same from the step StepId::ModuleFile on; nullopt if nothing failed.
std::optional<Diagnosis> DiagnoseModule(const StartUpFacts& facts);

} // namespace Orlindex::Doctor

#endif
