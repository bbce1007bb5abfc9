# orbe_source_date(RESULT): the time that packed files bear, in seconds since 1970: SOURCE_DATE_EPOCH, or the time of the
# last commit; empty where there is neither.
function(orbe_source_date result)
    set(seconds $ENV{SOURCE_DATE_EPOCH})
    if(NOT seconds)
        find_program(ORBE_GIT git)
        if(ORBE_GIT)
            execute_process(
                COMMAND ${ORBE_GIT} -C ${CMAKE_CURRENT_FUNCTION_LIST_DIR} log -1 --format=%ct
                OUTPUT_VARIABLE seconds OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        endif()
    endif()
    set(${result} "${seconds}" PARENT_SCOPE)
endfunction()
