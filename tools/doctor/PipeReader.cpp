#include "PipeReader.h"

#include <utility>

namespace Orlindex::Doctor {

PipeReader::PipeReader(HANDLE pipe, Taker take) : take_(std::move(take)), thread_([this, pipe] { Read(pipe); }) {}

PipeReader::~PipeReader()
{
    if (thread_.joinable())
        thread_.join();
}

void PipeReader::Finish()
{
    thread_.join();
    if (exception_)
        std::rethrow_exception(exception_);
}

/// After an exception the rest is still read, or the writer would wait for ever.
void PipeReader::Read(HANDLE pipe)
{
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(pipe, buffer, sizeof buffer, &read, nullptr) && read > 0)
    {
        if (exception_)
            continue;
        try
        {
            Add(buffer, read);
        }
        catch (...)
        {
            exception_ = std::current_exception();
        }
    }
}

void PipeReader::Add(const char* bytes, std::size_t count)
{
    constexpr std::size_t longestLine = 64 * 1024;
    for (std::size_t index = 0; index < count; ++index)
    {
        if (bytes[index] != '\n')
        {
            if (line_.size() < longestLine)
                line_ += bytes[index];
            continue;
        }
        take_(line_);
        line_.clear();
    }
}

} // namespace Orlindex::Doctor
