# Keeps Orlindex.dll below the size that tests/package bounds: hosts ship it, and none of its work is worth the code that
# CMake's default -O3 unrolls. What nothing refers to is left out, and so is the runtime's printer of uncaught exceptions
# (src/base/TerminateHandler.cpp).

if(MINGW)
    foreach(language C CXX)
        string(REPLACE "-O3" "-O2" CMAKE_${language}_FLAGS_RELEASE "${CMAKE_${language}_FLAGS_RELEASE}")
    endforeach()
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options($<$<CONFIG:Release>:-Wl,--gc-sections>)
endif()
