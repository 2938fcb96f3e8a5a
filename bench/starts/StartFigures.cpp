#include "starts/StartFigures.h"

#include <fstream>
#include <stdexcept>

namespace OrlindexBench {
namespace {

constexpr char fileName[] = "figures.txt";

} // namespace

void WriteStartFigures(const StartFigures& figures)
{
    std::ofstream file(fileName);
    file.precision(15);
    for (const double figure :
         {figures.total, figures.trust, figures.load, figures.registry, figures.files, figures.account})
        file << figure << '\n';
}

StartFigures TakeStartFigures(const std::filesystem::path& directory)
{
    StartFigures figures;
    std::ifstream file(directory / fileName);
    file >> figures.total >> figures.trust >> figures.load >> figures.registry >> figures.files >> figures.account;
    if (!file)
        throw std::runtime_error("a program that starts left no figures");
    file.close();
    std::filesystem::remove(directory / fileName);
    return figures;
}

} // namespace OrlindexBench
