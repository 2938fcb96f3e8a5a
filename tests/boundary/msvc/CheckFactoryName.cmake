# cmake -DCOMPILER= -DCPU= -DNM= -DSOURCE_ROOT= -DWORK= -P CheckFactoryName.cmake: what Microsoft's rules make of the
# factory's declaration is the reviewed name, to the letter, and the name that the library's loader looks up.

set(reviewed_x86_64 "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ")
set(reviewed_i686 "?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ")
set(reviewed "${reviewed_${CPU}}")

set(source "${WORK}/Factory-${CPU}.cpp")
file(
    WRITE "${source}"
    "#include \"load/contract/ISSOClientFactory.h\"
Kestrany::IdentityServices::ISSOClientFactory* GetSSOClientFactory()
{
    return nullptr;
}
")
execute_process(COMMAND "${COMPILER}" --target=${CPU}-pc-windows-msvc -std=c++17 -ffreestanding -nostdinc++ -isystem
                        "${SOURCE_ROOT}/tests/boundary/slots/std" "-I${SOURCE_ROOT}/src" "-I${SOURCE_ROOT}/include" -c
                        "${source}" -o "${source}.obj" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${NM}" --defined-only "${source}.obj" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "[?]GetSSOClientFactory[^ \r\n]*" found "${symbols}")
if(NOT found STREQUAL reviewed)
    message(FATAL_ERROR "the compiler's name is '${found}', the reviewed one '${reviewed}'")
endif()

foreach(file src/load/PluginLoader.cpp cmake/PluginModule.cmake)
    file(READ "${SOURCE_ROOT}/${file}" text)
    string(FIND "${text}" "\"${reviewed}\"" place)
    if(place EQUAL -1)
        message(SEND_ERROR "${file} does not name ${reviewed}")
    endif()
endforeach()
