# JsonCpp::JsonCpp, compiled as part of this build: a sanitizer sees, and a fuzzer is led by, instrumented code only.

file(GLOB archive "${PROJECT_SOURCE_DIR}/.deps/downloads/libjsoncpp_*.orig.tar.*")
list(LENGTH archive count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "${count} archives of JsonCpp's sources in .deps/downloads, one is needed: run scripts/setup.sh --clean")
endif()

set(folder "${PROJECT_BINARY_DIR}/jsoncpp")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${folder}" PATTERNS "*/include/json/*" "*/src/lib_json/*")
file(GLOB sources "${folder}/*/src/lib_json/*.cpp")
file(GLOB include "${folder}/*/include")

add_library(instrumented_jsoncpp STATIC ${sources})
target_include_directories(instrumented_jsoncpp SYSTEM PUBLIC "${include}")
add_library(JsonCpp::JsonCpp ALIAS instrumented_jsoncpp)
