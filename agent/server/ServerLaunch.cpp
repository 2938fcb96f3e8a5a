#include "server/ServerLaunch.h"

#include <map>
#include <memory>

#include <windows.h>

#include "platform/Folders.h"

namespace Kestrany::Agent {

namespace {

/// Within quotes, backslashes are escapes only where a quote follows them.
std::wstring Quoted(const std::wstring& text)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : text)
    {
        if (character == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L"\"";
}

struct BlockFreer
{
    void operator()(wchar_t* block) const { FreeEnvironmentStringsW(block); }
};

struct Less
{
    bool operator()(const std::wstring& left, const std::wstring& right) const
    {
        return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    }
};

/// Values by name, in the order of an environment block.
using Variables = std::map<std::wstring, std::wstring, Less>;

Variables OwnVariables()
{
    const std::unique_ptr<wchar_t, BlockFreer> own(GetEnvironmentStringsW());
    Variables variables;
    // Zero-terminated texts, and one more zero at the end.
    for (const wchar_t* next = own.get(); next != nullptr && *next != L'\0';)
    {
        const std::wstring entry = next;
        next += entry.size() + 1;
        // Entries that begin with "=" are the system's own.
        if (const std::size_t separator = entry.find(L'=', 1); separator != std::wstring::npos)
            variables.emplace(entry.substr(0, separator), entry.substr(separator + 1));
    }
    return variables;
}

} // namespace

std::wstring JoinCommandLine(const std::vector<std::wstring>& texts)
{
    std::wstring line;
    for (const std::wstring& text : texts)
        line += (line.empty() ? L"" : L" ") + Quoted(text);
    return line;
}

std::wstring ServerEnvironment()
{
    Variables variables = OwnVariables();
    if (const auto scenario = variables.find(ScenarioVariable); scenario != variables.end())
        scenario->second = FullPath(scenario->second);
    // The folder that names this process's kernel objects, even if the variable has changed since.
    if (!SettingsFolder().empty())
        variables[SettingsFolderVariable] = SettingsFolder();
    std::wstring block;
    for (const auto& [name, value] : variables)
        block.append(name).append(1, L'=').append(value).append(1, L'\0');
    block += L'\0';
    return block;
}

} // namespace Kestrany::Agent
