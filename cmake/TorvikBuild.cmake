# What every target of this project shares: the language level, the warnings, the linker, and two functions that
# make a target of a folder. A box is all sources of its folder, so adding a file needs no edit here.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

set(TORVIK_SANITIZE "" CACHE STRING "Sanitizers to build with: 'address,undefined' or 'thread'")
option(TORVIK_FUZZ "Build the fuzz targets alone, with clang" OFF)

find_program(TORVIK_CCACHE ccache)
if(TORVIK_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
        CCACHE_PCH_EXTSUM=1 ${TORVIK_CCACHE})
endif()
find_program(TORVIK_MOLD mold)
if(TORVIK_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

add_library(torvik_warnings INTERFACE)
target_compile_options(torvik_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2
    -Wno-missing-field-initializers $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Release>>>:-Werror>)
# When it optimises most, g++ 12 warns of overlapping, endless and outside copies inside its own std::string, and takes
# the members of a std::variant for uninitialised. A warning that only the optimiser finds ends no delivery: what is an
# error is seen by the daily build.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(torvik_warnings INTERFACE
        "$<$<CONFIG:Release>:-Wno-restrict;-Wno-stringop-overflow;-Wno-stringop-overread;-Wno-array-bounds>"
        $<$<CONFIG:Release>:-Wno-maybe-uninitialized>)
endif()

if(TORVIK_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

if(TORVIK_SANITIZE)
    add_compile_options(-fsanitize=${TORVIK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TORVIK_SANITIZE})
    # Once the sanitizers have rewritten the code, g++ 12 takes the members of a std::variant for uninitialised, and copies
    # inside its own std::string for ones that reach outside.
    add_compile_options(-Wno-maybe-uninitialized -Wno-array-bounds -Wno-stringop-overflow)
endif()

# torvik_sources(OUT room...): all sources of this folder and of its rooms, the subfolders named.
function(torvik_sources out)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    foreach(room ${ARGN})
        file(GLOB of_room CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${room}/*.cpp
             ${CMAKE_CURRENT_SOURCE_DIR}/${room}/*.h)
        list(APPEND sources ${of_room})
    endforeach()
    set(${out} ${sources} PARENT_SCOPE)
endfunction()

# torvik_box(NAME [QT] [ROOMS folder...] LINK target...): a static library of all sources of this folder and its rooms.
function(torvik_box name)
    cmake_parse_arguments(BOX "QT" "" "LINK;ROOMS" ${ARGN})
    torvik_sources(sources ${BOX_ROOMS})
    list(FILTER sources EXCLUDE REGEX "main\\.cpp$")
    if(NOT sources MATCHES "\\.cpp")
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE ${BOX_LINK})
        target_include_directories(${name} INTERFACE ${CMAKE_SOURCE_DIR})
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${BOX_LINK} PRIVATE torvik_warnings)
    if(BOX_QT)
        torvik_precompiled(${name} qt)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_compile_definitions(${name} PUBLIC QT_NO_KEYWORDS QT_NO_CAST_FROM_BYTEARRAY)
    else()
        torvik_precompiled(${name} std)
    endif()
endfunction()

# torvik_tests(NAME [ROOMS folder...] LINK target... [GROUPS group filter...]): one test program of all sources of this
# folder and its rooms; each test is a ctest test. Where the tests share a costly beginning, GROUPS makes each filter one
# ctest test, NAME.group, and what no filter names one more, NAME.rest.
function(torvik_tests name)
    cmake_parse_arguments(T "" "" "LINK;GROUPS;ROOMS" ${ARGN})
    torvik_sources(sources ${T_ROOMS})
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE ${T_LINK} GTest::gmock GTest::gtest torvik_warnings)
    torvik_precompiled(${name} tests)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    if(NOT T_GROUPS)
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
        return()
    endif()
    set(rest "-")
    while(T_GROUPS)
        list(POP_FRONT T_GROUPS group filter)
        torvik_test_group(${name} ${group} "${filter}")
        string(APPEND rest "${filter}:")
    endwhile()
    torvik_test_group(${name} rest "${rest}")
endfunction()

# A group of which every test has said that it is skipped counts as skipped.
function(torvik_test_group name group filter)
    add_test(NAME ${name}.${group} COMMAND ${name} --gtest_filter=${filter})
    set_tests_properties(${name}.${group} PROPERTIES TIMEOUT 600 SKIP_REGULAR_EXPRESSION "\\[  PASSED  \\] 0 tests")
endfunction()
