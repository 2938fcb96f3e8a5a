#ifndef ORLINDEX_SUPPORT_CAPTUREDOUTPUT_H
#define ORLINDEX_SUPPORT_CAPTUREDOUTPUT_H

#include <filesystem>
#include <string>

namespace OrlindexTest {

/// Captures what this process writes to its standard output, below every stream. The destructor writes text that was
/// not taken to the real output.
class CapturedOutput
{
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// Ends the capture. Line ends are "\n".
    std::string Take();

private:
    void Restore();

    std::filesystem::path file_;
    int output_;
};

} // namespace OrlindexTest

#endif
