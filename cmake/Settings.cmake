# Settings of the whole build.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# Every public header must compile alone: target all_verify_interface_header_sets.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

# Installed files find each other wherever the prefix is moved to.
file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${bin_to_lib}")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

if(RENDERER_SANITIZE)
  list(JOIN RENDERER_SANITIZE "," sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
  if("thread" IN_LIST RENDERER_SANITIZE)
    add_compile_definitions(RENDERER_THREAD_SANITIZER)
  endif()
endif()

if(RENDERER_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "RENDERER_BUILD_FUZZERS needs clang 16: -DCMAKE_CXX_COMPILER=clang++-16")
  endif()
  # The palettes of systems are tables made at compile time, in more steps than clang takes by default.
  add_compile_options(-fsanitize=fuzzer-no-link -fconstexpr-steps=10000000)
endif()

add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror
                                                 -ffp-contract=off)
target_include_directories(project_options INTERFACE ${PROJECT_SOURCE_DIR})
