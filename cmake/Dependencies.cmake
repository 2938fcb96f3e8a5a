# Libraries that the product is built from. Which supply they come from (.deps, Debian, vcpkg) is the preset's matter.

set(Boost_USE_STATIC_LIBS ON)
if(WIN32)
    find_package(Boost 1.81 CONFIG REQUIRED COMPONENTS filesystem)
else()
    find_package(Boost 1.81 CONFIG REQUIRED)
endif()
find_package(jsoncpp CONFIG REQUIRED)

if(ORLINDEX_BUILD_TESTS)
    find_package(GTest CONFIG REQUIRED)
    include(GoogleTest)
endif()
if(ORLINDEX_BUILD_BENCHMARKS)
    find_package(benchmark CONFIG REQUIRED)
endif()
