#ifndef ORLINDEX_PLUGIN_RECORDER_H
#define ORLINDEX_PLUGIN_RECORDER_H

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "TestPluginControl.h"

namespace OrlindexTest {

/// Journal, results and hooks of the test plugin.
class Recorder
{
public:
    static Recorder& Instance();

    void Note(const PluginOperation& operation, const std::string& arguments);
    void RunHook(const PluginOperation& operation, const std::uint64_t* arguments, int count);
    std::int64_t Result(const PluginOperation& operation, std::int64_t unlessSet);

    int JournalSize();
    const char* JournalEntry(int index);
    void ClearJournal();
    void SetResult(const PluginOperation& operation, std::int64_t result);
    void SetHook(const PluginOperation& operation, OperationHook hook, void* context);

private:
    using Hook = std::pair<OperationHook, void*>;

    std::mutex mutex_;
    std::deque<std::string> journal_;             // A deque: texts that were returned do not move.
    std::map<std::string, std::int64_t> results_; // By the operation's name.
    std::map<std::string, Hook> hooks_;
};

} // namespace OrlindexTest

#endif
