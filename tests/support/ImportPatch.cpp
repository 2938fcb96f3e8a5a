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

void FindEntries(const ModuleImage& image, const IMAGE_IMPORT_DESCRIPTOR& library, const char* function,
                 std::vector<AnyFunction*>& entries)
{
    const auto* name = image.At<const IMAGE_THUNK_DATA>(library.OriginalFirstThunk);
    auto* entry = image.At<AnyFunction>(library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++entry)
    {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
            continue;
        const auto* import = image.At<const IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name->u1.AddressOfData));
        if (std::strcmp(reinterpret_cast<const char*>(import->Name), function) == 0)
            entries.push_back(entry);
    }
}

void Write(AnyFunction* entry, AnyFunction function)
{
    DWORD protection = 0;
    VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection);
    *entry = function;
    VirtualProtect(entry, sizeof *entry, protection, &protection);
}

} // namespace

ImportPatch::ImportPatch(HMODULE module, const char* function, AnyFunction replacement)
{
    const ModuleImage image(module);
    for (const IMAGE_IMPORT_DESCRIPTOR* library = image.Imports(); library->Name != 0; ++library)
        FindEntries(image, *library, function, entries_);
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
