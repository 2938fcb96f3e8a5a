#ifndef ORLINDEX_BENCH_STARTFIGURES_H
#define ORLINDEX_BENCH_STARTFIGURES_H

#include <filesystem>

namespace OrlindexBench {

/// The times of one start and its steps, in nanoseconds.
struct StartFigures
{
    double total = 0;
    double trust = 0; ///< Verifying the plugin module's signature and signer.
    double load = 0;  ///< Loading the plugin module.
    double registry = 0;
    double files = 0;
    double account = 0; ///< Checking for the local system account.

    /// The library's (or the program's) own part, which it could reduce.
    double Own() const { return total - trust - load; }
    /// Everything else: text, JSON, choosing the plugin, messages.
    double Rest() const { return Own() - registry - files - account; }
};

/// Writes the figures to a file in the current directory, for the process that started this one.
void WriteStartFigures(const StartFigures& figures);
/// Reads and deletes that file; throws if it does not exist.
StartFigures TakeStartFigures(const std::filesystem::path& directory);

} // namespace OrlindexBench

#endif
