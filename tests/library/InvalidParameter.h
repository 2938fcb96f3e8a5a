#ifndef ORLINDEX_LIBRARY_INVALIDPARAMETER_H
#define ORLINDEX_LIBRARY_INVALIDPARAMETER_H

#include <cstdint>
#include <stdexcept>

#include <windows.h>

#include "support/ImportPatch.h"

namespace OrlindexTest {

using InvalidParameterHandler = void (*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t);

/// Sets the handler of the runtime that the library shares with hosts of current compilers.
inline void SetInvalidParameterHandler(InvalidParameterHandler handler)
{
    using Setter = InvalidParameterHandler (*)(InvalidParameterHandler);
    const HMODULE runtime = LoadLibraryW(L"ucrtbase.dll");
    const auto setter =
        runtime ? reinterpret_cast<AnyFunction>(GetProcAddress(runtime, "_set_invalid_parameter_handler")) : nullptr;
    if (setter == nullptr)
        throw std::runtime_error("the runtime has no invalid-parameter handler");
    reinterpret_cast<Setter>(setter)(handler);
}

/// A host's handler that returns: it counts the calls, and the copy continues.
class FaultCounter
{
public:
    FaultCounter()
    {
        faults_ = 0;
        SetInvalidParameterHandler(&Count);
    }
    ~FaultCounter() { SetInvalidParameterHandler(nullptr); }
    FaultCounter(const FaultCounter&) = delete;
    FaultCounter& operator=(const FaultCounter&) = delete;

    int Faults() const { return faults_; }

private:
    static void Count(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) { ++faults_; }

    static inline int faults_ = 0;
};

} // namespace OrlindexTest

#endif
