# cmake -DBASH= -DSCRIPT=scripts/package.sh -DBUILD= -DFOLDER= -DREVIEWED= -P MakeKit.cmake: packs the kit of a build
# into FOLDER-packed and unpacks it into FOLDER, without the archive's top folder; the files in it are those that the
# reviewed list names, where a * stands for a part of a name, and none of them names a path of this machine.

set(packed "${FOLDER}-packed")
file(REMOVE_RECURSE "${FOLDER}" "${packed}")
execute_process(COMMAND "${BASH}" "${SCRIPT}" --build-dir "${BUILD}" --output "${packed}" RESULT_VARIABLE status
                OUTPUT_VARIABLE output ERROR_VARIABLE output)
file(GLOB archive "${packed}/*.zip")
if(NOT status EQUAL 0 OR NOT archive)
    message(FATAL_ERROR "${SCRIPT} ended with ${status}:\n${output}")
endif()
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${packed}/unpacked")
get_filename_component(name "${archive}" NAME_WLE)
file(RENAME "${packed}/unpacked/${name}" "${FOLDER}")

file(GLOB_RECURSE files RELATIVE "${FOLDER}" "${FOLDER}/*")
file(STRINGS "${REVIEWED}" reviewed)
set(foreign ${files})
foreach(pattern IN LISTS reviewed)
    string(REGEX REPLACE "([.+])" "[\\1]" expression "${pattern}")
    string(REPLACE "*" "[^/]*" expression "${expression}")
    set(matched ${files})
    list(FILTER matched INCLUDE REGEX "^${expression}$")
    if(NOT matched)
        message(SEND_ERROR "not in the kit: ${pattern}")
    endif()
    list(FILTER foreign EXCLUDE REGEX "^${expression}$")
endforeach()
foreach(file IN LISTS foreign)
    message(SEND_ERROR "in the kit, but not in ${REVIEWED}: ${file}")
endforeach()

# The kit contains what the script reports.
foreach(file IN LISTS files)
    string(FIND "${output}" "  ${file}\n" place)
    if(place EQUAL -1)
        message(SEND_ERROR "${SCRIPT} does not say that it packed ${file}")
    endif()
endforeach()

# Files with the path of the build tree would only work on this machine.
get_filename_component(source "${SCRIPT}/../.." ABSOLUTE)
list(FILTER files EXCLUDE REGEX "[.](dll|exe|a|ico|lib|png)$")
foreach(file IN LISTS files)
    file(READ "${FOLDER}/${file}" content)
    foreach(folder IN ITEMS "${BUILD}" "${source}/")
        string(FIND "${content}" "${folder}" place)
        if(NOT place EQUAL -1)
            message(SEND_ERROR "${file} names ${folder}")
        endif()
    endforeach()
endforeach()
