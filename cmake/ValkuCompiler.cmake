# How every translation unit is compiled: the interface target `valku_flags`, which all our targets link.
# Packages' own targets (GoogleTest) do not link it, so that their code is not held to our warnings.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED)

add_library(valku_flags INTERFACE)
target_include_directories(valku_flags INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_definitions(valku_flags INTERFACE VALKU_VERSION="${PROJECT_VERSION}")
target_link_libraries(valku_flags INTERFACE Threads::Threads)
target_compile_options(valku_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(VALKU_WERROR)
    target_compile_options(valku_flags INTERFACE -Werror)
endif()

if(VALKU_ARCH AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(valku_flags INTERFACE "-march=${VALKU_ARCH}")
elseif(VALKU_ARCH STREQUAL "native")
    target_compile_options(valku_flags INTERFACE -mcpu=native)
endif()

if(VALKU_SANITIZE)
    # A finding of the undefined-behaviour sanitizer ends the process, so that no test passes over one.
    target_compile_options(valku_flags INTERFACE
        "-fsanitize=${VALKU_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(valku_flags INTERFACE "-fsanitize=${VALKU_SANITIZE}")
else()
    # The search lives on process-wide globals. In a program that is not position-independent their addresses
    # are constants in the instructions instead of sums to be formed anew in every function.
    target_compile_options(valku_flags INTERFACE -fno-pie)
    target_link_options(valku_flags INTERFACE -no-pie)
endif()

if(VALKU_LTO)
    include(CheckIPOSupported)
    check_ipo_supported(RESULT ltoWorks OUTPUT ltoAnswer LANGUAGES CXX)
    if(ltoWorks)
        set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    else()
        message(STATUS "Link-time optimisation is not available with this compiler; going on without it")
    endif()
endif()
