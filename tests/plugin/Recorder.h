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

/// Journal, programmed results and hooks of the test plugin.
class Recorder
{
public:
    static Recorder& Instance();

    void Note(const char* interfaceName, int slot, const std::string& arguments);
    void RunHook(const char* interfaceName, int slot, const std::uint64_t* arguments, int count);
    std::int64_t Result(const char* interfaceName, int slot, std::int64_t standard);

    int JournalSize();
    const char* JournalEntry(int index);
    void ClearJournal();
    void SetResult(const char* interfaceName, int slot, std::int64_t result);
    void SetHook(const char* interfaceName, int slot, OperationHook hook, void* context);

private:
    using Operation = std::pair<std::string, int>;
    using Hook = std::pair<OperationHook, void*>;

    std::mutex mutex_;
    std::deque<std::string> journal_; // A deque: the texts that were handed out stay where they are.
    std::map<Operation, std::int64_t> results_;
    std::map<Operation, Hook> hooks_;
};

} // namespace OrlindexTest

#endif
