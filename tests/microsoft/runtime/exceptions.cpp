// The standard exceptions of vcruntime_exception.h. The runtime's DLL copies and frees their texts.
#include <vcruntime_exception.h>
#include <vcruntime_typeinfo.h>

extern "C" {

struct ExceptionData
{
    const char* what;
    bool owned;
};

void __cdecl __std_exception_copy(const ExceptionData* from, ExceptionData* to);
void __cdecl __std_exception_destroy(ExceptionData* data);
}

namespace std {

static ExceptionData* Data(const exception* object)
{
    return reinterpret_cast<ExceptionData*>(const_cast<exception*>(object)->data());
}

exception::exception() noexcept : data_() {}

exception::exception(const char* text) noexcept : data_()
{
    const ExceptionData copied{text, true};
    __std_exception_copy(&copied, Data(this));
}

exception::exception(const char* literal, int) noexcept : data_()
{
    Data(this)->what = literal;
}

exception::exception(const exception& other) noexcept : data_()
{
    __std_exception_copy(Data(&other), Data(this));
}

exception& exception::operator=(const exception& other) noexcept
{
    if (this != &other)
    {
        __std_exception_destroy(Data(this));
        __std_exception_copy(Data(&other), Data(this));
    }
    return *this;
}

exception::~exception() noexcept
{
    __std_exception_destroy(Data(this));
}

const char* exception::what() const noexcept
{
    return Data(this)->what ? Data(this)->what : "Unknown exception";
}

bad_exception::bad_exception() noexcept : exception("bad exception", 1) {}

bad_alloc::bad_alloc() noexcept : exception("bad allocation", 1) {}

bad_array_new_length::bad_array_new_length() noexcept {}

bad_cast::bad_cast() noexcept : exception("bad cast", 1) {}

bad_cast::bad_cast(const char* text) noexcept : exception(text) {}

bad_typeid::bad_typeid() noexcept : exception("bad typeid", 1) {}

bad_typeid::bad_typeid(const char* text) noexcept : exception(text) {}

} // namespace std
