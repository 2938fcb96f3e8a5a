#include "identity/simulated/ScenarioFile.h"

#include <windows.h>

#include "identity/simulated/Scenario.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Folders.h"

namespace Kestrany::Agent::Simulated {

namespace {

constexpr wchar_t FileName[] = L"Pellwick.scenario.json";
constexpr std::size_t MaxFile = 1024 * 1024;

bool Exists(const std::wstring& file)
{
    const DWORD attributes = GetFileAttributesW(file.c_str());
    // A file that exists but cannot be accessed counts: reading it then reports the error.
    return attributes != INVALID_FILE_ATTRIBUTES ||
           (GetLastError() != ERROR_FILE_NOT_FOUND && GetLastError() != ERROR_PATH_NOT_FOUND);
}

} // namespace

ScenarioChoice ChooseScenario()
{
    // A named file must exist; the one beside the executable is optional.
    if (const std::wstring named = EnvironmentText(ScenarioVariable); !named.empty())
        return LoadScenario(named);
    if (const std::wstring beside = FileBesideExecutable(FileName); Exists(beside))
        return LoadScenario(beside);
    return {Scenario(), {}, {}};
}

ScenarioChoice LoadScenario(const std::wstring& file)
{
    ScenarioChoice choice;
    choice.file = file;
    const FileContents contents = ReadFileContents(file, MaxFile);
    if (contents.IsRead())
        choice.scenario = ReadScenario(contents.bytes, Narrow(file), choice.problem);
    else if (contents.error == ERROR_FILE_TOO_LARGE)
        choice.problem = Narrow(file) + ": larger than 1 MiB, which is the most that a scenario may have";
    else
        choice.problem = Narrow(file) + ": cannot be read: " + SystemMessage(contents.error);
    return choice;
}

} // namespace Kestrany::Agent::Simulated
