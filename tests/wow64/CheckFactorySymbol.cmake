# cmake -DOBJDUMP= -DMODULE= -P CheckFactorySymbol.cmake: a 32-bit plugin module exports its factory under the name that
# 32-bit processes look up, and nothing else.

if(NOT EXISTS "${MODULE}")
    message("skipped: there is no 32-bit build: ${MODULE}")
    return()
endif()
execute_process(COMMAND "${OBJDUMP}" -p "${MODULE}" OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
if(NOT dump MATCHES "file format pei-i386")
    message(FATAL_ERROR "${MODULE} is no 32-bit module")
endif()
string(REGEX MATCHALL "\n\t\\[ +[0-9]+\\] [^ \n]+\n" names "${dump}")
if(NOT names MATCHES "^\n\t\\[ +0\\] [?]GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ\n$")
    message(FATAL_ERROR "${MODULE} exports: ${names}")
endif()
