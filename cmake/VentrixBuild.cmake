# Settings that every target of the project shares.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-unused-parameter -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 takes the library's own string insertion for overlapping copies once it optimises.
    add_compile_options(-Wno-restrict)
endif()
if(VENTRIX_SANITIZE)
    # No vptr check: the host's interfaces are binary method tables, which carry no type information.
    add_compile_options(-O1 -g1 -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

# The walks over a document are many small calls from file to file.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    include(CheckIPOSupported)
    check_ipo_supported(RESULT has_link_time_optimization LANGUAGES CXX)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ${has_link_time_optimization})
endif()

# Collects the sources of one folder; a new file needs no change of a list.
function(ventrix_sources out)
    file(GLOB found CONFIGURE_DEPENDS ${ARGN})
    set(${out} ${found} PARENT_SCOPE)
endfunction()

# One test program for one room: ventrix_add_tests(kit LIBS ventrix_kit) takes tests/kit/*.cpp.
function(ventrix_add_tests room)
    cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
    ventrix_sources(sources ${CMAKE_CURRENT_SOURCE_DIR}/${room}/*.cpp)
    if(NOT sources)
        return()
    endif()
    add_executable(test_${room} ${sources})
    target_include_directories(test_${room} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(test_${room} PRIVATE ${ARG_LIBS} GTest::gmock_main GTest::gtest)
    gtest_discover_tests(test_${room} TEST_PREFIX ${room}. DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
