# Test programs and benchmark programs.
#
#   add_panel_test(<name>
#       SOURCES <file>...
#       [LIBRARIES <target>...]        linked besides GoogleTest and GoogleMock
#       [DEPENDS <target>...]          what it loads at run time
#       [DEFINITIONS <definition>...]
#       [ENVIRONMENT <NAME=VALUE>...]  added to the sanitizers' settings
#       [ARGUMENTS <argument>...]
#       [TIMEOUT <seconds>]            300 if not given
#       [RUN_SERIAL])
#
# One program is one test of ctest: starting a process is what takes the time under Wine. Its
# cases are reported in test-results/<name>.xml of the binary folder.
#
#   add_panel_benchmark(<name> SOURCES <file>... [LIBRARIES <target>...] [DEPENDS <target>...]
#       [DEFINITIONS <definition>...])
#
# A program of Google Benchmark, part of the target `benchmarks`. As a test, each of its rows
# below 10,000 runs once.

set(TEST_RESULTS_DIR ${CMAKE_BINARY_DIR}/test-results)
file(MAKE_DIRECTORY ${TEST_RESULTS_DIR})

add_custom_target(benchmarks)

set(SANITIZER_ENVIRONMENT
    "ASAN_OPTIONS=detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1")

function(add_panel_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;DEPENDS;DEFINITIONS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} project_options)
    target_compile_definitions(${name} PRIVATE ${arg_DEFINITIONS})
    if(arg_DEPENDS)
        add_dependencies(${name} ${arg_DEPENDS})
    endif()
endfunction()

function(add_panel_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "RUN_SERIAL" "TIMEOUT"
        "SOURCES;LIBRARIES;DEPENDS;DEFINITIONS;ENVIRONMENT;ARGUMENTS")
    if(NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "add_panel_test(${name}): no SOURCES, or what is ${arg_UNPARSED_ARGUMENTS}?")
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()

    add_panel_program(${name} SOURCES ${arg_SOURCES} DEPENDS ${arg_DEPENDS}
        DEFINITIONS ${arg_DEFINITIONS}
        LIBRARIES ${arg_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main)
    # The report's name is relative: an absolute one of this system is none of Windows'.
    add_test(NAME ${name}
        COMMAND ${name} --gtest_output=xml:${name}.xml ${arg_ARGUMENTS}
        WORKING_DIRECTORY ${TEST_RESULTS_DIR})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "${SANITIZER_ENVIRONMENT};${arg_ENVIRONMENT}"
        RUN_SERIAL ${arg_RUN_SERIAL}
        TIMEOUT ${arg_TIMEOUT})
endfunction()

function(add_panel_benchmark name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;DEPENDS;DEFINITIONS")
    if(NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR
            "add_panel_benchmark(${name}): no SOURCES, or what is ${arg_UNPARSED_ARGUMENTS}?")
    endif()

    add_panel_program(${name} SOURCES ${arg_SOURCES} DEPENDS ${arg_DEPENDS}
        DEFINITIONS ${arg_DEFINITIONS}
        LIBRARIES ${arg_LIBRARIES} benchmark::benchmark benchmark::benchmark_main)
    add_dependencies(benchmarks ${name})
    file(APPEND ${CMAKE_BINARY_DIR}/benchmark-programs.txt "${name}\n")

    add_test(NAME ${name}
        COMMAND ${name} --benchmark_min_time=0.001 "--benchmark_filter=-/[0-9]{5,}"
        WORKING_DIRECTORY ${TEST_RESULTS_DIR})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "${SANITIZER_ENVIRONMENT}"
        FAIL_REGULAR_EXPRESSION "ERROR OCCURRED;Failed to match any benchmarks"
        TIMEOUT 300)
endfunction()

file(REMOVE ${CMAKE_BINARY_DIR}/benchmark-programs.txt)
