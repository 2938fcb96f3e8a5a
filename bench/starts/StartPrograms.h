#ifndef ORLINDEX_BENCH_STARTPROGRAMS_H
#define ORLINDEX_BENCH_STARTPROGRAMS_H

#include "starts/StartFigures.h"

namespace OrlindexBench {

/// Each runs its program in a new process and returns the program's figures; throws if it fails.
StartFigures StartLibrary();
StartFigures StartFloor();

} // namespace OrlindexBench

#endif
