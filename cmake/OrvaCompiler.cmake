# SPDX-License-Identifier: Apache-2.0
# One place for the compiler's settings, so that every target of the project is built alike.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# A device has little memory: a third less code is half a megabyte of it, and no request is slower by more
# than the bus hides. Functions and lines alone cost no time to compile; they go into packages of debug symbols, by
# which the trace of a crash can be read.
set(CMAKE_CXX_FLAGS_RELEASE "-Os -g1 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-Os -g1 -DNDEBUG")
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

find_program(ORVA_CCACHE ccache)
if(ORVA_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${ORVA_CCACHE}")
endif()

# The rooms' sources are compiled a handful at a time, since most of the time goes into the headers.
set(CMAKE_UNITY_BUILD ON CACHE BOOL "Compile several sources at a time")
set(CMAKE_UNITY_BUILD_BATCH_SIZE 8)

# With the compilers that the tests are run with. Another one's warnings keep nobody from building.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION MATCHES "^(12|14)\\.")
    set(known ON)
else()
    set(known OFF)
endif()
option(ORVA_WERROR "Treat compiler warnings as errors" ${known})
add_compile_options(-Wall -Wextra -Wpedantic)
if(ORVA_WERROR)
    add_compile_options(-Werror)
endif()

add_compile_definitions(
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_DEPRECATED_WARNINGS QT_NO_KEYWORDS)

# A library that is loaded at run time must find all its symbols when it is linked.
add_link_options(-Wl,--as-needed)

if(ORVA_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(ORVA_SANITIZE)
    # Unoptimized, since compiling takes far longer than the tests. The checks that are woven in hide from gcc what
    # is set before it is read: the Release build warns of that.
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                        -fno-omit-frame-pointer -O0 -g -Wno-maybe-uninitialized)
    add_link_options(-fsanitize=address,undefined)
else()
    add_link_options(-Wl,-z,defs)
endif()
