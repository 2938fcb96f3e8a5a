#ifndef ORLINDEX_DOCTOR_ENTRYRECORDER_H
#define ORLINDEX_DOCTOR_ENTRYRECORDER_H

#include <cstddef>

#include "Report.h"
#include "StartUpFacts.h"

namespace Orlindex::Doctor {

/// Makes findings of the elements of a version compatibility file. A hostile file may contain millions: the first of
/// each kind and the chosen one are reported, the others counted.
class EntryRecorder
{
public:
    EntryRecorder(Report& report, StartUpFacts& facts) : report_(report), facts_(facts) {}

    void Add(const Ids::EntryFinding& finding);
    /// Reports how many were only counted.
    void Finish();

private:
    void AddHidden(std::size_t count, std::size_t total, Mark mark, const char* note);

    Report& report_;
    StartUpFacts& facts_;
    std::size_t hiddenDefective_ = 0;
    std::size_t hiddenValid_ = 0;
};

} // namespace Orlindex::Doctor

#endif
