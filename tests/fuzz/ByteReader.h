#ifndef ORLINDEX_FUZZ_BYTEREADER_H
#define ORLINDEX_FUZZ_BYTEREADER_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace OrlindexTest {

/// Makes values from a fuzzer's bytes, in order; zeros after the last byte.
class ByteReader
{
public:
    ByteReader(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool IsEmpty() const { return next_ == end_; }
    unsigned Byte() { return IsEmpty() ? 0 : *next_++; }
    unsigned Below(unsigned limit) { return Byte() % limit; }
    bool Flag() { return Below(2) == 1; }

    template <std::size_t Size>
    std::string Pick(const char* const (&choices)[Size])
    {
        return choices[Below(static_cast<unsigned>(Size))];
    }

    /// All bytes that are left.
    std::string Rest()
    {
        const std::string rest(next_, end_);
        next_ = end_;
        return rest;
    }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

} // namespace OrlindexTest

#endif
