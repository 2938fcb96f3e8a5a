# Boost's own CMake build installs one package for each library and none for the whole; this is the missing one, so
# that `find_package(Boost CONFIG COMPONENTS ...)` reads the same with every supply of Boost.

include(CMakeFindDependencyMacro)

get_filename_component(Boost_INCLUDE_DIRS "${CMAKE_CURRENT_LIST_DIR}/../../../include" ABSOLUTE)
set(Boost_INCLUDE_DIR "${Boost_INCLUDE_DIRS}")
set(Boost_LIBRARIES "")

if(NOT TARGET Boost::headers)
    add_library(Boost::headers INTERFACE IMPORTED)
    set_target_properties(Boost::headers PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${Boost_INCLUDE_DIRS}")
endif()
if(NOT TARGET Boost::boost)
    add_library(Boost::boost INTERFACE IMPORTED)
    set_target_properties(Boost::boost PROPERTIES INTERFACE_LINK_LIBRARIES Boost::headers)
endif()

foreach(component IN LISTS Boost_FIND_COMPONENTS)
    find_dependency(boost_${component} ${Boost_VERSION} EXACT CONFIG)
    set(Boost_${component}_FOUND ${boost_${component}_FOUND})
    list(APPEND Boost_LIBRARIES Boost::${component})
endforeach()
