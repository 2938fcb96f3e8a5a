# Compares the names that the built library exports with the reviewed list, and reports missing and new ones. A missing
# name breaks hosts; a new one has to stay for ever.
#
#     cmake -DLIBRARY=<dll> -DREADOBJ=<program> -DCPPFILT=<program> -DREVIEWED=<list> -P CheckExports.cmake

include("${CMAKE_CURRENT_LIST_DIR}/../support/Exports.cmake")
read_exports("${LIBRARY}" "${READOBJ}" decorated)
if(NOT decorated)
    message(FATAL_ERROR "${LIBRARY} exports nothing, or ${READOBJ} writes in another form than is read here")
endif()

execute_process(COMMAND "${CPPFILT}" ${decorated} OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY
                OUTPUT_STRIP_TRAILING_WHITESPACE)
string(REPLACE "\n" ";" exported "${exported}")
# The compiler exports a constructor under several names, which read the same.
list(REMOVE_DUPLICATES exported)
file(STRINGS "${REVIEWED}" reviewed)

set(sorted ${reviewed})
list(SORT sorted)
if(NOT sorted STREQUAL reviewed)
    message(SEND_ERROR "${REVIEWED} is not sorted")
endif()

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

set(flat ${decorated})
list(FILTER flat INCLUDE REGEX "^talix_")
list(LENGTH flat count)
if(NOT count EQUAL 32)
    message(SEND_ERROR "the flat interface has 32 functions, not ${count}")
endif()
