#include "StartUpRecorder.h"

#include <boost/filesystem/path.hpp>

#include "FileAccess.h"
#include "ModuleFile.h"
#include "Texts.h"
#include "base/Text.h"
#include "locate/Registry.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

/// The view of hosts of the tool's kind. In a 32-bit host under 64-bit Windows the library reads both views.
constexpr const char* registryView = ToolMachine == Machine::X64 ? "64-bit view" : "32-bit view, else the 64-bit one";

/// Findings of one search: a hostile file can name millions of directories.
constexpr std::size_t mostDirectories = 100;

Mark MarkOf(DirectoryState state)
{
    return state == DirectoryState::Holds ? Mark::Ok : Mark::Info;
}

Finding DirectoryFinding(const SearchDirectory& directory, DirectoryState state, const std::string& fileName)
{
    return {MarkOf(state),    "directory", OriginText(directory.origin), Narrow(directory.path),
            StateName(state), "",          StateText(state, fileName)};
}

/// What is wrong with a registry key; empty if nothing is. A subkey may lack the value Location.
std::string RegistryProblem(const RegistryKeyFinding& finding)
{
    if (finding.opened != ERROR_SUCCESS)
        return "cannot be opened: " + ErrorText(static_cast<unsigned long>(finding.opened));
    if (!finding.read)
        return {};
    switch (*finding.read)
    {
    case ERROR_SUCCESS:
        return finding.location.value_or(L"").empty() ? "its value Location is empty" : "";
    case ERROR_FILE_NOT_FOUND:
        return {};
    case ERROR_MORE_DATA:
        return "its value Location is too long";
    case ERROR_DATATYPE_MISMATCH:
        return "its value Location is no text";
    default:
        return "its value Location cannot be read: " + ErrorText(static_cast<unsigned long>(*finding.read));
    }
}

} // namespace

void StartUpRecorder::AddDirectories(StartUpFile file, const SearchResult& result, Mark notFound)
{
    const std::string fileName = Narrow(result.fileName);
    std::size_t shown = 0;
    std::size_t hidden = 0;
    for (std::size_t index = 0; index < result.directories.size(); ++index)
    {
        const DirectoryState state = result.StateOf(index);
        if (shown >= mostDirectories && state != DirectoryState::Holds)
        {
            ++hidden;
            continue;
        }
        ++shown;
        report_.Add(DirectoryFinding(result.directories[index], state, fileName));
    }
    if (hidden > 0)
        report_.Add({Mark::Info, "directory", "further directories", std::to_string(hidden), "not-shown", "",
                     "more, of " + std::to_string(result.directories.size()) + " in all", result.directories.size()});
    if (result.found.empty())
        report_.Add({notFound, "file", FileTitle(file), "", "not-found", "",
                     result.directories.empty() ? "no directory to search" : "no directory holds " + fileName});
    else
        report_.Add({Mark::Ok, "file", FileTitle(file), Narrow(result.found), "found", "", ""});
}

void StartUpRecorder::OnSearch(StartUpFile file, const SearchResult& result)
{
    switch (file)
    {
    case StartUpFile::ClientConfig:
        report_.Begin(StepId::ClientConfig);
        facts_.clientConfigFile = result.found;
        AddDirectories(file, result, Mark::Info); // It is optional.
        break;
    case StartUpFile::ServerApplication:
        if (serverApplicationSearched_)
        {
            registry_.clear();
            break;
        }
        serverApplicationSearched_ = true;
        FlushRegistry();
        report_.Begin(StepId::ServerApplication);
        facts_.serverDirectory = ParentPath(result.found);
        AddDirectories(file, result, Mark::Failed);
        break;
    case StartUpFile::VersionCompatibility:
        report_.Begin(StepId::CompatibilityFile);
        facts_.compatibilityFile = result.found;
        // The start-up searches the server application's directory, and then the one that the client config file names.
        // Only the second search fails the step.
        AddDirectories(file, result,
                       result.directories.empty() || result.directories.front().origin == DirectoryOrigin::ClientConfig
                           ? Mark::Failed
                           : Mark::Info);
        break;
    }
}

void StartUpRecorder::OnJsonFile(const JsonFileFinding& finding)
{
    const bool config = finding.file == StartUpFile::ClientConfig;
    report_.Begin(config ? StepId::ClientConfig : StepId::CompatibilityFile);
    if (config && facts_.clientConfigFile.empty())
        TakeFromCurrentDirectory(finding.path);
    Finding line = {Mark::Ok, "file", "contents", "JSON", "read", Narrow(finding.path), ""};
    if (config)
        line.source = Narrow(facts_.clientConfigFile);
    if (finding.readError != ERROR_SUCCESS)
    {
        line.result = "unreadable";
        line.note = "cannot be read: " + ErrorText(finding.readError);
    }
    else if (finding.parseError)
    {
        line.result = "invalid";
        line.note = "no JSON, " + JsonErrorText(*finding.parseError);
    }
    if (!line.note.empty())
    {
        line.value.clear();
        line.mark = config ? Mark::Warning : Mark::Failed; // A start-up goes on without a client config file.
        (config ? facts_.clientConfigError : facts_.compatibilityError) = line.note;
    }
    report_.Add(std::move(line));
}

