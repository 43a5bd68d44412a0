# Debian packages, one for each component of the installation: `cpack` in a build tree, or `./dev package`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME prismoutl)
set(CPACK_PACKAGE_VENDOR PrismoUtl)
set(CPACK_PACKAGE_CONTACT "PrismoUtl maintainers <maintainers@prismoutl.example>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_COMPONENTS_ALL library development tools)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libprismoutl${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DEBUGINFO_PACKAGE ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "The shared library: turns raw camera frames into pictures on the
caller's thread or on its own pool of worker threads, writes BMP and JPEG
files, mirrors frames.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libprismoutl-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Development files: headers, and what CMake and pkg-config need to find the library.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME prismo-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_DEBUGINFO_PACKAGE ON)
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "The command-line tool: describes, converts, mirrors, makes and compares raw frames,
and measures how fast that goes.")

# prismo_copyright(<component> <package> [<what is compiled into it>...]): the copyright file of a package, with those
# of the Debian packages from whose headers part of it is made.
function(prismo_copyright component package)
  set(text "PrismoUtl\n\nIts owners have not chosen a licence yet.\n")
  foreach(part ${ARGN})
    set(stated /usr/share/doc/${part}/copyright)
    if(EXISTS ${stated})
      file(READ ${stated} notice)
      string(APPEND text "\n${package} has code of ${part} in it, whose copyright file says:\n\n${notice}")
    endif()
  endforeach()
  file(CONFIGURE OUTPUT generated/copyright/${package} CONTENT "@text@" @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/generated/copyright/${package} RENAME copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endfunction()
prismo_copyright(library ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} libhwy-dev)
prismo_copyright(development libprismoutl-dev)
prismo_copyright(tools prismo-tools libcli11-dev libhwy-dev)
include(CPack)
