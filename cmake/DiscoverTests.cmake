# orlindex_discover_tests(<target> [TEST_PREFIX <prefix>] [TEST_FILTER <filter>] [<option of gtest_discover_tests>...]): one CTest
# test for each test of a GoogleTest program. CTest asks the program for its tests before a test run, not during the build: on a
# busy machine, a time-out during the build would fail the build and every test with it.

include(GoogleTest)

set(ORLINDEX_TEST_PREFIX "" CACHE STRING "Beginning of the name of every test, which tells the tests of two builds apart")
set(ORLINDEX_LEFT_OUT_TESTS "" CACHE FILEPATH "List of the tests that this build leaves out, as \"<name>: <reason>\"")

# orlindex_left_out(<prefix> <variable>): the tests that this build leaves out, without the prefix of their program.
function(orlindex_left_out prefix variable)
    set(names "")
    if(ORLINDEX_LEFT_OUT_TESTS)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${ORLINDEX_LEFT_OUT_TESTS}")
        file(STRINGS "${ORLINDEX_LEFT_OUT_TESTS}" lines REGEX "^[^#:]+: ")
        foreach(line IN LISTS lines)
            if(line MATCHES "^${prefix}([^:]+): ")
                list(APPEND names "${CMAKE_MATCH_1}")
            endif()
        endforeach()
    endif()
    set(${variable} "${names}" PARENT_SCOPE)
endfunction()

function(orlindex_discover_tests target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TEST_PREFIX;TEST_FILTER" "")
    # tests/microsoft compares the list with the programs.
    set_property(GLOBAL APPEND PROPERTY ORLINDEX_TEST_PROGRAMS "${arg_TEST_PREFIX}=$<TARGET_FILE:${target}>")
    orlindex_left_out("${arg_TEST_PREFIX}" leftOut)
    if(leftOut)
        list(JOIN leftOut ":" leftOut)
        if(arg_TEST_FILTER MATCHES "-")
            string(APPEND arg_TEST_FILTER ":${leftOut}")
        else()
            string(APPEND arg_TEST_FILTER "-${leftOut}")
        endif()
    endif()
    set(filter "")
    if(arg_TEST_FILTER)
        set(filter TEST_FILTER "${arg_TEST_FILTER}")
    endif()
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 600
                         TEST_PREFIX "${ORLINDEX_TEST_PREFIX}${arg_TEST_PREFIX}" ${filter} ${arg_UNPARSED_ARGUMENTS})
endfunction()
