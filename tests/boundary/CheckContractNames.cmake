# cmake -DCOMPILER= -DTRIPLE= -DSOURCE_ROOT= -P CheckContractNames.cmake: what a compiler makes of the declarations of the plugin
# contract is what the sources name, to the letter.

execute_process(
    COMMAND "${COMPILER}" --target=${TRIPLE} -std=c++17 -ffreestanding -nostdinc++ -DORLINDEX_BUILDING_LIBRARY -isystem
            "${SOURCE_ROOT}/tests/boundary/slots/std" "-I${SOURCE_ROOT}/src" "-I${SOURCE_ROOT}/include" -S -o -
            "${SOURCE_ROOT}/tests/boundary/ContractNames.cpp" OUTPUT_VARIABLE assembly COMMAND_ERROR_IS_FATAL ANY)

# The labels of the functions. 32-bit targets put an underscore before names that are not Microsoft's.
string(REGEX MATCHALL "\n\"?[?_][^\n]*(GetSSOClientFactory|13ProductConfig|@ProductConfig@)[^\n\"]*\"?:" labels "${assembly}")
list(TRANSFORM labels REPLACE "^\n\"?([^\"]*)\"?:$" "\\1")
if(TRIPLE MATCHES "^i686.*gnu")
    list(TRANSFORM labels REPLACE "^_(_.*)$" "\\1")
endif()

set(setters ${labels})
list(FILTER setters INCLUDE REGEX "Set(OAuth2|Product)")
list(LENGTH setters count)
if(NOT count EQUAL 5)
    message(FATAL_ERROR "the compiler made ${count} setters instead of 5: ${setters}")
endif()
foreach(name IN LISTS setters)
    string(FIND "${assembly}" "\"${name}\\000\"" asString)
    string(FIND "${assembly}" ".asciz\t\"${name}\"" place)
    if(place EQUAL -1 AND asString EQUAL -1)
        message(SEND_ERROR "ProductConfigLayout.h does not name ${name}")
    endif()
endforeach()

if(TRIPLE MATCHES "msvc")
    set(factory ${labels})
    list(FILTER factory INCLUDE REGEX "^[?]GetSSOClientFactory@@")
    foreach(file src/load/PluginLoader.cpp cmake/PluginModule.cmake)
        file(READ "${SOURCE_ROOT}/${file}" text)
        string(FIND "${text}" "\"${factory}\"" place)
        if(place EQUAL -1 OR NOT factory)
            message(SEND_ERROR "${file} does not name ${factory}")
        endif()
    endforeach()
endif()
