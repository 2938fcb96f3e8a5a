#ifndef ORLINDEX_DOCTOR_TESTS_DAMAGEDMODULE_H
#define ORLINDEX_DOCTOR_TESTS_DAMAGEDMODULE_H

#include <string>

namespace OrlindexTest {

/// What is wrong with the version resource of a module.
enum class ResourceDamage
{
    Size,       ///< It claims a megabyte.
    Address,    ///< It lies at the end of the address space.
    SectionSize ///< The section that holds it claims to fill the address space.
};

/// A sound module's bytes, but for that. Throws std::runtime_error if the module has no version resource.
std::string WithDamage(std::string module, ResourceDamage damage);

} // namespace OrlindexTest

#endif
