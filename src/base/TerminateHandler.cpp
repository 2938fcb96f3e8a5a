// Only in builds with mingw-w64: takes the place of the handler that its runtime would link, which prints the type of
// an uncaught exception and brings a demangler of 45 KB for that. A library that a host loads has no business printing
// on the host's standard error, and the process ends either way.

#include <cstdlib>

namespace __gnu_cxx {

[[noreturn]] void __verbose_terminate_handler() // NOLINT(bugprone-reserved-identifier): the name that the runtime calls
{
    std::abort();
}

} // namespace __gnu_cxx
