# orlindex_discover_tests(<target> [<option of gtest_discover_tests>...]): one CTest test for each test of a GoogleTest
# program. The program is asked for its tests before a test run, not while it is built: there a busy machine would fail the
# build, and every test with it.

include(GoogleTest)

function(orlindex_discover_tests target)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 600 ${ARGN})
endfunction()
