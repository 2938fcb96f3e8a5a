// Runs a fuzz target once on each file that is named, and on each file in a folder that is named.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsAt(const fs::path& place)
{
    if (!fs::is_directory(place))
        return {place};
    std::vector<fs::path> inputs;
    for (const fs::directory_entry& entry : fs::directory_iterator(place))
        inputs.push_back(entry.path());
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

void Replay(const fs::path& input)
{
    std::ifstream file(input, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot be read: " + input.string());
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // Of exactly that size, so that a sanitizer reports the first read beyond it.
    const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
    // Before the run: if that ends the process, the last name is that of the input.
    std::printf("%s\n", input.filename().string().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

} // namespace

int main(int count, char** arguments)
{
    try
    {
        std::size_t replayed = 0;
        for (int i = 1; i < count; ++i)
        {
            for (const fs::path& input : InputsAt(arguments[i]))
            {
                Replay(input);
                ++replayed;
            }
        }
        std::printf("%u inputs replayed\n", static_cast<unsigned>(replayed));
        std::printf("count: fuzz inputs replayed = %u\n", static_cast<unsigned>(replayed));
        return replayed > 0 ? 0 : 2;
    }
    catch (const std::exception& problem)
    {
        std::fprintf(stderr, "%s\n", problem.what());
        return 2;
    }
}
