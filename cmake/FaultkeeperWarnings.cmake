# Warnings are errors for developers, never for users, whose compilers may be newer than ours.
# Included before any target of ours is made.

set(FAULTKEEPER_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(FAULTKEEPER_DEVELOPER_MODE)
    add_compile_options(${FAULTKEEPER_WARNINGS})
endif()
