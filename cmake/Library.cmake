# project_library(NAME DEPENDS lib… PRIVATE target… PRIVATE_HEADERS pattern…): compiles the folder's
# sources once, as the object library NAME_objects, and links them into the shared library NAME.
# DEPENDS names other libraries of this project, PRIVATE what only the sources see. All headers are
# installed but those that PRIVATE_HEADERS names, as files in the folder or patterns for them.
function(project_library name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;PRIVATE;PRIVATE_HEADERS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.cpp)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS *.h)
  if(ARG_PRIVATE_HEADERS)
    file(GLOB private_headers CONFIGURE_DEPENDS ${ARG_PRIVATE_HEADERS})
    list(REMOVE_ITEM headers ${private_headers})
  endif()

  add_library(${name}_objects OBJECT ${sources})
  target_link_libraries(${name}_objects PUBLIC project_options ${ARG_DEPENDS}
                                        PRIVATE ${ARG_PRIVATE})

  add_library(${name} SHARED)
  add_library(Renderer::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION}
                                           SOVERSION ${PROJECT_VERSION_MAJOR})
  target_compile_features(${name} INTERFACE cxx_std_20)
  target_link_libraries(${name} PRIVATE ${name}_objects ${ARG_PRIVATE} PUBLIC ${ARG_DEPENDS})
  target_sources(${name} INTERFACE FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}
                                   FILES ${headers})
  install(TARGETS ${name} EXPORT RendererTargets
          FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/librenderer)
endfunction()

# project_vector_sources(file…): files whose loops the compiler turns into vector code. No errno from
# square roots and no traps on comparisons: neither changes a result, both keep loops scalar.
function(project_vector_sources)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS
    "-fno-math-errno;-fno-trapping-math;$<$<NOT:$<CONFIG:Debug>>:-O3>")
endfunction()
