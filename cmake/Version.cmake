# The source revision is the number of commits; the build date honours SOURCE_DATE_EPOCH.
execute_process(COMMAND git rev-list --count HEAD WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                OUTPUT_VARIABLE ZEBCV_REVISION OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT ZEBCV_REVISION MATCHES "^[0-9]+$")
  set(ZEBCV_REVISION 0)
endif()
set(month_names Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
string(TIMESTAMP month "%m" UTC)
string(TIMESTAMP day "%d" UTC)
string(TIMESTAMP year "%Y" UTC)
math(EXPR month "${month} - 1")
list(GET month_names ${month} month)
string(REGEX REPLACE "^0" " " day ${day})
set(ZEBCV_BUILD_DATE "${month} ${day} ${year}")
