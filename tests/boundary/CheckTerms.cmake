# The public headers explain values by the client plugin module, which gives them their meaning; hosts are not built
# against any one of its builds.
#
#     cmake -DHEADERS=<folder> -P CheckTerms.cmake

file(GLOB headers "${HEADERS}/*.h")
if(NOT headers)
    message(SEND_ERROR "${HEADERS} holds no headers")
endif()
foreach(header IN LISTS headers)
    file(STRINGS "${header}" lines REGEX "[Ss]imulator|[Aa]gent")
    foreach(line IN LISTS lines)
        message(SEND_ERROR "${header} explains a value by one plugin module: ${line}")
    endforeach()
endforeach()
