# Compares the virtual tables that a compiler lays out under a target's rules with the reviewed table of slots, Slots.h.
#
#     cmake -DCOMPILER=<clang> -DTRIPLE=<triple> -DSOURCE_ROOT=<folder> -P CheckSlots.cmake
#
# A virtual destructor is one entry under Microsoft's rules and two under the Itanium ones: the complete destructor at the
# reviewed slot, the deleting one after it. So classes that begin with one have the reviewed slots only under Microsoft's
# rules. IObserver ends with its destructor, and no interface that plugins implement has one: their slots are the same
# everywhere.

set(here "${CMAKE_CURRENT_LIST_DIR}")
execute_process(COMMAND "${COMPILER}" --target=${TRIPLE} -std=c++17 -ffreestanding -nostdinc++ -isystem "${here}/std"
                        "-I${SOURCE_ROOT}/src" "-I${SOURCE_ROOT}/include" -DORLINDEX_BUILDING_LIBRARY -Xclang
                        -fdump-vtable-layouts -S -o - "${here}/Interfaces.cpp" OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
set(operation "PluginOperation ([A-Za-z0-9]+){\"([A-Za-z]+)\", ([0-9]+), \"(~?[A-Za-z0-9]+)\"}")
file(STRINGS "${SOURCE_ROOT}/tests/plugin/Slots.h" lines REGEX "${operation}")
set(reviewed "")
foreach(line IN LISTS lines)
    string(REGEX MATCH "${operation}" line "${line}")
    set(constant "${CMAKE_MATCH_1}")
    set(name "${CMAKE_MATCH_4}")
    list(APPEND reviewed "${CMAKE_MATCH_2} ${CMAKE_MATCH_3} ${name}")
    if(NOT name STREQUAL constant AND NOT name MATCHES "^~")
        message(SEND_ERROR "the constant ${constant} has the name ${name}")
    endif()
endforeach()
list(LENGTH reviewed count)
if(count LESS 100)
    message(FATAL_ERROR "only ${count} slots were recognised in Slots.h")
endif()

if(TRIPLE MATCHES "msvc")
    set(firstSlot 1) # The entry before it is the type's description.
else()
    set(firstSlot 2)
    list(FILTER reviewed EXCLUDE REGEX "^(BaseConfig|ProductConfig) ")
    foreach(line IN LISTS reviewed)
        if(line MATCHES "^([A-Za-z]+) ([0-9]+) (~.*)$")
            math(EXPR slot "${CMAKE_MATCH_2} + 1")
            list(APPEND reviewed "${CMAKE_MATCH_1} ${slot} ${CMAKE_MATCH_3}")
        endif()
    endforeach()
endif()

# "   6 | bool Kestrany::IdentityServices::ISSOClient::IsLoggedIn() [pure]", and destructors, which are not pure.
string(REGEX MATCHALL "[0-9]+ \\| [^\n]*\\[(pure|scalar deleting|complete|deleting)\\]" entries "${dump}")
set(found "")
foreach(entry IN LISTS entries)
    if(entry MATCHES "^([0-9]+) \\| [^(]*Kestrany::IdentityServices::([A-Za-z]+)::(~?[A-Za-z0-9_]+)\\(")
        math(EXPR slot "${CMAKE_MATCH_1} - ${firstSlot}")
        set(line "${CMAKE_MATCH_2} ${slot} ${CMAKE_MATCH_3}")
        if(slot GREATER_EQUAL 0 AND (TRIPLE MATCHES "msvc" OR NOT line MATCHES "^BaseConfig "))
            list(APPEND found "${line}")
        endif()
    endif()
endforeach()
list(REMOVE_DUPLICATES found)

set(missing ${reviewed})
list(REMOVE_ITEM missing ${found})
foreach(line IN LISTS missing)
    message(SEND_ERROR "not at its slot: ${line}")
endforeach()

# The dump lists destructors a second time, with numbers that count from the first slot.
set(new ${found})
list(REMOVE_ITEM new ${reviewed})
list(FILTER new EXCLUDE REGEX " ~")
foreach(line IN LISTS new)
    message(SEND_ERROR "at a slot that is not reviewed: ${line}")
endforeach()
