# cmake -DEXPORTS=<def> -DMODULE=<file name> -DOUTPUT=<def> -P FlatDefinition.cmake: writes a module definition file that contains
# only the flat functions of another one.

file(STRINGS "${EXPORTS}" lines REGEX "^ +talix_[a-z_]+ @[0-9]+")
if(NOT lines)
    message(FATAL_ERROR "${EXPORTS} does not name a flat function")
endif()
list(TRANSFORM lines REPLACE "^ +(talix_[a-z_]+) .*" "    \\1")
list(JOIN lines "\n" lines)
file(WRITE "${OUTPUT}" "LIBRARY ${MODULE}\nEXPORTS\n${lines}\n")
