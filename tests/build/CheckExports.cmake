# Fails unless a library exports exactly the names of a list, and on Windows asks for nothing but
# libraries of the system and the host.
#
#   cmake -DMODULE=<file> -DNM=<nm> -DOBJDUMP=<objdump> -DEXPECTED=<name;...> -P CheckExports.cmake

if(MODULE MATCHES "\\.dll$")
    execute_process(COMMAND ${OBJDUMP} -p ${MODULE}
        OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE ".*\\[Ordinal/Name Pointer\\] Table[^\n]*\n" "" output "${output}")
    string(REGEX REPLACE "\n\n.*" "" output "${output}")
    set(name "\\[ *[0-9]+\\][^\n]* ([^ \n]+)")
else()
    execute_process(COMMAND ${NM} --dynamic --defined-only ${MODULE}
        OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    set(name "[0-9a-f]* [A-Za-z] ([^ \n]+)")
endif()

string(REGEX MATCHALL "${name}" entries "${output}")
set(actual "")
foreach(entry IN LISTS entries)
    string(REGEX REPLACE "${name}" "\\1" entry "${entry}")
    list(APPEND actual ${entry})
endforeach()

list(SORT actual)
list(SORT EXPECTED)
if(NOT actual STREQUAL EXPECTED)
    message(FATAL_ERROR "${MODULE} exports\n  ${actual}\nand should export\n  ${EXPECTED}")
endif()
message("${MODULE} exports ${actual}")

if(MODULE MATCHES "\\.dll$")
    execute_process(COMMAND ${OBJDUMP} -p ${MODULE}
        OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "DLL Name: [^\r\n]+" imports "${output}")
    list(TRANSFORM imports REPLACE "DLL Name: " "")
    set(others ${imports})
    list(FILTER others EXCLUDE REGEX
        "^(KERNEL32|msvcrt|bcrypt|vx-atom|vx-service-provider|vx-encoding)\\.dll$")
    if(NOT imports OR others)
        message(FATAL_ERROR "${MODULE} asks for ${imports}, among which ${others} should not be")
    endif()
endif()
