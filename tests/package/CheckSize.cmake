# cmake -DFILE= -DLIMIT=<bytes> -P CheckSize.cmake

file(SIZE "${FILE}" size)
if(NOT size LESS LIMIT)
    message(FATAL_ERROR "${FILE} has ${size} bytes, the limit is ${LIMIT}: look at what came in with a link map "
                        "(-Wl,-Map) before raising it")
endif()
message(STATUS "${size} of ${LIMIT} bytes")
