# What `cmake --install` puts where. The installed tree may be moved: nothing in it says where it was.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/PrismoUtl)
set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS PrismoUtl EXPORT PrismoUtlTargets
  RUNTIME COMPONENT library
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(WIN32)
  install(FILES $<TARGET_LINKER_FILE_DIR:PrismoUtl>/PrismoUtl64.lib TYPE LIB COMPONENT development)
endif()
install(FILES src/api/PrismoUtl.h src/api/prismoutl.hpp TYPE INCLUDE COMPONENT development)

install(EXPORT PrismoUtlTargets NAMESPACE PrismoUtl:: DESTINATION ${config_folder} COMPONENT development)
configure_package_config_file(cmake/PrismoUtlConfig.cmake.in generated/PrismoUtlConfig.cmake
  INSTALL_DESTINATION ${config_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(generated/PrismoUtlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/generated/PrismoUtlConfig.cmake
  ${PROJECT_BINARY_DIR}/generated/PrismoUtlConfigVersion.cmake
  DESTINATION ${config_folder} COMPONENT development)

# relative_path(<variable> <from> <to>): how to get from one folder of the installed tree to another.
function(relative_path variable from to)
  file(RELATIVE_PATH path ${CMAKE_INSTALL_PREFIX}/${from} ${CMAKE_INSTALL_PREFIX}/${to})
  string(REGEX REPLACE "/$" "" path "${path}")
  set(${variable} ${path} PARENT_SCOPE)
endfunction()

relative_path(PC_PREFIX ${pc_folder} .)
get_target_property(PC_LIBRARY PrismoUtl OUTPUT_NAME)
if(NOT PC_LIBRARY)
  set(PC_LIBRARY PrismoUtl)
endif()
configure_file(cmake/PrismoUtl.pc.in generated/PrismoUtl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/PrismoUtl.pc DESTINATION ${pc_folder} COMPONENT development)

set(PRISMO_ZSH_FUNCTIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Where zsh looks for completions")

if(TARGET prismo)
  relative_path(libraries ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR})
  set_target_properties(prismo PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
  install(TARGETS prismo COMPONENT tools)
  if(UNIX)
    install(FILES tools/prismo/prismo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    set(completion tools/prismo/completion)
    install(FILES ${completion}/prismo.bash RENAME prismo
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
    install(FILES ${completion}/_prismo DESTINATION ${PRISMO_ZSH_FUNCTIONS} COMPONENT tools)
    install(FILES ${completion}/prismo.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
  endif()
endif()
