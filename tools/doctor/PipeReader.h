#ifndef ORLINDEX_DOCTOR_PIPEREADER_H
#define ORLINDEX_DOCTOR_PIPEREADER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <windows.h>

#include "Handle.h"

namespace Orlindex::Doctor {

struct Pipe
{
    Handle readEnd;  ///< For PipeReader.
    Handle writeEnd; ///< Inheritable, for a child process.
};

/// Throws std::runtime_error if the system refuses it.
Pipe MakePipe();

/// Reads the lines that a process writes to a pipe. Whatever that process does, no wait is without a limit and nothing
/// is kept but one line: a plugin may write what it likes, and it may give the pipe's write end to a process that
/// stays, so that the pipe never ends.
class PipeReader
{
public:
    using Taker = std::function<void(const std::string& line)>;

    /// What is taken at most. A longer line is cut; after so many lines or bytes nothing is read any more.
    static constexpr std::size_t LongestLine = 64 * 1024;
    static constexpr std::size_t MostLines = 1000;
    static constexpr std::size_t MostBytes = 1024 * 1024;

    enum class End
    {
        ProcessEnded, ///< All that it had written before was taken.
        TimedOut,
        TooMuch ///< More lines or bytes came than are taken.
    };

    /// `take` is called for each line, by ReadUntilEnd. The pipe's read end must outlive the reader.
    PipeReader(HANDLE readEnd, Taker take);
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;
    ~PipeReader();

    /// Reads until the process has ended, though others may still have the pipe's write end, or the time is over.
    /// Throws what `take` throws.
    End ReadUntilEnd(HANDLE process, std::uint64_t milliseconds);

private:
    struct Operation;

    void StartReading();
    /// Takes what was read. False if the limits are reached.
    bool TakeRead();
    /// Takes what the pipe holds by now. False if the limits are reached.
    bool TakeRest();
    bool Take(const char* bytes, std::size_t count);

    const HANDLE readEnd_;
    const Taker take_;
    std::unique_ptr<Operation> operation_; ///< The read on its way. Null once the pipe has ended.
    std::string line_;
    std::size_t lines_ = 0;
    std::size_t bytes_ = 0;
};

} // namespace Orlindex::Doctor

#endif
