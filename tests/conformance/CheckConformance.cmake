# Fails unless the tool finds exactly the promises of a list broken.
#
#   cmake -DTOOL=<conformance> -DEMULATOR=<command> -DMODULE=<file> -DONLY=<prefix>
#         "-DBROKEN=<promise;...>" -P CheckConformance.cmake

execute_process(COMMAND ${EMULATOR} ${TOOL} ${MODULE} ${ONLY}
    OUTPUT_VARIABLE output RESULT_VARIABLE status)
message("${output}")
string(REGEX MATCHALL "FAIL [^ :]+" lines "${output}")
list(TRANSFORM lines REPLACE "FAIL " "")
list(SORT lines)
list(SORT BROKEN)
if(NOT lines STREQUAL BROKEN)
    message(FATAL_ERROR "broken are\n  ${lines}\nand should be\n  ${BROKEN}")
endif()
if(NOT output MATCHES "[0-9]+ promises: [0-9]+ kept, [0-9]+ broken")
    message(FATAL_ERROR "the tool did not come to its end")
endif()
if((BROKEN AND NOT status EQUAL 1) OR (NOT BROKEN AND NOT status EQUAL 0))
    message(FATAL_ERROR "the exit status is ${status}")
endif()
