# cmake -DCPACK= -DCONFIG= -DFOLDER= -DREVIEWED= -P MakeKit.cmake: packs the kit and unpacks it into FOLDER, without the
# archive's top folder; the files that the reviewed list names must be in it, and no foreign ones: no path of this machine.

get_filename_component(parent "${FOLDER}" DIRECTORY)
set(packed "${FOLDER}-packed")
file(REMOVE_RECURSE "${FOLDER}" "${packed}")
execute_process(COMMAND "${CPACK}" --config "${CONFIG}" -B "${packed}"
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
file(GLOB archive "${packed}/*.zip")
if(NOT status EQUAL 0 OR NOT archive)
    message(FATAL_ERROR "cpack ended with ${status}:\n${output}")
endif()
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${packed}/unpacked")
get_filename_component(name "${archive}" NAME_WLE)
file(RENAME "${packed}/unpacked/${name}" "${FOLDER}")

file(STRINGS "${REVIEWED}" reviewed)
foreach(file IN LISTS reviewed)
    if(NOT EXISTS "${FOLDER}/${file}")
        message(SEND_ERROR "not in the kit: ${file}")
    endif()
endforeach()

# Files that name the build tree would work on this machine alone.
get_filename_component(build "${CONFIG}" DIRECTORY)
file(GLOB_RECURSE texts "${FOLDER}/lib/*.cmake" "${FOLDER}/lib/*.pc" "${FOLDER}/licenses/*" "${FOLDER}/examples/*")
foreach(text IN LISTS texts)
    file(READ "${text}" content)
    string(FIND "${content}" "${build}" place)
    if(NOT place EQUAL -1)
        message(SEND_ERROR "${text} names the build tree")
    endif()
endforeach()
