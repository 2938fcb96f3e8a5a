#ifndef ORLINDEX_DOCTOR_PIPEREADER_H
#define ORLINDEX_DOCTOR_PIPEREADER_H

#include <cstdint>
#include <memory>
#include <windows.h>

#include "Handle.h"
#include "MessageLines.h"

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
    using Taker = LineSplitter::Taker;

    enum class End
    {
        ProcessEnded, ///< All that it had written before was taken.
        TimedOut,
        TooMuch ///< More lines or bytes came than LineSplitter takes.
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

    const HANDLE readEnd_;
    LineSplitter lines_;
    std::unique_ptr<Operation> operation_; ///< The read on its way. Null once the pipe has ended.
};

} // namespace Orlindex::Doctor

#endif