/// No searched folder holds a client config file, so the start-up reads the one in the current directory.
void StartUpRecorder::TakeFromCurrentDirectory(const std::wstring& name)
{
    facts_.clientConfigFile = FullPath(name);
    report_.Add({Mark::Warning, "file", FileTitle(StartUpFile::ClientConfig), Narrow(facts_.clientConfigFile), "found",
                 "current directory", "taken from the current directory: a host that runs in another one does not"});
}

void StartUpRecorder::OnSetting(const SettingFinding& finding)
{
    Finding line = {Mark::Ok, "setting", finding.key, Narrow(finding.value), "set", "", ""};
    line.source = Narrow(facts_.clientConfigFile) + ", key " + finding.key;
    if (finding.state == SettingState::Missing)
    {
        line.mark = finding.key == "ssoServer" ? Mark::Warning : Mark::Info;
        line.result = "default";
        line.source = "default";
        line.note = finding.value.empty() ? "not set" : "";
    }
    else if (finding.state == SettingState::WrongType)
    {
        line.mark = Mark::Warning;
        line.result = "wrong-type";
        line.note = "has another type than it should, and is ignored";
    }
    else if (finding.value.empty())
        line.note = finding.key == "ssoServer" ? "present" : "empty";
    registry_.clear(); // A path variable in a setting made the start-up search early; it searches again later.
    report_.Begin(StepId::ClientConfig);
    report_.Add(std::move(line));
}

void StartUpRecorder::OnRegistryKey(const RegistryKeyFinding& finding)
{
    const bool top = finding.key == ServerApplicationKey;
    const std::string key = Narrow(top ? finding.key : ServerApplicationKey + (L'\\' + finding.key));
    const std::string problem = RegistryProblem(finding);
    Finding line = {Mark::Ok,
                    "registry",
                    top ? "key" : "version " + Narrow(finding.key),
                    Narrow(finding.location.value_or(L"")),
                    "location",
                    key + ", value Location, " + registryView,
                    ""};
    if (top && finding.opened == ERROR_FILE_NOT_FOUND)
    {
        line.mark = Mark::Info;
        line.result = "absent";
        line.note = "the key is absent: " + ErrorText(ERROR_FILE_NOT_FOUND);
    }
    else if (!problem.empty())
    {
        line.mark = Mark::Warning;
        line.result = "unusable";
        line.note = problem;
        registryProblem_ = key + ": " + problem;
    }
    else if (!finding.read || *finding.read != ERROR_SUCCESS)
    {
        line.mark = Mark::Info;
        line.result = "no-location";
        line.note = "has no value Location";
        if (top && registryProblem_.empty())
            registryProblem_ = key + ": neither it nor a version below it has a value Location";
    }
    registry_.push_back(std::move(line));
}

void StartUpRecorder::OnRegistryChoice(const std::wstring& key, const std::wstring& location)
{
    registeredLocation_ = location;
    registry_.push_back({location.empty() ? Mark::Warning : Mark::Ok, "registry", "location", Narrow(location),
                         "chosen", Narrow(key) + ", value Location, " + registryView, "the one that counts"});
}

void StartUpRecorder::FlushRegistry()
{
    report_.Begin(StepId::Registry);
    for (Finding& line : registry_)
        report_.Add(std::move(line));
    registry_.clear();
    facts_.registryProblem = registeredLocation_.empty() ? registryProblem_ : "";
    facts_.registeredLocation = registeredLocation_;
}

void StartUpRecorder::OnCompatibilityEntry(const EntryFinding& finding)
{
    entries_.Add(finding);
}

void StartUpRecorder::FinishEntries()
{
    entries_.Finish();
}

void StartUpRecorder::OnModulePath(const std::wstring& path, std::optional<ModulePathDefect> defect)
{
    entries_.Finish(); // The start-up chose an entry, so no other follows.
    facts_.modulePath = path;
    facts_.modulePathDefect = defect;
    if (path.empty())
        return; // No entry was chosen, which the entries' findings say.
    report_.Begin(StepId::ModuleFile);
    InspectModuleFile(path, report_, facts_.module);
    if (boost::filesystem::path(path).is_relative())
        report_.Add({Mark::Warning, "file", "path", Narrow(path), "relative", "",
                     "relative to the current directory: a host that runs in another one looks there"});
    if (defect && facts_.module.exists)
        report_.Add({Mark::Failed, "file", "path", Narrow(path), "refused", "",
                     std::string("refused, ") + PathDefectText(*defect)});
}

void StartUpRecorder::OnSignature(const SignatureFinding& finding)
{
    const SignatureVerification& verification = finding.verification;
    facts_.signature = {verification.result, verification.platformResult, {}};
    if (verification.platformResult)
        facts_.signature->signers = DescribeSigners(finding.file, TrustedSigners());
    report_.Begin(StepId::Signature);
    AddSignature(report_, *facts_.signature);
}

void StartUpRecorder::OnLoadStep(const LoadFinding& finding)
{
    if (finding.step != LoadStep::LockFile)
        return; // OnModulePath and OnSignature report the other steps that run without a load.
    facts_.lockError = finding.error;
    Finding line = {Mark::Ok, "file", "kept from changing", "yes", "held", "", ""};
    if (finding.state == LoadState::Failed)
        line = {Mark::Failed, "file", "kept from changing", "", "in-use", "", ErrorText(finding.error)};
    report_.Add(std::move(line));
}

} // namespace Orlindex::Doctor
