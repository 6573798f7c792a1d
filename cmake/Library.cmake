# Settings and functions that every folder's CMakeLists.txt uses.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror -ffp-contract=off)
target_include_directories(project_options INTERFACE ${CMAKE_SOURCE_DIR})

# project_library(NAME DEPENDS lib… PRIVATE target…): compiles the folder's sources once, as the
# object library NAME_objects, and links them into the shared library NAME. DEPENDS names other
# libraries of this project, PRIVATE what only the sources see.
function(project_library name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;PRIVATE" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.cpp)
  add_library(${name}_objects OBJECT ${sources})
  add_library(${name} SHARED)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  target_link_libraries(${name}_objects PUBLIC project_options PRIVATE ${ARG_PRIVATE})
  foreach(dependency ${ARG_DEPENDS})
    target_link_libraries(${name}_objects PUBLIC ${dependency})
  endforeach()
  target_link_libraries(${name} PRIVATE ${name}_objects ${ARG_PRIVATE} PUBLIC ${ARG_DEPENDS})
  target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>)
endfunction()
