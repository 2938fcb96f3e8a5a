#ifndef ORLINDEX_SUPPORT_PLUGINCONTROL_H
#define ORLINDEX_SUPPORT_PLUGINCONTROL_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "plugin/TestPluginControl.h"

namespace OrlindexTest {

/// Arguments of an operation while it runs.
class CallArguments
{
public:
    CallArguments(const std::uint64_t* bits, int count) : bits_(bits, bits + count) {}

    std::uint64_t Number(std::size_t index) const { return bits_.at(index); }

    template <typename Target>
    Target* Pointer(std::size_t index) const
    {
        return reinterpret_cast<Target*>(static_cast<std::uintptr_t>(bits_.at(index)));
    }

private:
    std::vector<std::uint64_t> bits_;
};

struct LogLine
{
    int level;
    std::string text;

    bool operator==(const LogLine& other) const { return level == other.level && text == other.text; }
};

void PrintTo(const LogLine& line, std::ostream* stream);

/// Controls one build of the test plugin and reads its journal. Loads the file, so that a test can set results before
/// the library loads it; the library still verifies the file's signature.
class PluginControl
{
public:
    using Action = std::function<void(const CallArguments&)>;

    explicit PluginControl(const std::filesystem::path& file);
    ~PluginControl();
    PluginControl(const PluginControl&) = delete;
    PluginControl& operator=(const PluginControl&) = delete;

    /// What the operation returns from now on. A reference to a plugin's object is a number too; 0 is null.
    void Return(const PluginOperation& operation, std::int64_t result);
    /// What it returns now if that was set; the plugin's own objects are set from the start.
    std::int64_t ResultOf(const PluginOperation& operation) const;
    /// What the operation does from now on, on its caller's thread, before it returns.
    void OnCall(const PluginOperation& operation, Action action);

    /// Whether the compiler of this program built the plugin, too.
    bool IsOfThisCompiler() const;

    /// All calls except those of the logger, in order.
    std::vector<std::string> Calls() const;
    /// The calls of one interface, in order.
    std::vector<std::string> Calls(const char* interfaceName) const;
    /// The calls of one operation, in order.
    std::vector<std::string> Calls(const PluginOperation& operation) const;
    /// What the plugin's logger received, in order.
    std::vector<LogLine> Log() const;
    void ClearJournal();

private:
    struct Hook
    {
        PluginOperation operation;
        Action action;
    };

    static void Run(void* context, const std::uint64_t* arguments, int count);
    std::vector<std::string> Journal() const;
    std::vector<std::string> EntriesThatStartWith(const std::string& start) const;

    const TestPluginControl* control_;
    std::list<Hook> hooks_; // A list: the plugin holds pointers to the elements.
};

/// Whether a module file is loaded in this process.
bool IsLoaded(const std::filesystem::path& file);

/// A pointer as the journal shows it.
inline std::string Address(const void* pointer)
{
    return '@' + std::to_string(reinterpret_cast<std::uintptr_t>(pointer));
}

/// A journal entry.
std::string Call(const PluginOperation& operation, const std::string& arguments = {});
/// The arguments in a journal entry.
std::string ArgumentsOf(const std::string& journalEntry);

} // namespace OrlindexTest

#endif
