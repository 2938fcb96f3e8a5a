#ifndef ORLINDEX_BENCH_OPTIONS_H
#define ORLINDEX_BENCH_OPTIONS_H

#include <algorithm>
#include <string_view>

namespace OrlindexBench {

/// Whether an option is among the arguments. Removes it, because Google Benchmark accepts only its own options.
inline bool TakeOption(int& argc, char** argv, std::string_view option)
{
    char** const end = argv + argc;
    char** const rest = std::remove_if(argv + 1, end, [&](const char* argument) { return argument == option; });
    argc = static_cast<int>(rest - argv);
    *rest = rest == end ? *rest : nullptr;
    return rest != end;
}

} // namespace OrlindexBench

#endif
