# What all of the project's own code is compiled with: link `project_options` privately.

set(COMMENTS_SANITIZERS "" CACHE STRING "Sanitizers of gcc and clang, separated by commas")
option(COMMENTS_FUZZ "Build the fuzz targets (clang only)" OFF)

find_package(Threads REQUIRED)

add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_compile_options(project_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wnon-virtual-dtor -Wold-style-cast -Werror>)
target_link_libraries(project_options INTERFACE Threads::Threads)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # clang leaves atomics of odd sizes to a library.
    target_link_libraries(project_options INTERFACE atomic)
endif()

# Sanitizers watch every file, third-party sources that are built here too.
if(COMMENTS_SANITIZERS)
    # What they add to the code makes gcc 12 see uninitialised values in std::function and regex.
    target_compile_options(project_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    # gcc's thread sanitizer says that it does not follow fences, which the network library has.
    if(COMMENTS_SANITIZERS STREQUAL "thread")
        target_compile_options(project_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    endif()
    add_compile_options(-fsanitize=${COMMENTS_SANITIZERS} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${COMMENTS_SANITIZERS})
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
if(COMMENTS_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# A library that is unloaded must really go: unique symbols would pin it in the process.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

if(WIN32)
    # Every library and program brings the compiler's runtimes along and asks for nothing but the
    # system's libraries and the host's. Exceptions cross between runtimes of one compiler.
    add_link_options(-static -Wl,--no-insert-timestamp)
    add_library(linked-runtime INTERFACE)
    target_sources(linked-runtime INTERFACE
        ${PROJECT_SOURCE_DIR}/Support/src/platform/LinkedRuntimeWindows.cpp)
else()
    # A module that lacks a function should fail here and not on its first load.
    if(NOT COMMENTS_SANITIZERS)
        add_link_options(-Wl,--no-undefined)
    endif()
endif()
