#ifndef ORLINDEX_BENCH_STARTFIGURES_H
#define ORLINDEX_BENCH_STARTFIGURES_H

#include <filesystem>

namespace OrlindexBench {

/// Where the time of one start went, in nanoseconds.
struct StartFigures
{
    double total = 0;
    double trust = 0; ///< Verifying the plugin module's signature and signer.
    double load = 0;  ///< Loading the plugin module.
    double registry = 0;
    double files = 0;
    double account = 0; ///< Asking whose account the process runs under.

    /// What is the library's, or the program's, to save.
    double Own() const { return total - trust - load; }
    /// Neither of the steps: text, JSON, choosing, messages.
    double Rest() const { return Own() - registry - files - account; }
};

/// How a process that starts hands its figures to the one that started it: in a file in the current directory.
void WriteStartFigures(const StartFigures& figures);
/// Takes the file away; throws where there is none.
StartFigures TakeStartFigures(const std::filesystem::path& directory);

} // namespace OrlindexBench

#endif
