# The library and its tool for Windows as a ZIP archive: `cpack` in a build tree, or `./dev package windows`. What
# is linked into its files comes with its licences, as the packages state them from which it comes.
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME PrismoUtl)
set(CPACK_PACKAGE_VENDOR PrismoUtl)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

install(FILES cmake/archive/NOTICES.txt DESTINATION . COMPONENT library)
foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev libhwy-dev libcli11-dev)
  install(FILES /usr/share/doc/${package}/copyright RENAME ${package}.txt DESTINATION licences COMPONENT library)
endforeach()
foreach(licence GPL-3 Apache-2.0)
  install(FILES /usr/share/common-licenses/${licence} RENAME ${licence}.txt DESTINATION licences COMPONENT library)
endforeach()
include(CPack)
