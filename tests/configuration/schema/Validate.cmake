# cmake -DNODE= -DVALIDATOR= -DSCHEMA= -DSTATUS= -DFILES= -P Validate.cmake: validates files, and compares the validator's exit
# code: 0 all valid, 1 not all valid, 2 a schema or a call that it cannot use.

if(NOT FILES)
    message(FATAL_ERROR "there is no sample to validate")
endif()
execute_process(COMMAND "${NODE}" "${VALIDATOR}" "${SCHEMA}" ${FILES} RESULT_VARIABLE status OUTPUT_VARIABLE output
                ERROR_VARIABLE output)
message("${output}")
if(NOT status EQUAL STATUS)
    message(FATAL_ERROR "the validator ended with ${status}, expected ${STATUS}")
endif()
