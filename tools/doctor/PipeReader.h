#ifndef ORLINDEX_DOCTOR_PIPEREADER_H
#define ORLINDEX_DOCTOR_PIPEREADER_H

#include <exception>
#include <functional>
#include <string>
#include <thread>
#include <windows.h>

namespace Orlindex::Doctor {

/// Reads lines from a pipe, in a thread of its own, until nobody writes any more. A line without end is cut: a plugin
/// may write what it likes.
class PipeReader
{
public:
    using Taker = std::function<void(const std::string&)>;

    /// Calls `take` for each line, in that thread. The pipe must outlive the reader.
    PipeReader(HANDLE pipe, Taker take);
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;
    ~PipeReader();

    /// Waits for the end of the pipe, and throws what `take` threw. After an exception nothing more was taken.
    void Finish();

private:
    void Read(HANDLE pipe);
    void Add(const char* bytes, std::size_t count);

    Taker take_;
    std::string line_;
    std::exception_ptr exception_;
    std::thread thread_;
};

} // namespace Orlindex::Doctor

#endif
