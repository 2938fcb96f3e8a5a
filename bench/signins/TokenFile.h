#ifndef ORLINDEX_BENCH_SIGNINS_TOKENFILE_H
#define ORLINDEX_BENCH_SIGNINS_TOKENFILE_H

#include <string>

namespace OrlindexBench {

/// Encrypts a text for the user, and writes it to a file: after a crash, the file is the earlier one or the new one.
void WriteProtected(const std::wstring& path, const std::string& text);

} // namespace OrlindexBench

#endif
