# cmake -DFILE= -P CheckCompatibilityFile.cmake: the version compatibility file of a 32-bit build names its module by the
# key that a 32-bit process on 64-bit Windows reads, and offers none to 64-bit processes.

if(NOT EXISTS "${FILE}")
    message("skipped: there is no 32-bit build: ${FILE}")
    return()
endif()
file(READ "${FILE}" document)
string(JSON path ERROR_VARIABLE missing GET "${document}" ssoClientPlugin 0 modulePathWoW64)
string(JSON other ERROR_VARIABLE none GET "${document}" ssoClientPlugin 0 modulePath)
if(missing OR NOT path STREQUAL "%SSOServerAppPath%/PellwickClient.dll" OR NOT none)
    message(FATAL_ERROR "no module for 32-bit processes alone: ${document}")
endif()
