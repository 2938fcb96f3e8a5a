// Only in mingw-w64 builds: replaces the runtime's handler, which prints the type of an uncaught exception and needs a
// demangler of 45 KB for that. A library must not print to its host's standard error, and the process ends either way.

#include <cstdlib>

namespace __gnu_cxx { // The runtime calls the handler by this name.

// not covered: Called if an exception leaves a thread; the library has no thread.
[[noreturn]] void __verbose_terminate_handler() // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
{
    std::abort(); // not covered: Called if an exception leaves a thread; the library has no thread.
}

} // namespace __gnu_cxx
