#ifndef ORLINDEX_PLUGIN_RECORDEDOBJECT_H
#define ORLINDEX_PLUGIN_RECORDEDOBJECT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

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

/// Notes one call, runs the test's hook, and answers what the test programmed.
template <typename Result, typename... Arguments>
Result Record(const char* interfaceName, int slot, Arguments... arguments)
{
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + Shown(arguments)), ...);
    Recorder::Instance().Note(interfaceName, slot, shown);

    const std::array<std::uint64_t, sizeof...(Arguments)> bits{Bits(arguments)...};
    Recorder::Instance().RunHook(interfaceName, slot, bits.data(), static_cast<int>(bits.size()));

    if constexpr (!std::is_void_v<Result>)
    {
        constexpr std::int64_t standard = std::is_same_v<Result, Kestrany::IdentityServices::IdErrorCode> ? 1000 : 0;
        return FromBits<Result>(Recorder::Instance().Result(interfaceName, slot, standard));
    }
}

/// An object with a virtual table written out by hand, one signature a slot. It does not derive from the contract's
/// class, so that an operation declared at a wrong place there is noticed here.
template <const char* Interface, typename... Signatures>
class RecordedObject
{
    using Slot = void (*)();

    template <std::size_t Index, typename Signature>
    struct Operation;

    template <std::size_t Index, typename Result, typename... Arguments>
    struct Operation<Index, Result(Arguments...)>
    {
        static Result Call(void* /*object*/, Arguments... arguments)
        {
            return Record<Result>(Interface, static_cast<int>(Index), arguments...);
        }
    };

    template <std::size_t... Indices>
    static const Slot* Table(std::index_sequence<Indices...> /*slots*/)
    {
        static const Slot table[] = {reinterpret_cast<Slot>(&Operation<Indices, Signatures>::Call)...};
        return table;
    }

    const Slot* table_ = Table(std::index_sequence_for<Signatures...>()); // First and only: the pointer to the table.
};

} // namespace OrlindexTest

#endif
