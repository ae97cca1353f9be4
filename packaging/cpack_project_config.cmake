# Read by CPack before it makes packages.
#
# Zips record the date of each file. All of them get the date that SOURCE_DATE_EPOCH names, by default that of the commit,
# so that packages of one commit are equal.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND git -C "${CMAKE_CURRENT_LIST_DIR}" log -1 --format=%ct
        OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE result)
    if(result EQUAL 0 AND date)
        set(ENV{SOURCE_DATE_EPOCH} "${date}")
    endif()
endif()
