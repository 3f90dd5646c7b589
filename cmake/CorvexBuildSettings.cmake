# Settings that every target of the tree shares.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

include(GNUInstallDirs)
find_package(Threads REQUIRED)

# An installed program finds its libraries beside it, wherever the tree was moved to.
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

add_compile_options(-Wall -Wextra -Werror)
# A product and a sum are rounded separately on every target, so that results do not depend on the machine.
add_compile_options(-ffp-contract=off)

if(CORVEX_SANITIZE)
    add_compile_options(-fsanitize=${CORVEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    # Assertions hold in every sanitizer build, whatever the build type.
    add_compile_options(-UNDEBUG)
    add_link_options(-fsanitize=${CORVEX_SANITIZE})
else()
    # A library names everything that it needs; sanitizer run times come from the program.
    add_link_options(-Wl,--no-undefined)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
