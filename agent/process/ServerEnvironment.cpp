#include "process/ServerEnvironment.h"

#include <map>
#include <memory>
#include <string>

#include <windows.h>

#include "platform/Folders.h"

namespace Kestrany::Agent {

namespace {

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

/// Values by name, in the order that a block has.
using Variables = std::map<std::wstring, std::wstring, Less>;

Variables OwnVariables()
{
    const std::unique_ptr<wchar_t, BlockFreer> own(GetEnvironmentStringsW());
    Variables variables;
    // Texts with a zero each, and one more at the end.
    for (const wchar_t* next = own.get(); next != nullptr && *next != L'\0';)
    {
        const std::wstring entry = next;
        next += entry.size() + 1;
        // Names that begin with the separator are the system's own.
        if (const std::size_t separator = entry.find(L'=', 1); separator != std::wstring::npos)
            variables.emplace(entry.substr(0, separator), entry.substr(separator + 1));
    }
    return variables;
}

} // namespace

std::wstring ServerEnvironment()
{
    Variables variables = OwnVariables();
    if (const auto scenario = variables.find(ScenarioVariable); scenario != variables.end())
        scenario->second = FullPath(scenario->second);
    // What the objects of this process are named by, whatever the variable says by now.
    if (!SettingsFolder().empty())
        variables[SettingsFolderVariable] = SettingsFolder();
    std::wstring block;
    for (const auto& [name, value] : variables)
        block += name + L'=' + value + L'\0';
    block += L'\0';
    return block;
}

} // namespace Kestrany::Agent
