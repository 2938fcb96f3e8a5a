#ifndef ORLINDEX_PLUGIN_TESTPLUGINCONTROL_H
#define ORLINDEX_PLUGIN_TESTPLUGINCONTROL_H

#include <cstdint>

#include "Slots.h"

namespace OrlindexTest {

/// Called inside an operation of the test plugin, after it was recorded and with no lock of the plugin held.
/// `arguments` holds the operation's arguments in order, each widened to 64 bits.
using OperationHook = void (*)(void* context, const std::uint64_t* arguments, int count);

/// How a test controls the plugin and reads what the library did to it. Every function may be called on any thread.
struct TestPluginControl
{
    int (*JournalSize)();
    /// UTF-8: `<interface>::<operation>(<arguments>)`. Valid until ClearJournal.
    const char* (*JournalEntry)(int index);
    void (*ClearJournal)();
    /// What the operation returns from now on; pointers as numbers. Until then a status is IdSuccess and all else 0 or
    /// null.
    void (*SetResult)(const PluginOperation& operation, std::int64_t result);
    /// What it returns now if that was set, else 0. The plugin's own objects are set from the start.
    std::int64_t (*Result)(const PluginOperation& operation);
    /// A null `hook` removes the one that was set.
    void (*SetHook)(const PluginOperation& operation, OperationHook hook, void* context);
    /// Whose rules for classes and exceptions the plugin follows: CompilerRules of its build.
    const char* compilerRules;
};

/// Two modules with the same rules can exchange exceptions and objects of the standard library.
#if defined(_MSC_VER)
inline constexpr char CompilerRules[] = "Microsoft";
#else
inline constexpr char CompilerRules[] = "mingw-w64";
#endif

/// Name of the function that the plugin exports: `const TestPluginControl* GetTestPluginControl()`.
inline constexpr char TestPluginControlSymbol[] = "GetTestPluginControl";

} // namespace OrlindexTest

#endif
