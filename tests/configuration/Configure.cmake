# cmake -DPROJECT= -DFOLDER= -DSTATUS= -DTEXT= -DSETTING= -P Configure.cmake: configures PROJECT in FOLDER with at
# most one setting, and compares the status and the text of all that was said and written.

# Each case starts from the defaults; the certificates stay.
file(REMOVE "${FOLDER}/CMakeCache.txt" "${FOLDER}/generated/BuildData.h")
if(SETTING)
    # The semicolons of a value are not to split it here.
    string(REPLACE ";" "\\;" setting "-D${SETTING}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -S "${PROJECT}" -B "${FOLDER}" ${setting} RESULT_VARIABLE status OUTPUT_VARIABLE said
                ERROR_VARIABLE said)
set(written "")
if(EXISTS "${FOLDER}/generated/BuildData.h")
    file(READ "${FOLDER}/generated/BuildData.h" written)
endif()
string(REGEX REPLACE "[ \n]+" " " found "${said} ${written}")
if(NOT status EQUAL STATUS OR NOT found MATCHES "${TEXT}")
    message(FATAL_ERROR "status ${status}, expected ${STATUS}; text expected: ${TEXT}\n${said}\n${written}")
endif()
