#ifndef ORLINDEX_DOCTOR_ENTRYRECORDER_H
#define ORLINDEX_DOCTOR_ENTRYRECORDER_H

#include <cstddef>

#include "Report.h"
#include "StartFacts.h"

namespace Orlindex::Doctor {

/// Turns the elements of a version compatibility file into findings. A hostile file may have millions: the first of
/// each kind and the chosen one are told, the others counted.
class EntryRecorder
{
public:
    EntryRecorder(Report& report, StartFacts& facts) : report_(report), facts_(facts) {}

    void Add(const Ids::EntryFinding& finding);
    /// Tells how many were only counted.
    void Finish();

private:
    void AddHidden(std::size_t count, std::size_t total, Mark mark, const char* note);

    Report& report_;
    StartFacts& facts_;
    std::size_t hiddenDefective_ = 0;
    std::size_t hiddenSound_ = 0;
};

} // namespace Orlindex::Doctor

#endif
