# Runs after cpack has written an archive. Makes archives with equal contents equal, no matter who packs them, when and where.

find_program(ORLINDEX_PYTHON NAMES python3 python)
if(NOT ORLINDEX_PYTHON)
    message(STATUS "There is no Python: the archive bears the times and the order of the packed files")
    return()
endif()
foreach(archive IN LISTS CPACK_PACKAGE_FILES)
    execute_process(COMMAND "${ORLINDEX_PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/normalize_zip.py" "${archive}"
                            COMMAND_ERROR_IS_FATAL ANY)
endforeach()
