# The headers that nearly every test includes, compiled once for all test programs: reading them takes longer than
# compiling the tests themselves. Without definitions of its own, so that programs may have any.
function(orbe_add_test_headers name)
    file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "int main() {}\n")
    add_executable(${name} EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_link_libraries(${name} PRIVATE GTest::gtest Threads::Threads orbe_options)
    target_precompile_headers(${name} PRIVATE
        <gtest/gtest.h> <array> <cstdint> <filesystem> <fstream> <functional> <memory> <sstream> <string> <thread>
        <vector>)
    if(NOT MSVC)
        target_compile_options(${name} PRIVATE -O0)
    endif()
endfunction()

# A test program: GoogleTest's tests from the sources, each run by ctest in a process and a working directory
# of its own, because the library keeps process-wide state and writes files into the working directory. Tests of
# what lies below the layers bring the main function themselves: WITHOUT_SUPPORT.
function(orbe_add_tests name)
    cmake_parse_arguments(tests "WITHOUT_SUPPORT" "TIMEOUT" "SOURCES;USES" ${ARGN})
    if(NOT tests_TIMEOUT)
        set(tests_TIMEOUT 120)
    endif()
    add_executable(${name} ${tests_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${tests_USES} orbe_options)
    if(NOT tests_WITHOUT_SUPPORT)
        target_link_libraries(${name} PRIVATE orbe_test_support)
    endif()
    if(NOT MSVC)
        # What is tested is optimised; the tests themselves take longer to optimise than to run.
        target_compile_options(${name} PRIVATE -O0)
    endif()
    target_precompile_headers(${name} REUSE_FROM orbe_test_headers)
    gtest_discover_tests(${name}
        TEST_PREFIX ${name}.
        DISCOVERY_TIMEOUT 180
        PROPERTIES TIMEOUT ${tests_TIMEOUT})
endfunction()
