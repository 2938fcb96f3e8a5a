// Apart from ModuleBytes.h, which is portable: damages real modules by means of the platform's structures.
#ifndef ORLINDEX_DOCTOR_TESTS_DAMAGEDMODULE_H
#define ORLINDEX_DOCTOR_TESTS_DAMAGEDMODULE_H

#include <string>

namespace OrlindexTest {

/// What is wrong with the version resource of a module.
enum class ResourceDamage
{
    Size,       ///< Its size is a megabyte.
    Address,    ///< Its address is at the end of the address space.
    SectionSize ///< The size of its section is four gigabytes.
};

/// The bytes of a good module with that damage. Throws std::runtime_error if the module has no version resource.
std::string WithDamage(std::string module, ResourceDamage damage);

} // namespace OrlindexTest

#endif
