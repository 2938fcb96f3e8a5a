#include "starts/StartPrograms.h"

#include <stdexcept>
#include <string>

#include "common/RegisteredServer.h"
#include "support/Handle.h"
#include "support/Patience.h"
#include "support/Text.h"

namespace OrlindexBench {
namespace {

using OrlindexTest::Handle;

StartFigures Start(const wchar_t* name)
{
    const std::filesystem::path program = OwnFolder() / name;
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, TRUE, 0, nullptr, OwnFolder().c_str(), &startup,
                        &started))
        throw std::runtime_error("cannot start " + OrlindexTest::Utf8(program));
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
    DWORD code = 1;
    if (WaitForSingleObject(process.get(), OrlindexTest::PatienceMilliseconds) != WAIT_OBJECT_0)
        TerminateProcess(process.get(), code);
    else
        GetExitCodeProcess(process.get(), &code);
    if (code != 0)
        throw std::runtime_error(OrlindexTest::Utf8(program) + " failed, or took too long");
    return TakeStartFigures(OwnFolder());
}

} // namespace

StartFigures StartLibrary()
{
    return Start(L"start_library.exe");
}

StartFigures StartFloor()
{
    return Start(L"start_floor.exe");
}

} // namespace OrlindexBench
