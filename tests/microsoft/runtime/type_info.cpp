// type_info of vcruntime_typeinfo.h.
#include <windows.h>

#include <vcruntime_typeinfo.h>

extern "C" {

struct TypeData
{
    char* readable;
    char name[1];
};

int __cdecl __std_type_info_compare(const TypeData* left, const TypeData* right);
size_t __cdecl __std_type_info_hash(const TypeData* data);
const char* __cdecl __std_type_info_name(TypeData* data, SLIST_HEADER* names);
}

static SLIST_HEADER readableNames;

static TypeData* Data(const type_info* type)
{
    return reinterpret_cast<TypeData*>(const_cast<type_info*>(type)->data());
}

type_info::~type_info() noexcept {}

size_t type_info::hash_code() const noexcept
{
    return __std_type_info_hash(Data(this));
}

bool type_info::operator==(const type_info& other) const noexcept
{
    return __std_type_info_compare(Data(this), Data(&other)) == 0;
}

bool type_info::before(const type_info& other) const noexcept
{
    return __std_type_info_compare(Data(this), Data(&other)) < 0;
}

const char* type_info::name() const noexcept
{
    return __std_type_info_name(Data(this), &readableNames);
}

const char* type_info::raw_name() const noexcept
{
    return Data(this)->name;
}

static void* DeletingDestructor(type_info* type, unsigned)
{
    return type;
}

// The virtual table to which every description of a type points. The compiler never emits it, so it is defined by its
// decorated name.
extern "C" const void* const virtualTable[] __asm__("??_7type_info@@6B@") = {
    reinterpret_cast<const void*>(&DeletingDestructor)};
