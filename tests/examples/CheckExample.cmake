# Installs a build, or unpacks an archive, builds an example of it from nothing else, and runs it: it
# must end with 0 and write what is expected, and end with 1 and a line on standard error without its
# module.
#
#   cmake -DBUILD=<folder>|-DARCHIVE=<file> -DEXAMPLE=<name> -DEXPECTED=<file> -DSCRATCH=<folder>
#       -DTOOLCHAIN=<file> -DCOMPILER=<file> -DFLAGS=<flags> -DEMULATOR=<command;...>
#       -P CheckExample.cmake

function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output
        RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN} fails with ${status}\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE ${SCRATCH})  # of a former run
if(ARCHIVE)
    file(ARCHIVE_EXTRACT INPUT ${ARCHIVE} DESTINATION ${SCRATCH}/unpacked)
    file(GLOB unpacked ${SCRATCH}/unpacked/*)
    file(RENAME ${unpacked} ${SCRATCH}/prefix)
else()
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${SCRATCH}/prefix)
endif()

run(${CMAKE_COMMAND} -G Ninja -B ${SCRATCH}/build
    -S ${SCRATCH}/prefix/share/comments-panel/examples/${EXAMPLE}
    -DCommentsPanel_DIR=${SCRATCH}/prefix/lib/cmake/CommentsPanel
    -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_CXX_COMPILER=${COMPILER}
    "-DCMAKE_CXX_FLAGS=${FLAGS}")
run(${CMAKE_COMMAND} --build ${SCRATCH}/build)
file(GLOB program ${SCRATCH}/build/${EXAMPLE} ${SCRATCH}/build/${EXAMPLE}.exe)

# run_example(<argument>...) sets `status`, `output` and `errors`.
macro(run_example)
    execute_process(COMMAND ${EMULATOR} ${program} ${ARGN}
        OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE status)
    string(REPLACE "\r\n" "\n" output "${output}")
    string(REPLACE "\r\n" "\n" errors "${errors}")
endmacro()

run_example()
file(READ ${EXPECTED} expected)
if(NOT status EQUAL 0 OR NOT output STREQUAL expected OR NOT errors STREQUAL "")
    message(FATAL_ERROR "The example ends with ${status} and writes\n${output}${errors}\n"
        "It should write\n${expected}")
endif()

run_example(no-such-module)
if(NOT status EQUAL 1 OR NOT output STREQUAL ""
        OR NOT errors MATCHES "^${EXAMPLE}: no-such-module cannot be loaded\n$")
    message(FATAL_ERROR "Without a module the example ends with ${status} and writes\n"
        "${output}${errors}")
endif()
