# subtitle_shared_library(NAME MAP): the shared library NAME and the static NAME_static of the objects NAME_objects. MAP
# names what the shared one exports; tests reach through the static one what it hides.
function(subtitle_shared_library name map)
  add_library(${name} SHARED)
  target_link_libraries(${name} PRIVATE ${name}_objects)
  add_library(subtitle::${name} ALIAS ${name})
  cmake_path(GET map PARENT_PATH folder)
  target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/${folder}>)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}${SUBTITLE_SONAME_SUFFIX}
    SOVERSION ${PROJECT_VERSION_MAJOR}${SUBTITLE_SONAME_SUFFIX}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/${map})
  # Bsymbolic: a host may have a function or variable of the same name, which the library must not use. Hosts that are
  # linked with copies of the library's variables see them all the same (vobsub/hostsymbol.h).
  target_link_options(${name} PRIVATE
    LINKER:--version-script=${PROJECT_SOURCE_DIR}/${map} LINKER:-Bsymbolic LINKER:--as-needed)
  subtitle_harden(${name})
  if(NOT SUBTITLE_SANITIZE)
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()

  add_library(${name}_static STATIC)
  target_link_libraries(${name}_static PUBLIC ${name}_objects)
endfunction()
