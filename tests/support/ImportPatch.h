#ifndef ORLINDEX_SUPPORT_IMPORTPATCH_H
#define ORLINDEX_SUPPORT_IMPORTPATCH_H

#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

namespace OrlindexTest {

using AnyFunction = void (*)();

/// Names of the functions that a module imports by name, each once.
std::set<std::string> ImportedFunctions(HMODULE module);

/// Replaces a function that a module imports, and restores the original on destruction. The function is found by its
/// name, whichever library exports it.
class ImportPatch
{
public:
    ImportPatch(HMODULE module, const char* function, AnyFunction replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    AnyFunction Original() const { return original_; }

private:
    std::vector<AnyFunction*> entries_;
    AnyFunction original_ = nullptr;
};

/// The library in this process. A module test that links the library's objects patches its own executable instead.
HMODULE LibraryModule();

/// An imported function replaced by a callable object. `Import` gives the function's name and type; PlatformImports.h
/// lists those of the tests. One object for each function may live at a time.
template <typename Import, typename Type = typename Import::Type>
class ImportDouble;

template <typename Import, typename Result, typename... Arguments>
class ImportDouble<Import, Result(Arguments...)>
{
public:
    using Behaviour = std::function<Result(Arguments...)>;

    explicit ImportDouble(Behaviour behaviour, HMODULE module = LibraryModule())
        : behaviour_(std::move(behaviour)), patch_(module, Import::Name, reinterpret_cast<AnyFunction>(&Replacement))
    {
        if (active_ != nullptr)
            throw std::logic_error("the import is replaced already");
        active_ = this;
    }

    ~ImportDouble() { active_ = nullptr; }
    ImportDouble(const ImportDouble&) = delete;
    ImportDouble& operator=(const ImportDouble&) = delete;

    static bool IsImported(HMODULE module = LibraryModule())
    {
        return ImportedFunctions(module).count(Import::Name) != 0;
    }

    /// The replaced function.
    static Result Original(Arguments... arguments)
    {
        return reinterpret_cast<Result(WINAPI*)(Arguments...)>(active_->patch_.Original())(arguments...);
    }

private:
    static Result WINAPI Replacement(Arguments... arguments) { return active_->behaviour_(arguments...); }

    static inline ImportDouble* active_ = nullptr;
    Behaviour behaviour_;
    ImportPatch patch_;
};

/// An ImportDouble, if the library imports the function. The compiler's runtime decides which functions of the C
/// runtime it imports.
template <typename Double>
class DoubleIfImported
{
public:
    explicit DoubleIfImported(typename Double::Behaviour behaviour)
    {
        if (Double::IsImported())
            double_.emplace(std::move(behaviour));
    }

private:
    std::optional<Double> double_;
};

} // namespace OrlindexTest

#endif
