# Third-party code under the same target names on both systems:
#
#   boost::headers  nlohmann::json  cli11::cli11      headers only
#   qpdf::qpdf  boost::url  boost::network            Linux only
#   GTest::gtest  GTest::gtest_main  GTest::gmock  GTest::gmock_main    for tests
#   benchmark::benchmark  gumbo::gumbo                for tests, Linux only
#
# A Linux machine has them as packages. For Windows the headers are those same packages' files,
# seen through a folder that holds nothing else, and libraries are built from their sources.

set(SYSTEM_INCLUDE_DIR /usr/include)
set(LINKED_INCLUDE_DIR ${CMAKE_BINARY_DIR}/third-party/include)

# An interface target for a library of headers that lies in a folder of the system's includes.
function(add_header_library target folder header)
    if(NOT EXISTS ${SYSTEM_INCLUDE_DIR}/${folder}/${header})
        message(FATAL_ERROR "${SYSTEM_INCLUDE_DIR}/${folder}/${header} is missing: "
            "tools/setup/install puts all packages into place")
    endif()
    add_library(${target} INTERFACE IMPORTED GLOBAL)
    if(CMAKE_CROSSCOMPILING)
        file(MAKE_DIRECTORY ${LINKED_INCLUDE_DIR})
        file(CREATE_LINK ${SYSTEM_INCLUDE_DIR}/${folder} ${LINKED_INCLUDE_DIR}/${folder} SYMBOLIC)
        target_include_directories(${target} SYSTEM INTERFACE ${LINKED_INCLUDE_DIR})
    endif()
endfunction()

add_header_library(boost::headers boost version.hpp)
add_header_library(nlohmann::json nlohmann json.hpp)
add_header_library(cli11::cli11 CLI CLI.hpp)

file(STRINGS ${SYSTEM_INCLUDE_DIR}/boost/version.hpp boostVersion REGEX "#define BOOST_VERSION ")
string(REGEX MATCH "[0-9]+$" boostVersion "${boostVersion}")
if(boostVersion LESS 108100)
    message(FATAL_ERROR "Boost 1.81 or newer is needed, ${SYSTEM_INCLUDE_DIR}/boost is ${boostVersion}")
endif()
target_compile_definitions(boost::headers INTERFACE BOOST_ALL_NO_LIB)
if(WIN32)
    target_link_libraries(boost::headers INTERFACE bcrypt)  # random numbers of the system
endif()

if(NOT WIN32)
    find_library(BOOST_URL_LIBRARY boost_url REQUIRED)
    add_library(boost::url INTERFACE IMPORTED GLOBAL)
    target_link_libraries(boost::url INTERFACE boost::headers ${BOOST_URL_LIBRARY})

    # Asio and Beast, compiled once: what is no template of them is in no other source.
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/third-party/BoostNetwork.cpp @ONLY CONTENT
        "#include <boost/asio/impl/src.hpp>\n#include <boost/beast/src.hpp>\n")
    add_library(boost-network STATIC ${CMAKE_BINARY_DIR}/third-party/BoostNetwork.cpp)
    add_library(boost::network ALIAS boost-network)
    target_compile_definitions(boost-network
        PUBLIC BOOST_ASIO_SEPARATE_COMPILATION BOOST_BEAST_SEPARATE_COMPILATION)
    target_compile_options(boost-network PRIVATE -w)
    target_link_libraries(boost-network PUBLIC boost::headers Threads::Threads)

    find_package(qpdf REQUIRED)
    add_library(qpdf::qpdf INTERFACE IMPORTED GLOBAL)
    target_link_libraries(qpdf::qpdf INTERFACE qpdf::libqpdf)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # With vectors that constants may use, clang wants the class of this one's items to be
        # complete where it is only named. The destructor itself is the library's own.
        file(READ ${SYSTEM_INCLUDE_DIR}/qpdf/JSON.hh header)
        string(REPLACE "virtual ~JSON_array() = default;" "virtual ~JSON_array();" header "${header}")
        file(CONFIGURE OUTPUT ${LINKED_INCLUDE_DIR}/qpdf/JSON.hh CONTENT "${header}" @ONLY)
        target_include_directories(qpdf::qpdf SYSTEM BEFORE INTERFACE ${LINKED_INCLUDE_DIR})
    endif()
endif()
if(NOT COMMENTS_TESTS)
    return()
endif()

if(NOT WIN32)
    find_package(GTest REQUIRED)
    find_package(benchmark REQUIRED)
    find_library(GUMBO_LIBRARY gumbo REQUIRED)
    find_path(GUMBO_INCLUDE_DIR gumbo.h REQUIRED)
    mark_as_advanced(GUMBO_LIBRARY GUMBO_INCLUDE_DIR)
    add_library(gumbo::gumbo INTERFACE IMPORTED GLOBAL)
    target_link_libraries(gumbo::gumbo INTERFACE ${GUMBO_LIBRARY})
    target_include_directories(gumbo::gumbo SYSTEM INTERFACE ${GUMBO_INCLUDE_DIR})
    return()
endif()

# GoogleTest, from the sources of Debian's package.
set(googleTestSources /usr/src/googletest)
if(NOT EXISTS ${googleTestSources}/googletest/src/gtest-all.cc)
    message(FATAL_ERROR "${googleTestSources} is missing: tools/setup/install puts it into place")
endif()
function(add_google_library name folder source)
    add_library(${name} STATIC EXCLUDE_FROM_ALL ${googleTestSources}/${folder}/src/${source})
    target_include_directories(${name} PRIVATE ${googleTestSources}/${folder})
    target_include_directories(${name} SYSTEM PUBLIC ${googleTestSources}/${folder}/include)
    target_compile_options(${name} PRIVATE -w)
    target_link_libraries(${name} PUBLIC ${ARGN} Threads::Threads)
    add_library(GTest::${name} ALIAS ${name})
endfunction()
add_google_library(gtest googletest gtest-all.cc)
add_google_library(gtest_main googletest gtest_main.cc gtest)
add_google_library(gmock googlemock gmock-all.cc gtest)
add_google_library(gmock_main googlemock gmock_main.cc gmock)
