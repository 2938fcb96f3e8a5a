#include "Recorder.h"

namespace OrlindexTest {

Recorder& Recorder::Instance()
{
    // Never destroyed: the library may call the plugin until the end of the process.
    static Recorder* const recorder = new Recorder;
    return *recorder;
}

void Recorder::Note(const PluginOperation& operation, const std::string& arguments)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    journal_.push_back(FullName(operation) + '(' + arguments + ')');
}

void Recorder::RunHook(const PluginOperation& operation, const std::uint64_t* arguments, int count)
{
    Hook hook{};
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = hooks_.find(FullName(operation));
        if (found != hooks_.end())
            hook = found->second;
    }
    if (hook.first != nullptr)
        hook.first(hook.second, arguments, count);
}

std::int64_t Recorder::Result(const PluginOperation& operation, std::int64_t unlessSet)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = results_.find(FullName(operation));
    return found == results_.end() ? unlessSet : found->second;
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

void Recorder::SetResult(const PluginOperation& operation, std::int64_t result)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    results_[FullName(operation)] = result;
}

void Recorder::SetHook(const PluginOperation& operation, OperationHook hook, void* context)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    hooks_[FullName(operation)] = {hook, context};
}

} // namespace OrlindexTest
