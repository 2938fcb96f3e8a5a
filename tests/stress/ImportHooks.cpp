#include "ImportHooks.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace OrlindexTest {

namespace {

constexpr std::size_t MostImports = 320;

std::atomic<ImportHooks*> active = nullptr;

/// Functions that return to the frame of their caller in another way, or never: a frame in between would break them.
/// And functions of floating-point numbers, whose arguments are not in words.
constexpr const char* NeverHooked[] = {"_setjmp",
                                       "longjmp",
                                       "RtlCaptureContext",
                                       "RtlUnwindEx",
                                       "__C_specific_handler",
                                       "_endthreadex",
                                       "_amsg_exit",
                                       "_exit",
                                       "abort",
                                       "exit",
                                       "_CxxThrowException",
                                       "__CxxFrameHandler3",
                                       "__RTDynamicCast",
                                       "__std_terminate",
                                       "?__ExceptionPtrRethrow@@YAXPEBX@Z",
                                       "_initterm",
                                       "_initterm_e",
                                       "ceilf",
                                       "strtod",
                                       "strtof",
                                       "strtold",
                                       "_strtod_l",
                                       "_strtof_l",
                                       "_strtold_l"};

template <std::size_t Index>
Word WINAPI Thunk(Word a, Word b, Word c, Word d, Word e, Word f, Word g, Word h, Word i, Word j, Word k, Word l)
{
    return active.load()->Call(Index, {a, b, c, d, e, f, g, h, i, j, k, l});
}

template <std::size_t... Indices>
std::array<AnyFunction, sizeof...(Indices)> MakeThunks(std::index_sequence<Indices...> /*indices*/)
{
    return {reinterpret_cast<AnyFunction>(&Thunk<Indices>)...};
}

const auto Thunks = MakeThunks(std::make_index_sequence<MostImports>());

bool IsHookable(const std::string& name)
{
    return std::find(std::begin(NeverHooked), std::end(NeverHooked), name) == std::end(NeverHooked);
}

Word Forward(AnyFunction function, const WordArguments& a)
{
    using Generic = Word(WINAPI*)(Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word);
    return reinterpret_cast<Generic>(function)(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10],
                                               a[11]);
}

} // namespace

ImportHooks::ImportHooks(HMODULE module)
{
    if (active.exchange(this) != nullptr)
        throw std::logic_error("the imports are hooked already");
    for (const std::string& name : ImportedFunctions(module))
    {
        if (!IsHookable(name))
            continue;
        if (imports_.size() == MostImports)
            throw std::logic_error("the library imports more functions than there are thunks");
        Import& import = imports_.emplace_back();
        import.name = name;
    }
    for (std::size_t index = 0; index < imports_.size(); ++index)
    {
        Import& import = imports_[index];
        import.patch = std::make_unique<ImportPatch>(module, import.name.c_str(), Thunks[index]);
        import.original = import.patch->Original();
    }
}

ImportHooks::~ImportHooks()
{
    for (Import& import : imports_)
        import.patch.reset();
    active = nullptr;
}

void ImportHooks::Fail(const std::vector<std::string>& functions, int first, FailingResult result, int count)
{
    first_ = first;
    count_ = count;
    result_ = result;
    matched_ = 0;
    for (Import& import : imports_)
        import.fails = std::find(functions.begin(), functions.end(), import.name) != functions.end();
}

std::vector<std::string> ImportHooks::Called() const
{
    std::vector<std::string> names;
    for (const Import& import : imports_)
        if (import.calls > 0)
            names.push_back(import.name);
    std::sort(names.begin(), names.end());
    return names;
}

bool ImportHooks::MustFail(const Import& import)
{
    if (!import.fails)
        return false;
    const int number = ++matched_;
    return number >= first_ && number - first_ < count_;
}

Word ImportHooks::Call(std::size_t index, const WordArguments& arguments)
{
    Import& import = imports_[index];
    ++import.calls;
    resources_.BeforeCall(import.name, arguments);
    if (MustFail(import))
    {
        errno = ENOMEM; // The runtime's functions report errors there.
        if (result_.lastError != ERROR_SUCCESS)
            SetLastError(result_.lastError);
        return result_.result;
    }
    const Word result = Forward(import.original, arguments);
    resources_.AfterCall(import.name, arguments, result);
    return result;
}

} // namespace OrlindexTest
