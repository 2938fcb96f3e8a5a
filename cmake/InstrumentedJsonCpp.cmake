# JsonCpp::JsonCpp, compiled as part of this build: sanitizers only check instrumented code, and only such code guides a fuzzer.

file(GLOB archive "${PROJECT_SOURCE_DIR}/.deps/downloads/libjsoncpp_*.orig.tar.*")
list(LENGTH archive count)
if(NOT count EQUAL 1)
    message(
        FATAL_ERROR
            ".deps/downloads contains ${count} archives of JsonCpp's sources instead of one: run scripts/setup.sh --clean")
endif()

set(folder "${PROJECT_BINARY_DIR}/jsoncpp")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${folder}" PATTERNS "*/include/json/*" "*/src/lib_json/*")
file(GLOB sources "${folder}/*/src/lib_json/*.cpp")
file(GLOB include "${folder}/*/include")

add_library(instrumented_jsoncpp STATIC ${sources})
target_include_directories(instrumented_jsoncpp SYSTEM PUBLIC "${include}")
add_library(JsonCpp::JsonCpp ALIAS instrumented_jsoncpp)
