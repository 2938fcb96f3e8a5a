#include "signins/TokenFile.h"

#include <windows.h>

#include <dpapi.h>

#include "signins/Require.h"

namespace OrlindexBench {

namespace {

DATA_BLOB BlobOf(const std::string& bytes)
{
    return {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

} // namespace

void WriteProtected(const std::wstring& path, const std::string& text)
{
    DATA_BLOB input = BlobOf(text);
    const std::string purpose = "sign_in_floor";
    DATA_BLOB entropy = BlobOf(purpose);
    DATA_BLOB output{};
    Require(CryptProtectData(&input, nullptr, &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &output),
            "the tokens cannot be encrypted");
    const std::wstring next = path + L".new";
    const HANDLE file =
        CreateFileW(next.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    const bool isWritten = file != INVALID_HANDLE_VALUE &&
                           WriteFile(file, output.pbData, output.cbData, &written, nullptr) && FlushFileBuffers(file);
    CloseHandle(file);
    LocalFree(output.pbData);
    Require(isWritten && MoveFileExW(next.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH),
            "the tokens cannot be written");
}

} // namespace OrlindexBench
