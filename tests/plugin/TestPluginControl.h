#ifndef ORLINDEX_PLUGIN_TESTPLUGINCONTROL_H
#define ORLINDEX_PLUGIN_TESTPLUGINCONTROL_H

#include <cstdint>

namespace OrlindexTest {

/// Called inside an operation of the test plugin, after it was noted and with no lock of the plugin held. `arguments`
/// holds the operation's arguments in order, each widened to 64 bits.
using OperationHook = void (*)(void* context, const std::uint64_t* arguments, int count);

/// How a test steers the plugin and reads what the library did to it. An operation is named by its interface and its
/// slot. Every function may be called on any thread.
struct TestPluginControl
{
    int (*JournalSize)();
    /// UTF-8: `<interface> <slot> (<arguments>)`. Valid until ClearJournal.
    const char* (*JournalEntry)(int index);
    void (*ClearJournal)();
    /// What the operation answers from now on; pointers as numbers. Without it a status is 1000 and all else 0 or null.
    void (*SetResult)(const char* interfaceName, int slot, std::int64_t result);
    /// What it answers now, if that was set; else 0. The plugin's own objects are set from the start.
    std::int64_t (*Result)(const char* interfaceName, int slot);
    /// A null `hook` removes the one that was set.
    void (*SetHook)(const char* interfaceName, int slot, OperationHook hook, void* context);
};

/// Name of the function that the plugin exports: `const TestPluginControl* GetTestPluginControl()`.
inline constexpr char TestPluginControlSymbol[] = "GetTestPluginControl";

/// Interface names in the journal.
inline constexpr char FactoryFunction[] = "GetSSOClientFactory"; ///< The exported function itself; slot 0.
inline constexpr char Factory[] = "ISSOClientFactory";
inline constexpr char LoggerSource[] = "IPluginLoggerSource";
inline constexpr char Logger[] = "IPluginLogger";
inline constexpr char Module[] = "ISSOClientModule";
inline constexpr char Client[] = "ISSOClient";
inline constexpr char Private[] = "ISSOClientPrivate";
inline constexpr char ServerManager[] = "ISSOServerManager";

} // namespace OrlindexTest

#endif
