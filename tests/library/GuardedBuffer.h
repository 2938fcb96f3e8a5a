#ifndef ORLINDEX_LIBRARY_GUARDEDBUFFER_H
#define ORLINDEX_LIBRARY_GUARDEDBUFFER_H

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <windows.h>

namespace OrlindexTest {

/// A caller's buffer in front of a guard page: a write beyond its end terminates the process, and the test fails.
class GuardedBuffer
{
public:
    static constexpr char Fill = '#';

    explicit GuardedBuffer(std::size_t size) : size_(size)
    {
        constexpr std::size_t page = 4096;
        const std::size_t usable = (size + page - 1) / page * page + page;
        memory_.reset(VirtualAlloc(nullptr, usable + page, MEM_RESERVE, PAGE_NOACCESS));
        if (!memory_ || !VirtualAlloc(memory_.get(), usable, MEM_COMMIT, PAGE_READWRITE))
            throw std::bad_alloc();
        std::memset(memory_.get(), Fill, usable);
        data_ = static_cast<char*>(memory_.get()) + usable - size;
    }

    char* Data() const { return data_; }
    std::int32_t Size() const { return static_cast<std::int32_t>(size_); }
    std::string Bytes() const { return {data_, size_}; }
    bool IsUntouched() const { return Bytes() == std::string(size_, Fill) && IsUntouchedBefore(); }
    /// Whether the bytes in front of it are unchanged.
    bool IsUntouchedBefore() const { return std::string(data_ - 64, 64) == std::string(64, Fill); }

private:
    struct Release
    {
        void operator()(void* memory) const { VirtualFree(memory, 0, MEM_RELEASE); }
    };

    std::size_t size_;
    std::unique_ptr<void, Release> memory_;
    char* data_ = nullptr;
};

} // namespace OrlindexTest

#endif
