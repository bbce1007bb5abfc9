# cmake -DOBJDUMP=... -DBINARY=... -P Check_Imports.cmake: fails when the binary imports from a DLL that is not part
# of every 64-bit Windows, such as a compiler's runtime library.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${OBJDUMP} -p ${BINARY} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n\r]+" imports "${headers}")
if(NOT imports)
    message(FATAL_ERROR "${OBJDUMP} shows no imports of ${BINARY}")
endif()

set(windows_dlls advapi32.dll cfgmgr32.dll kernel32.dll msvcrt.dll setupapi.dll user32.dll)
foreach(import IN LISTS imports)
    string(REPLACE "DLL Name: " "" dll "${import}")
    string(TOLOWER "${dll}" dll)
    message(STATUS "imports ${dll}")
    if(NOT dll IN_LIST windows_dlls)
        message(SEND_ERROR "${dll} is not part of Windows, or not in the list of Check_Imports.cmake")
    endif()
endforeach()
