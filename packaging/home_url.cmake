# HOME_URL: where the repository is on its forge, below which releases are published; empty when nobody has said so. The environment
# variable ORVANTIS_HOME_URL decides, or else the file home-url.txt, which scripts/set-home-url.sh writes.
#
# Included by build_installer.cmake; by itself, `cmake -Dhome_url=ADDRESS -P home_url.cmake`, it fails when that is no address.
if(NOT DEFINED home_url_file)
    set(home_url_file "${CMAKE_CURRENT_LIST_DIR}/home-url.txt")
endif()
set(nowhere "^https://([^/]*\\.)?(example\\.(com|net|org)|[^/]*\\.(example|invalid|test))/")
if(DEFINED home_url)
    set(HOME_URL "${home_url}")
elseif(NOT "$ENV{ORVANTIS_HOME_URL}" STREQUAL "")
    set(HOME_URL "$ENV{ORVANTIS_HOME_URL}")
else()
    file(STRINGS "${home_url_file}" HOME_URL LIMIT_COUNT 1)
    if(HOME_URL MATCHES "${nowhere}")
        set(HOME_URL "")
        return()
    endif()
endif()
if(NOT HOME_URL MATCHES "^https://[^/ \"@]+\\.[^/ \"@]+/[^ \"@]*[^ \"@/]$" OR HOME_URL MATCHES "${nowhere}")
    message(FATAL_ERROR "ORVANTIS_HOME_URL is no address that packages can be fetched from: ${HOME_URL}")
endif()
