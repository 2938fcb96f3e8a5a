# orlindex_discover_tests(<target> [<option of gtest_discover_tests>...]): one CTest test for each test of a GoogleTest
# program. CTest asks the program for its tests before a test run, not during the build: on a busy machine, a time-out during
# the build would fail the build and every test with it.

include(GoogleTest)

function(orlindex_discover_tests target)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 600 ${ARGN})
endfunction()
