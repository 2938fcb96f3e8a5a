#include "CapturedOutput.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include "HostProcess.h"
#include "Text.h"

namespace OrlindexTest {

namespace {

void FlushAll()
{
    std::cout.flush();
    std::wcout.flush();
    std::fflush(nullptr); // The library's streams too: every module shares the runtime's standard output.
}

} // namespace

CapturedOutput::CapturedOutput()
{
    static int counter = 0;
    file_ = Environment().root / ("output-" + std::to_string(++counter));
    FlushAll();
    output_ = _dup(1);
    // Text mode: in binary mode the runtime writes wide text as it stands in memory.
    const int target = _wopen(file_.c_str(), _O_CREAT | _O_TRUNC | _O_WRONLY | _O_TEXT, _S_IREAD | _S_IWRITE);
    if (output_ < 0 || target < 0 || _dup2(target, 1) < 0)
        throw std::runtime_error("cannot redirect the standard output");
    _close(target);
}

CapturedOutput::~CapturedOutput()
{
    if (output_ < 0)
        return;
    Restore();
    std::cout << ReadFile(file_);
}

std::string CapturedOutput::Take()
{
    Restore();
    std::string text;
    for (const char character : ReadFile(file_))
        if (character != '\r')
            text += character;
    return text;
}

void CapturedOutput::Restore()
{
    FlushAll();
    _dup2(output_, 1);
    _close(output_);
    output_ = -1;
}

} // namespace OrlindexTest
