# cmake -DTOOL= -DCERTIFICATES= -DKEY= -DINPUT= -DOUTPUT= -P SignFile.cmake: signs INPUT into OUTPUT, quietly where it
# succeeds.

get_filename_component(folder "${OUTPUT}" DIRECTORY)
file(MAKE_DIRECTORY "${folder}")
file(REMOVE "${OUTPUT}") # the tool does not write over a file
# A signature bears its time: for equal files from equal builds, the time that these agree on.
set(time "")
if(NOT "$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
    set(time -time "$ENV{SOURCE_DATE_EPOCH}")
endif()
execute_process(COMMAND "${TOOL}" sign -h sha256 ${time} -certs "${CERTIFICATES}" -key "${KEY}" -in "${INPUT}"
    -out "${OUTPUT}"
    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0)
    file(REMOVE "${OUTPUT}")
    message(FATAL_ERROR "${INPUT} could not be signed:\n${output}")
endif()
