// Several threads that forward calls at the same time.

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

constexpr int callsPerThread = 10000;

/// A pool of threads, so that a measurement starts none.
class ThreadPool
{
public:
    explicit ThreadPool(int size)
    {
        for (int i = 0; i < size; ++i)
            threads_.emplace_back([this] { Work(); });
    }
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;
    ~ThreadPool()
    {
        Assign({});
        for (std::thread& thread : threads_)
            thread.join();
    }

    /// Runs the job on every thread at the same time. Returns the nanoseconds from the start of the first to the end of
    /// the last.
    double Run(const std::function<void()>& job)
    {
        Assign(job);
        std::unique_lock<std::mutex> guard(mutex_);
        done_.wait(guard, [this] { return busy_ == 0; });
        return ended_ - began_;
    }

private:
    void Assign(const std::function<void()>& job)
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        job_ = job;
        busy_ = threads_.size();
        began_ = std::numeric_limits<double>::max();
        ++round_;
        begin_.notify_all();
    }

    /// An empty job ends the thread.
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
        for (int i = 0; i < callsPerThread; ++i)
            benchmark::DoNotOptimize(call());
    };
}

void Forward(benchmark::State& state, int threads)
{
    Floor::SetClient(&LoadedClient());
    ThreadPool pool(threads);
    const std::function<void()> floor = Repeated([] { return Floor::RefreshToken(); });
    const std::function<void()> library = Repeated([] { return talix_refresh_token(); });
    CompareTimes(
        state, static_cast<double>(callsPerThread) * threads, [&] { return pool.Run(floor); },
        [&] { return pool.Run(library); });
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
