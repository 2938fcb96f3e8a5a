# Runs at the end of an installation, with SOURCE set to the source tree. Makes the reference from the headers, and adapts the
# links of the pages to the installed files.

set(kit "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")

find_program(ORLINDEX_DOXYGEN doxygen)
find_program(ORLINDEX_BASH bash)
if(ORLINDEX_DOXYGEN AND ORLINDEX_BASH)
    set(made "${kit}/docs/reference.part")
    file(REMOVE_RECURSE "${made}" "${kit}/docs/reference")
    execute_process(COMMAND "${ORLINDEX_BASH}" "${SOURCE}/scripts/reference.sh" "${made}" RESULT_VARIABLE status
                    OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "scripts/reference.sh failed:\n${output}")
    endif()
    file(RENAME "${made}/html" "${kit}/docs/reference")
    file(REMOVE_RECURSE "${made}")
else()
    message(STATUS "doxygen was not found: the kit does not contain docs/reference")
endif()

find_program(ORLINDEX_PYTHON NAMES python3 python)
if(ORLINDEX_PYTHON)
    execute_process(COMMAND "${ORLINDEX_PYTHON}" -B "${CMAKE_CURRENT_LIST_DIR}/pages.py" "${kit}" COMMAND_ERROR_IS_FATAL ANY)
else()
    message(WARNING "Python was not found: the pages keep their links into the source tree")
endif()
