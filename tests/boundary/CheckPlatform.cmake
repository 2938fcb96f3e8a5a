# cmake -DTESTS=<folder> -P CheckPlatform.cmake: the test programs also run on Windows. Only tests/support/Platform.cpp knows what
# is different under Wine, and no program knows the paths, the prefix or the variables of Wine, or of the machine that builds.

file(GLOB_RECURSE sources "${TESTS}/*.cpp" "${TESTS}/*.h" "${TESTS}/*.c")
list(FILTER sources EXCLUDE REGEX "/tests/(microsoft|node)/|/support/Platform[.](cpp|h)$")
list(LENGTH sources count)
if(count LESS 100)
    message(FATAL_ERROR "only ${count} sources were found in ${TESTS}")
endif()
foreach(source IN LISTS sources) # Windows' own names begin with WINEVENT.
    file(STRINGS "${source}" lines REGEX "[Ww]ine[^a-z]|WINE([^V]|$)|drive_c|\"/(usr|tmp|etc|home|proc)/")
    foreach(line IN LISTS lines)
        message(SEND_ERROR "${source}: ${line}")
    endforeach()
endforeach()
