# Compiler settings of all targets, and helper functions for the CMakeLists.txt files.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-unused-parameter -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # With optimization, GCC 12 wrongly reports overlapping copies in the insert functions of std::string.
    add_compile_options(-Wno-restrict)
endif()
if(VENTRIX_SANITIZE)
    # No vptr check: the host's interfaces are plain method tables without type information.
    add_compile_options(-O1 -g1 -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

# The walks over a document make many small calls between source files. The linker for Windows takes the thunks of our
# interfaces, which several files have, for duplicates then; there, only the document passes have it.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT WIN32)
    include(CheckIPOSupported)
    check_ipo_supported(RESULT has_link_time_optimization LANGUAGES CXX)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ${has_link_time_optimization})
endif()

# Sets `out` to the files that match the patterns. New files are found without a change here.
function(ventrix_sources out)
    file(GLOB found CONFIGURE_DEPENDS ${ARGN})
    set(${out} ${found} PARENT_SCOPE)
endfunction()

# Adds the test program of one component: ventrix_add_tests(kit LIBS ventrix_kit) builds tests/kit/*.cpp as test_kit.
function(ventrix_add_tests component)
    cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
    ventrix_sources(sources ${CMAKE_CURRENT_SOURCE_DIR}/${component}/*.cpp)
    if(WIN32)
        ventrix_leave_out(sources)
    endif()
    if(NOT sources)
        return()
    endif()
    add_executable(test_${component} ${sources})
    target_include_directories(test_${component} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(test_${component} PRIVATE ${ARG_LIBS} GTest::gmock_main GTest::gtest)
    if(WIN32)
        # One process for all tests of a program: starting one under Wine takes longer than most tests.
        add_test(NAME ${component} COMMAND test_${component} --gtest_filter=-${VENTRIX_LEFT_OUT_TESTS})
        set_tests_properties(${component} PROPERTIES TIMEOUT 900)
        return()
    endif()
    gtest_discover_tests(test_${component} TEST_PREFIX ${component}. DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endfunction()
