# cmake -DTOOL= -DCERTIFICATES= -DKEY= -DINPUT= -DOUTPUT= -P SignFile.cmake: signs INPUT and writes OUTPUT, without output if it
# succeeds. Each certificate file adds one signature; the first one is the main signature.

get_filename_component(folder "${OUTPUT}" DIRECTORY)
file(MAKE_DIRECTORY "${folder}")
# A signature contains its time. With SOURCE_DATE_EPOCH, equal builds give equal files.
set(time "")
if(NOT "$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
    set(time -time "$ENV{SOURCE_DATE_EPOCH}")
endif()
set(unsigned "${INPUT}")
set(nesting "")
foreach(certificate IN LISTS CERTIFICATES)
    file(REMOVE "${OUTPUT}.part") # the tool does not overwrite a file
    execute_process(COMMAND "${TOOL}" sign -h sha256 ${time} -certs "${certificate}" -key "${KEY}" ${nesting} -in "${unsigned}"
                            -out "${OUTPUT}.part" RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        file(REMOVE "${OUTPUT}" "${OUTPUT}.part")
        message(FATAL_ERROR "${INPUT} could not be signed:\n${output}")
    endif()
    file(RENAME "${OUTPUT}.part" "${OUTPUT}")
    set(unsigned "${OUTPUT}")
    set(nesting -nest)
endforeach()
