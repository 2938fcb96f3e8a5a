#ifndef ORLINDEX_DOCTOR_MESSAGELINES_H
#define ORLINDEX_DOCTOR_MESSAGELINES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace Orlindex::Doctor {

// The text form of what the process that loads a plugin reports. The plugin runs in that process and may write anything
// to the pipe, so this part is portable: it is also tested and fuzzed natively, under sanitizers.

/// Splits bytes into lines and keeps no more than one of them.
class LineSplitter
{
public:
    using Taker = std::function<void(const std::string& line)>;

    /// A longer line is cut; after so many lines or bytes nothing is taken any more.
    static constexpr std::size_t LongestLine = 64 * 1024;
    static constexpr std::size_t MostLines = 1000;
    static constexpr std::size_t MostBytes = 1024 * 1024;

    explicit LineSplitter(Taker take) : take_(std::move(take)) {}

    /// Calls `take` for each line that is complete, without its line end. False if the limits are reached.
    bool Take(const char* bytes, std::size_t count);

private:
    const Taker take_;
    std::string line_;
    std::size_t lines_ = 0;
    std::size_t bytes_ = 0;
};

/// A message as a line holds it: "<kind> <number> <state> <error> <text>". LoadMessages.h gives the numbers their
/// meaning.
struct MessageLine
{
    enum class Kind : std::uint8_t
    {
        Library,
        Step,
        Object,
        Exception,
        End
    };

    static constexpr std::uint32_t Steps = 12;
    static constexpr std::uint32_t States = 3;
    static constexpr std::uint32_t Objects = 6;

    Kind kind = Kind::Library;
    std::uint32_t number = 0; ///< Below Steps or Objects, 0 or 1 at the end; else any.
    std::uint32_t state = 0;  ///< Below States.
    std::uint32_t error = 0;
    std::string text = {};
};

/// Without line end. Control characters of the text become spaces.
std::string LineOf(const MessageLine& message);

/// nullopt if the line is not exactly of this form, or a number is out of its range.
std::optional<MessageLine> ParseMessageLine(const std::string& line);

} // namespace Orlindex::Doctor

#endif
