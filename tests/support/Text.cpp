#include "Text.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include <windows.h>

namespace OrlindexTest {

std::string ToUtf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::wstring ToWide(std::string_view utf8)
{
    const int length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), size);
    return text;
}

void WriteFile(const std::filesystem::path& file, std::string_view bytes)
{
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + Utf8(file));
}

std::string ReadFile(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + Utf8(file));
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace OrlindexTest
