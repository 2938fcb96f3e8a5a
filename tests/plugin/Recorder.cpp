#include "Recorder.h"

namespace OrlindexTest {

Recorder& Recorder::Instance()
{
    // Never destroyed: the library may call the plugin until the very end of the process.
    static Recorder* const recorder = new Recorder;
    return *recorder;
}

void Recorder::Note(const char* interfaceName, int slot, const std::string& arguments)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    journal_.push_back(std::string(interfaceName) + ' ' + std::to_string(slot) + " (" + arguments + ')');
}

void Recorder::RunHook(const char* interfaceName, int slot, const std::uint64_t* arguments, int count)
{
    Hook hook{};
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = hooks_.find({interfaceName, slot});
        if (found != hooks_.end())
            hook = found->second;
    }
    if (hook.first != nullptr)
        hook.first(hook.second, arguments, count);
}

std::int64_t Recorder::Result(const char* interfaceName, int slot, std::int64_t standard)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = results_.find({interfaceName, slot});
    return found == results_.end() ? standard : found->second;
}

int Recorder::JournalSize()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(journal_.size());
}

const char* Recorder::JournalEntry(int index)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return journal_.at(static_cast<std::size_t>(index)).c_str();
}

void Recorder::ClearJournal()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    journal_.clear();
}

void Recorder::SetResult(const char* interfaceName, int slot, std::int64_t result)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    results_[{interfaceName, slot}] = result;
}

void Recorder::SetHook(const char* interfaceName, int slot, OperationHook hook, void* context)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    hooks_[{interfaceName, slot}] = {hook, context};
}

} // namespace OrlindexTest
