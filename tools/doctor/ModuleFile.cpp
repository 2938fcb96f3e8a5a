#include "ModuleFile.h"

#include <boost/algorithm/string/predicate.hpp>
#include <locale>
#include <optional>
#include <string_view>
#include <windows.h>

#include "MappedFile.h"
#include "PeFile.h"
#include "VersionRecord.h"
#include "Words.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "base/Text.h"
#include "load/PluginLoader.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

constexpr std::size_t mostLibraries = 1000;

std::string MachineWords(const PeFile& module)
{
    switch (module.Machine())
    {
    case PeFile::MachineX64:
        return "64-bit x86";
    case PeFile::MachineX86:
        return "32-bit x86";
    default:
        return "machine type " + std::to_string(module.Machine());
    }
}

/// One whose header contradicts itself is for no machine.
Machine MachineOf(const PeFile& module)
{
    if (module.Machine() == PeFile::MachineX64 && module.Is64Bit())
        return Machine::X64;
    if (module.Machine() == PeFile::MachineX86 && !module.Is64Bit())
        return Machine::X86;
    return Machine::Other;
}

void AddFormat(const PeFile& module, Report& report, ModuleFacts& facts)
{
    facts.dll = module.IsDll();
    facts.machine = MachineOf(module);
    const std::string kind = MachineWords(module) + (module.IsDll() ? " DLL" : " program");
    if (facts.dll && facts.machine == facts.wanted)
        report.Add({Mark::Ok, "module", "format", kind, facts.machine == Machine::X64 ? "x64-dll" : "x86-dll", "", ""});
    else
        report.Add({Mark::Failed, "module", "format", kind, facts.dll ? "other-machine" : "no-dll", "",
                    std::string("a ") + BitsWords(facts.wanted) + " host cannot load it"});
}

void AddFactorySymbol(const PeFile& module, Report& report, ModuleFacts& facts)
{
    facts.factorySymbol = module.Exports(PluginFactoryName());
    if (facts.factorySymbol)
    {
        report.Add({Mark::Ok, "module", "factory function", PluginFactoryName(), "exported", "export table", ""});
        return;
    }
    std::string names;
    for (const std::string& name : module.ExportedNames(5))
        names += (names.empty() ? "" : ", ") + name;
    report.Add({Mark::Failed, "module", "factory function", PluginFactoryName(), "missing", "export table",
                names.empty() ? "not exported; the module exports no name" : "not exported; exported are " + names});
}

void AddVersionRecord(const PeFile& module, Report& report)
{
    const std::optional<VersionRecord> record = ReadVersionRecord(module);
    if (!record)
    {
        report.Add({Mark::Info, "version", "version record", "", "missing", "", "the file has none that can be read"});
        return;
    }
    std::string note = record->description;
    if (!record->company.empty())
        note += (note.empty() ? "" : ", ") + record->company;
    report.Add({Mark::Info, "version", "version record", record->fileVersion, "read", "", note});
}

bool LiesBeside(const std::wstring& library, const std::wstring& modulePath, const std::wstring& hostDirectory)
{
    return PathExists(JoinPath(ParentPath(modulePath), library)) || PathExists(JoinPath(hostDirectory, library));
}

/// Such a name stands for a set of functions. The system resolves it itself, in any letter case.
bool IsApiSet(const std::wstring& library)
{
    return boost::algorithm::istarts_with(library, L"api-ms-", std::locale::classic()) ||
           boost::algorithm::istarts_with(library, L"ext-ms-", std::locale::classic());
}

/// Whether the system itself brings a library, or finds it by the path.
bool IsSystems(const std::wstring& library)
{
    wchar_t found[MAX_PATH] = {};
    return IsApiSet(library) || GetModuleHandleW(library.c_str()) != nullptr ||
           SearchPathW(nullptr, library.c_str(), nullptr, MAX_PATH, found, nullptr) != 0;
}

/// The libraries that a module names and that `matches`.
template <class Condition>
std::vector<std::string> FindLibraries(const std::wstring& path, const Condition& matches)
{
    std::vector<std::string> libraries;
    const MappedFile file(path);
    const std::optional<PeFile> module = PeFile::Read(file.Bytes());
    if (!module)
        return libraries;
    for (const std::string& name : module->ImportedLibraries(mostLibraries))
    {
        const std::wstring library = Widen(name);
        if (matches(library))
            libraries.push_back(Narrow(library)); // Whatever the file holds, it is UTF-8 now.
    }
    return libraries;
}

void AddUnreadable(const std::string& name, const std::wstring& path, Report& report, const ModuleFacts& facts)
{
    report.Add(
        {Mark::Failed, "file", name, Narrow(path), "unreadable", "", "cannot be read: " + ErrorWords(facts.readError)});
}

/// Takes a file's reading and format down.
std::optional<PeFile> ReadFormat(const MappedFile& file, Report& report, ModuleFacts& facts)
{
    const std::optional<PeFile> module = PeFile::Read(file.Bytes());
    facts.module = module.has_value();
    if (module)
        AddFormat(*module, report, facts);
    else
        report.Add({Mark::Failed, "module", "format", "", "no-module", "", "no Windows module"});
    return module;
}

} // namespace

void InspectModuleFile(const std::wstring& path, Report& report, ModuleFacts& facts)
{
    facts.exists = PathExists(path);
    if (!facts.exists)
    {
        report.Add({Mark::Failed, "file", "plugin module", Narrow(path), "missing", "", "not there"});
        return;
    }
    const MappedFile file(path);
    facts.readError = file.Error();
    facts.readable = facts.readError == ERROR_SUCCESS;
    if (!facts.readable)
    {
        AddUnreadable("plugin module", path, report, facts);
        return;
    }
    report.Add(
        {Mark::Ok, "file", "plugin module", Narrow(path), "read", "", std::to_string(file.Bytes().size()) + " bytes"});
    const std::optional<PeFile> module = ReadFormat(file, report, facts);
    if (!module)
        return;
    AddFactorySymbol(*module, report, facts);
    AddVersionRecord(*module, report);
}

void InspectLibraryFile(const std::wstring& path, Report& report, ModuleFacts& facts)
{
    facts.exists = true;
    const MappedFile file(path);
    facts.readError = file.Error();
    facts.readable = facts.readError == ERROR_SUCCESS;
    if (facts.readable)
        ReadFormat(file, report, facts);
    else
        AddUnreadable("library", path, report, facts);
}

std::vector<std::string> FindMissingLibraries(const std::wstring& path, const std::wstring& hostDirectory)
{
    return FindLibraries(path, [&](const std::wstring& library) {
        return !LiesBeside(library, path, hostDirectory) && !IsSystems(library);
    });
}

std::vector<std::string> FindLibrariesOfTool(const std::wstring& path, const std::wstring& hostDirectory)
{
    const std::wstring toolDirectory = GetExeDirPath();
    return FindLibraries(path, [&](const std::wstring& library) {
        return !LiesBeside(library, path, hostDirectory) && PathExists(JoinPath(toolDirectory, library));
    });
}

} // namespace Orlindex::Doctor
