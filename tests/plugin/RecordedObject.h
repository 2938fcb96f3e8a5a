#ifndef ORLINDEX_PLUGIN_RECORDEDOBJECT_H
#define ORLINDEX_PLUGIN_RECORDEDOBJECT_H

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>

#include "Recorder.h"
#include "orlindex/IdErrorCode.h"

namespace OrlindexTest {

/// UTF-8 in quotes, or `null`.
std::string Shown(const char* text);
std::string Shown(const wchar_t* text);

template <typename Argument>
std::string Shown(Argument argument)
{
    if constexpr (std::is_same_v<Argument, bool>)
        return argument ? "true" : "false";
    else if constexpr (std::is_pointer_v<Argument>)
        return '@' + std::to_string(reinterpret_cast<std::uintptr_t>(argument));
    else
        return std::to_string(static_cast<std::int64_t>(argument));
}

template <typename Argument>
std::uint64_t Bits(Argument argument)
{
    if constexpr (std::is_pointer_v<Argument>)
        return reinterpret_cast<std::uintptr_t>(argument);
    else
        return static_cast<std::uint64_t>(argument);
}

template <typename Result>
Result FromBits(std::int64_t bits)
{
    if constexpr (std::is_pointer_v<Result>)
        return reinterpret_cast<Result>(static_cast<std::uintptr_t>(bits));
    else if constexpr (std::is_same_v<Result, bool>)
        return bits != 0;
    else
        return static_cast<Result>(bits);
}

/// Records one call, runs the test's hook, and returns what the test set.
template <typename Result, typename... Arguments>
Result Record(const PluginOperation& operation, Arguments... arguments)
{
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + Shown(arguments)), ...);
    Recorder::Instance().Note(operation, shown);

    const std::array<std::uint64_t, sizeof...(Arguments)> bits{Bits(arguments)...};
    Recorder::Instance().RunHook(operation, bits.data(), static_cast<int>(bits.size()));

    if constexpr (!std::is_void_v<Result>)
    {
        using namespace Kestrany::IdentityServices;
        constexpr std::int64_t unlessSet = std::is_same_v<Result, IdErrorCode> ? IdSuccess : 0;
        return FromBits<Result>(Recorder::Instance().Result(operation, unlessSet));
    }
}

/// One entry of a RecordedObject's virtual table.
template <const PluginOperation& Operation, typename Signature>
struct Slot;

template <const PluginOperation& Operation, typename Result, typename... Arguments>
struct Slot<Operation, Result(Arguments...)>
{
    static constexpr int Place = Operation.slot;
    static Result Call(void* /*object*/, Arguments... arguments) { return Record<Result>(Operation, arguments...); }
};

/// An object with a virtual table written by hand. It does not derive from the contract's class, so that the tests
/// notice an operation that is declared at a wrong place there.
template <typename... Slots>
class RecordedObject
{
    using Entry = void (*)();

    static constexpr bool IsInOrder()
    {
        int place = 0;
        return ((Slots::Place == place++) && ...);
    }
    static_assert(IsInOrder(), "an operation is at another place than in Slots.h");

    static const Entry* Table()
    {
        static const Entry table[] = {reinterpret_cast<Entry>(&Slots::Call)...};
        return table;
    }

    const Entry* table_ = Table(); // First and only: the pointer to the table.
};

} // namespace OrlindexTest

#endif
