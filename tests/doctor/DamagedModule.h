#ifndef ORLINDEX_DOCTOR_TESTS_DAMAGEDMODULE_H
#define ORLINDEX_DOCTOR_TESTS_DAMAGEDMODULE_H

#include <string>

namespace OrlindexTest {

/// What is wrong with the version resource of a module.
enum class ResourceDamage
{
    Size,       ///< Its size is a megabyte.
    Address,    ///< Its address is at the end of the address space.
    SectionSize ///< Its section has the size of the address space.
};

/// The bytes of a valid module with this defect. Throws std::runtime_error if the module has no version resource.
std::string WithDamage(std::string module, ResourceDamage damage);

} // namespace OrlindexTest

#endif
