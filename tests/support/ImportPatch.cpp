#include "ImportPatch.h"

#include <cstring>
#include <string>

namespace OrlindexTest {

namespace {

class ModuleImage
{
public:
    explicit ModuleImage(HMODULE module) : base_(reinterpret_cast<unsigned char*>(module)) {}

    template <typename Target>
    Target* At(DWORD offset) const
    {
        return reinterpret_cast<Target*>(base_ + offset);
    }

    const IMAGE_IMPORT_DESCRIPTOR* Imports() const
    {
        const auto& headers = *At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
        return At<IMAGE_IMPORT_DESCRIPTOR>(
            headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    }

private:
    unsigned char* base_;
};

/// Calls `visit` with the name and the entry of each function imported by name from one library.
template <typename Visit>
void ForEachFunction(const ModuleImage& image, const IMAGE_IMPORT_DESCRIPTOR& library, Visit&& visit)
{
    const auto* name = image.At<const IMAGE_THUNK_DATA>(library.OriginalFirstThunk);
    auto* entry = image.At<AnyFunction>(library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++entry)
    {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
            continue;
        const auto* import = image.At<const IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name->u1.AddressOfData));
        visit(reinterpret_cast<const char*>(import->Name), entry);
    }
}

template <typename Visit>
void ForEachImport(HMODULE module, Visit&& visit)
{
    const ModuleImage image(module);
    for (const IMAGE_IMPORT_DESCRIPTOR* library = image.Imports(); library->Name != 0; ++library)
        ForEachFunction(image, *library, visit);
}

void Write(AnyFunction* entry, AnyFunction function)
{
    DWORD protection = 0;
    VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection);
    *entry = function;
    VirtualProtect(entry, sizeof *entry, protection, &protection);
}

} // namespace

std::set<std::string> ImportedFunctions(HMODULE module)
{
    std::set<std::string> names;
    ForEachImport(module, [&names](const char* name, AnyFunction* /*entry*/) { names.insert(name); });
    return names;
}

ImportPatch::ImportPatch(HMODULE module, const char* function, AnyFunction replacement)
{
    ForEachImport(module, [&](const char* name, AnyFunction* entry) {
        if (std::strcmp(name, function) == 0)
            entries_.push_back(entry);
    });
    if (entries_.empty())
        throw std::runtime_error(std::string("the module does not import ") + function);
    original_ = *entries_.front();
    for (AnyFunction* entry : entries_)
        Write(entry, replacement);
}

ImportPatch::~ImportPatch()
{
    for (AnyFunction* entry : entries_)
        Write(entry, original_);
}

HMODULE LibraryModule()
{
    const HMODULE module = GetModuleHandleW(L"Orlindex.dll");
    if (module == nullptr)
        throw std::logic_error("Orlindex.dll is not in this process");
    return module;
}

} // namespace OrlindexTest
