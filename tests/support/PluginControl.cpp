#include "PluginControl.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <stdexcept>

#include <windows.h>

#include "Text.h"

namespace OrlindexTest {

namespace {

const TestPluginControl* LoadControl(const std::filesystem::path& file)
{
    // With the altered search path the system finds a library beside the plugin, as it does when Orlindex.dll loads it.
    const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module == nullptr)
        throw std::runtime_error("cannot load " + Utf8(file) + ": error " + std::to_string(GetLastError()));
    using GetControl = const TestPluginControl* (*)();
    const auto symbol = reinterpret_cast<void (*)()>(GetProcAddress(module, TestPluginControlSymbol));
    if (symbol == nullptr)
        throw std::runtime_error(Utf8(file) + " is no build of the test plugin");
    return reinterpret_cast<GetControl>(symbol)();
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

LogLine ParseLogLine(const std::string& entry)
{
    const std::size_t first = entry.find('"') + 1;
    const std::size_t last = entry.rfind("\", ");
    return {std::stoi(entry.substr(last + 3)), entry.substr(first, last - first)};
}

const std::string& LogPrefix()
{
    static const std::string prefix = FullName(Logger::Log) + '(';
    return prefix;
}

} // namespace

void PrintTo(const LogLine& line, std::ostream* stream)
{
    *stream << line.level << " \"" << line.text << '"';
}

PluginControl::PluginControl(const std::filesystem::path& file) : control_(LoadControl(file)) {}

PluginControl::~PluginControl()
{
    for (const Hook& hook : hooks_)
        control_->SetHook(hook.operation, nullptr, nullptr);
}

bool PluginControl::IsOfThisCompiler() const
{
    return std::strcmp(control_->compilerRules, CompilerRules) == 0;
}

void PluginControl::Return(const PluginOperation& operation, std::int64_t result)
{
    control_->SetResult(operation, result);
}

std::int64_t PluginControl::ResultOf(const PluginOperation& operation) const
{
    return control_->Result(operation);
}

void PluginControl::OnCall(const PluginOperation& operation, Action action)
{
    hooks_.push_back({operation, std::move(action)});
    control_->SetHook(operation, &PluginControl::Run, &hooks_.back());
}

void PluginControl::Run(void* context, const std::uint64_t* arguments, int count)
{
    static_cast<Hook*>(context)->action(CallArguments(arguments, count));
}

std::vector<std::string> PluginControl::Journal() const
{
    std::vector<std::string> journal;
    for (int i = 0, size = control_->JournalSize(); i < size; ++i)
        journal.emplace_back(control_->JournalEntry(i));
    return journal;
}

std::vector<std::string> PluginControl::Calls() const
{
    std::vector<std::string> calls = Journal();
    calls.erase(std::remove_if(calls.begin(), calls.end(),
                               [](const std::string& entry) { return StartsWith(entry, LogPrefix()); }),
                calls.end());
    return calls;
}

std::vector<std::string> PluginControl::EntriesThatStartWith(const std::string& start) const
{
    std::vector<std::string> entries;
    for (const std::string& entry : Journal())
        if (StartsWith(entry, start))
            entries.push_back(entry);
    return entries;
}

std::vector<std::string> PluginControl::Calls(const char* interfaceName) const
{
    return EntriesThatStartWith(interfaceName + std::string("::"));
}

std::vector<std::string> PluginControl::Calls(const PluginOperation& operation) const
{
    return EntriesThatStartWith(FullName(operation) + '(');
}

std::vector<LogLine> PluginControl::Log() const
{
    std::vector<LogLine> log;
    for (const std::string& entry : EntriesThatStartWith(LogPrefix()))
        log.push_back(ParseLogLine(entry));
    return log;
}

void PluginControl::ClearJournal()
{
    control_->ClearJournal();
}

bool IsLoaded(const std::filesystem::path& file)
{
    return GetModuleHandleW(file.c_str()) != nullptr;
}

std::string Call(const PluginOperation& operation, const std::string& arguments)
{
    return FullName(operation) + '(' + arguments + ')';
}

std::string ArgumentsOf(const std::string& journalEntry)
{
    const std::size_t first = journalEntry.find('(') + 1;
    return journalEntry.substr(first, journalEntry.rfind(')') - first);
}

} // namespace OrlindexTest
