#include "Watchdog.h"

#include <cstdio>
#include <string>

#include <windows.h>

#include <tlhelp32.h>

#include "support/Handle.h"
#include "support/Text.h"

namespace OrlindexTest {

namespace {

constexpr UINT StalledCode = 99;
constexpr int DeepestStack = 64;

void PrintFrame(DWORD64 address)
{
    HMODULE module = nullptr;
    const auto inside = reinterpret_cast<LPCWSTR>(address);
    wchar_t path[MAX_PATH] = L"?";
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           inside, &module))
        GetModuleFileNameW(module, path, MAX_PATH);
    const std::wstring name = path;
    std::printf("    %s+0x%llx\n", ToUtf8(name.substr(name.rfind(L'\\') + 1)).c_str(),
                static_cast<unsigned long long>(address - reinterpret_cast<DWORD64>(module)));
}

/// One frame up the stack, by the unwind tables of the modules.
void Unwind(CONTEXT& context)
{
    DWORD64 base = 0;
    RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    if (function == nullptr)
    {
        // A leaf function: the return address is on top of the stack.
        context.Rip = *reinterpret_cast<DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
        return;
    }
    void* handlerData = nullptr;
    DWORD64 frame = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData, &frame, nullptr);
}

/// The thread stays suspended: the process is about to end.
void PrintStack(DWORD id)
{
    const Handle thread(OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, id));
    CONTEXT context{};
    context.ContextFlags = CONTEXT_FULL;
    if (!thread || SuspendThread(thread.get()) == static_cast<DWORD>(-1) || !GetThreadContext(thread.get(), &context))
    {
        std::printf("  thread %lu: no stack\n", id);
        return;
    }
    std::printf("  thread %lu\n", id);
    for (int depth = 0; depth < DeepestStack && context.Rip != 0; ++depth)
    {
        PrintFrame(context.Rip);
        Unwind(context);
    }
    std::fflush(stdout);
}

void PrintAllStacks()
{
    const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot.get(), &entry); more; more = Thread32Next(snapshot.get(), &entry))
        if (entry.th32OwnerProcessID == GetCurrentProcessId() && entry.th32ThreadID != GetCurrentThreadId())
            PrintStack(entry.th32ThreadID);
}

} // namespace

Watchdog::Watchdog(std::chrono::seconds patience) : patience_(patience), thread_([this]() { Watch(); }) {}

Watchdog::~Watchdog()
{
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        ended_ = true;
    }
    ending_.notify_all();
    thread_.join();
}

void Watchdog::Watch()
{
    std::unique_lock<std::mutex> guard(mutex_);
    for (;;)
    {
        const long long before = pats_;
        if (ending_.wait_for(guard, patience_, [this]() { return ended_; }))
            return;
        if (pats_ != before)
            continue;
        std::printf("nothing happened for %lld seconds; the threads are in\n",
                    static_cast<long long>(patience_.count()));
        PrintAllStacks();
        TerminateProcess(GetCurrentProcess(), StalledCode);
    }
}

} // namespace OrlindexTest
