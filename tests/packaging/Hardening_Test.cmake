# cmake -D... -P Hardening_Test.cmake: fails when a binary lacks what cmake/Hardening.cmake asks for.
#
# In:  BINARIES  the library and the programs
#      READELF   for Linux, or
#      OBJDUMP   for Windows
#      ENTRY     of the library: a function that begins with a landing place for checked jumps; empty: none is looked at
#      LIBRARY   the library again
#      OBJDUMP   also shows that function
cmake_minimum_required(VERSION 3.25)

set(problems 0)
function(expect binary text pattern what)
    if(NOT text MATCHES "${pattern}")
        message(NOTICE "${binary}: no ${what}")
        math(EXPR problems "${problems} + 1")
        set(problems ${problems} PARENT_SCOPE)
    endif()
endfunction()

function(read_binary result)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

if(NOT BINARIES)
    message(FATAL_ERROR "no binaries are named")
endif()
foreach(binary IN LISTS BINARIES)
    if(READELF)
        read_binary(text ${READELF} --wide --file-header --program-headers --dynamic --dyn-syms ${binary})
        expect(${binary} "${text}" "Type: +DYN" "position independence")
        expect(${binary} "${text}" "GNU_RELRO" "relocations that are protected")
        expect(${binary} "${text}" "\\(FLAGS_1\\)[^\n]* NOW|Flags: NOW" "binding at once")
        expect(${binary} "${text}" "GNU_STACK[^\n]* RW " "stack without code")
        expect(${binary} "${text}" "__stack_chk_fail" "stack protector")
        expect(${binary} "${text}" "__[a-z]+_chk@" "checked copies")
        if(NOT binary STREQUAL LIBRARY)
            expect(${binary} "${text}" "\\(FLAGS_1\\)[^\n]* PIE" "random address of a program")
        endif()
    else()
        read_binary(text ${OBJDUMP} --private-headers ${binary})
        expect(${binary} "${text}" "DYNAMIC_BASE" "random address")
        expect(${binary} "${text}" "HIGH_ENTROPY_VA" "random address of 64 bits")
        expect(${binary} "${text}" "NX_COMPAT" "data without code")
        expect(${binary} "${text}" "Base Relocation Directory \\[\\.reloc\\]|\\.reloc" "relocations")
        read_binary(text ${OBJDUMP} --syms ${binary})
        expect(${binary} "${text}" "__stack_chk_fail" "stack protector")
    endif()
endforeach()
if(ENTRY)
    read_binary(text ${OBJDUMP} --disassemble=${ENTRY} ${LIBRARY})
    expect(${LIBRARY} "${text}" "<${ENTRY}>:\n[^\n]*endbr64" "landing place for checked jumps")
endif()

if(problems)
    message(FATAL_ERROR "${problems} problems")
endif()
message(STATUS "the binaries are hardened")
