# Compares the names that a library of Microsoft's ABI exports with the reviewed list, and reports missing and new ones.
#
#     cmake -DLIBRARY=<dll> -DREADOBJ=<program> -DREVIEWED=<list> -P CheckDecoratedExports.cmake
#
# A name is compared to the letter. Types of the standard library have another name in each standard library, and so has every
# member that takes one: the list has the member's name and its class, and ends with a star.

include("${CMAKE_CURRENT_LIST_DIR}/../support/Exports.cmake")
read_exports("${LIBRARY}" "${READOBJ}" exported)
if(NOT exported)
    message(FATAL_ERROR "${LIBRARY} exports nothing, or ${READOBJ} writes in another form than is read here")
endif()
# One name may have several overloads, which then stay several lines.
list(TRANSFORM exported REPLACE "^([?][A-Za-z0-9_]+(@[A-Za-z0-9_]+)+@@).*@std@@.*$" "\\1*")
list(SORT exported)
file(STRINGS "${REVIEWED}" reviewed)

if(NOT exported STREQUAL reviewed)
    set(missing ${reviewed})
    list(REMOVE_ITEM missing ${exported})
    foreach(name IN LISTS missing)
        message(SEND_ERROR "missing: ${name}")
    endforeach()
    set(new ${exported})
    list(REMOVE_ITEM new ${reviewed})
    foreach(name IN LISTS new)
        message(SEND_ERROR "new: ${name}")
    endforeach()
    list(JOIN exported "\n" text)
    message(FATAL_ERROR "the library exports:\n${text}")
endif()

set(flat ${exported})
list(FILTER flat INCLUDE REGEX "^talix_")
list(LENGTH flat count)
if(NOT count EQUAL 32)
    message(SEND_ERROR "the flat interface has 32 functions, not ${count}")
endif()
