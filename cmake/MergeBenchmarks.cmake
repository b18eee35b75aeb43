# Puts the reports of several benchmark programs into one: the rows of all, the context of the
# first.
#
#   cmake -DRESULTS=<folder of reports> -DOUTPUT=<file> -P MergeBenchmarks.cmake

file(GLOB reports ${RESULTS}/*.json)
set(rows "")
set(merged "")
foreach(report IN LISTS reports)
    file(READ ${report} content)
    if(content STREQUAL "")
        continue()  # a filter that none of the program's rows passed
    endif()
    if(merged STREQUAL "")
        set(merged "${content}")
    endif()
    string(JSON count LENGTH "${content}" benchmarks)
    if(count GREATER 0)
        math(EXPR last "${count} - 1")
        foreach(index RANGE ${last})
            string(JSON row GET "${content}" benchmarks ${index})
            string(APPEND rows ",\n${row}")
        endforeach()
    endif()
endforeach()
if(rows STREQUAL "")
    message(FATAL_ERROR "There are no results in ${RESULTS}")
endif()
string(SUBSTRING "${rows}" 1 -1 rows)
string(JSON merged SET "${merged}" benchmarks "[${rows}]")
file(WRITE "${OUTPUT}" "${merged}\n")
