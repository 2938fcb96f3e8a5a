#ifndef ORLINDEX_DOCTOR_PIPEREADER_H
#define ORLINDEX_DOCTOR_PIPEREADER_H

#include <cstdint>
#include <memory>
#include <windows.h>

#include "MessageLines.h"
#include "base/Handles.h"

namespace Orlindex::Doctor {

/// A pipe from a child process to this one.
struct Pipe
{
    Kestrany::IdentityServices::Handle readEnd;  ///< For PipeReader.
    Kestrany::IdentityServices::Handle writeEnd; ///< Inheritable, for a child process.
};

/// Throws std::runtime_error if the platform refuses.
Pipe MakePipe();

/// Reads the lines that a process writes to a pipe. Every wait has a time-out, and no more than one line is kept: a
/// plugin may write anything, and it may give the pipe's write end to a process that stays, so that the pipe never
/// ends.
class PipeReader
{
public:
    using Taker = LineSplitter::Taker;

    enum class End
    {
        ProcessEnded, ///< All that it had written was read.
        TimedOut,
        TooMuch ///< More lines or bytes came than LineSplitter takes.
    };

    /// `take` is called for each line, by ReadUntilEnd. The pipe's read end must outlive the reader.
    PipeReader(HANDLE readEnd, Taker take);
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;
    ~PipeReader();

    /// Reads until the process has ended, even if others still have the pipe's write end, or the time-out has passed.
    /// Throws what `take` throws.
    End ReadUntilEnd(HANDLE process, std::uint64_t milliseconds);

private:
    struct Operation;

    void StartReading();
    /// Takes the bytes of the read that completed. False if the limits are reached.
    bool TakeRead();
    /// Takes the bytes that are still in the pipe. False if the limits are reached.
    bool TakeRest();

    const HANDLE readEnd_;
    LineSplitter lines_;
    std::unique_ptr<Operation> operation_; ///< The pending read. Null once the pipe has ended.
};

} // namespace Orlindex::Doctor

#endif
