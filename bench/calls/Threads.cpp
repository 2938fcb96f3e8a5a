// Several threads that forward at once.

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

#include "calls/Benchmarks.h"
#include "calls/Plugin.h"
#include "common/Comparison.h"
#include "floor/Floor.h"
#include "orlindex/talix.h"

namespace OrlindexBench {

using namespace Kestrany;

namespace {

constexpr int callsAThread = 10000;

/// Threads that stay, so that a measurement starts none.
class Crew
{
public:
    explicit Crew(int size)
    {
        for (int i = 0; i < size; ++i)
            threads_.emplace_back([this] { Work(); });
    }
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    ~Crew()
    {
        Give({});
        for (std::thread& thread : threads_)
            thread.join();
    }

    /// Has every thread do the job at once; answers the nanoseconds from the first one's begin to the last one's end.
    double Do(const std::function<void()>& job)
    {
        Give(job);
        std::unique_lock<std::mutex> guard(mutex_);
        done_.wait(guard, [this] { return busy_ == 0; });
        return ended_ - began_;
    }

private:
    void Give(const std::function<void()>& job)
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        job_ = job;
        busy_ = threads_.size();
        began_ = std::numeric_limits<double>::max();
        ++round_;
        begin_.notify_all();
    }

    /// An empty job is the last one.
    void Work()
    {
        std::function<void()> job;
        for (int round = 1;; ++round)
        {
            {
                std::unique_lock<std::mutex> guard(mutex_);
                begin_.wait(guard, [&] { return round_ == round; });
                job = job_;
            }
            if (!job)
                return;
            const double began = Now();
            job();
            const double ended = Now();
            const std::lock_guard<std::mutex> guard(mutex_);
            began_ = std::min(began_, began);
            ended_ = std::max(ended_, ended);
            if (--busy_ == 0)
                done_.notify_one();
        }
    }

    std::vector<std::thread> threads_;
    std::mutex mutex_;
    std::condition_variable begin_;
    std::condition_variable done_;
    std::function<void()> job_;
    std::size_t busy_ = 0;
    int round_ = 0;
    double began_ = 0;
    double ended_ = 0;
};

template <class Call>
std::function<void()> Repeated(Call call)
{
    return [call] {
        for (int i = 0; i < callsAThread; ++i)
            benchmark::DoNotOptimize(call());
    };
}

void Forward(benchmark::State& state, int threads)
{
    Floor::SetClient(&LoadedClient());
    Crew crew(threads);
    const std::function<void()> floor = Repeated([] { return Floor::RefreshToken(); });
    const std::function<void()> library = Repeated([] { return talix_refresh_token(); });
    CompareTimes(
        state, static_cast<double>(callsAThread) * threads, [&] { return crew.Do(floor); },
        [&] { return crew.Do(library); });
}

} // namespace

void RegisterThreads(int turns)
{
    for (const int threads : {1, 2, 4, 8})
        benchmark::RegisterBenchmark(("threads/" + std::to_string(threads)).c_str(), Forward, threads)
            ->Iterations(turns)
            ->UseManualTime();
}

} // namespace OrlindexBench
