#include "process/ServerEnvironment.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include <windows.h>

#include "platform/Folders.h"

namespace Kestrany::Simulator {

namespace {

struct BlockFreer
{
    void operator()(wchar_t* block) const { FreeEnvironmentStringsW(block); }
};

bool NamesPath(const std::wstring& variable)
{
    const wchar_t* const names[] = {SettingsFolderVariable, ScenarioVariable};
    return std::any_of(std::begin(names), std::end(names), [&](const wchar_t* name) {
        return CompareStringOrdinal(variable.c_str(), -1, name, -1, TRUE) == CSTR_EQUAL;
    });
}

} // namespace

std::wstring ServerEnvironment()
{
    const std::unique_ptr<wchar_t, BlockFreer> own(GetEnvironmentStringsW());
    std::wstring block;
    // Texts with a zero each, and one more at the end.
    for (const wchar_t* next = own.get(); next != nullptr && *next != L'\0';)
    {
        std::wstring entry = next;
        next += entry.size() + 1;
        // Names that begin with the separator are the system's own.
        const std::size_t separator = entry.find(L'=', 1);
        if (separator + 1 < entry.size() && NamesPath(entry.substr(0, separator)))
            entry = entry.substr(0, separator + 1) + FullPath(entry.substr(separator + 1));
        block += entry;
        block += L'\0';
    }
    block += L'\0';
    return block;
}

} // namespace Kestrany::Simulator
