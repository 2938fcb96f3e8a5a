# cmake -DREADOBJ= -DMODULE= -P CheckFactorySymbol.cmake: a 32-bit plugin module exports its factory under the name that
# 32-bit processes look up, and nothing else.

if(NOT EXISTS "${MODULE}")
    message("skipped: there is no 32-bit build: ${MODULE}")
    return()
endif()
include("${CMAKE_CURRENT_LIST_DIR}/../support/Exports.cmake")
execute_process(COMMAND "${READOBJ}" --file-headers "${MODULE}" OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
if(NOT headers MATCHES "Format: COFF-i386\n")
    message(FATAL_ERROR "${MODULE} is no 32-bit module")
endif()
read_exports("${MODULE}" "${READOBJ}" names)
if(NOT names STREQUAL "?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ")
    message(FATAL_ERROR "${MODULE} exports: ${names}")
endif()
