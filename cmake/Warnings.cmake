# orlindex_warnings: the warning options of every target of this project.

option(ORLINDEX_WARNINGS_AS_ERRORS "A warning ends the build" OFF)

add_library(orlindex_warnings INTERFACE)
if(MSVC)
    target_compile_options(orlindex_warnings INTERFACE /W4 /permissive- /utf-8 /Zc:__cplusplus
                                                       $<$<BOOL:${ORLINDEX_WARNINGS_AS_ERRORS}>:/WX>)
    # Without it, sscanf and getenv of the standard library cause the warning C4996.
    target_compile_definitions(orlindex_warnings INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(orlindex_warnings
                           INTERFACE -Wall -Wextra -Wpedantic -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
                                     $<$<BOOL:${ORLINDEX_WARNINGS_AS_ERRORS}>:-Werror>)
endif()
