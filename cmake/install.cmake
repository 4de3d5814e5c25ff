# What `cmake --install` puts in place: the shared library with its soname
# link, the public header, a pkg-config file and a CMake package, so that a
# host builds against the engine with either; and, when the tool is part of
# the build, lxspell with its lexicon and its manual page. The static copy
# of the engine, the tests, the fuzz targets and the benchmarks stay behind.
include(CMakePackageConfigHelpers)

set(LX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/lxengine)
set(LX_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS lxengine EXPORT lxengineTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/lxengine.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# find_package(lxengine) gives the imported target lxengine::lxengine.
install(EXPORT lxengineTargets NAMESPACE lxengine::
        DESTINATION ${LX_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/lxengineConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/lxengineConfig.cmake
                              INSTALL_DESTINATION ${LX_CMAKE_DIR})
# The soname stays 0 through the 0.x releases, so any 0.x answers a request
# for another 0.x no older than itself.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/lxengineConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/lxengineConfig.cmake
              ${PROJECT_BINARY_DIR}/lxengineConfigVersion.cmake
        DESTINATION ${LX_CMAKE_DIR})

# The pkg-config file finds the prefix from its own place, so the installed
# tree may be moved, or installed with `cmake --install --prefix`, and still
# be right. Directories given as absolute paths are taken as they stand.
function(lx_pc_dir var dir)
  if(IS_ABSOLUTE "${dir}")
    set(${var} "${dir}" PARENT_SCOPE)
  else()
    set(${var} "\${prefix}/${dir}" PARENT_SCOPE)
  endif()
endfunction()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(LX_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH LX_PC_UP "/root/${LX_PKGCONFIG_DIR}" "/root")
  string(REGEX REPLACE "/$" "" LX_PC_UP "${LX_PC_UP}")
  set(LX_PC_PREFIX "\${pcfiledir}/${LX_PC_UP}")
endif()
lx_pc_dir(LX_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
lx_pc_dir(LX_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/lxengine.pc.in ${PROJECT_BINARY_DIR}/lxengine.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lxengine.pc DESTINATION ${LX_PKGCONFIG_DIR})

# The command-line tool, when this tree has it. Installed, it finds its
# lexicon in ../share/lxspell beside its own directory; it holds the engine
# itself and needs no run path.
if(TARGET lxspell)
  install(TARGETS lxspell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET lxspell_lexicon)
  install(FILES ${CMAKE_BINARY_DIR}/bin/en_US.lxc
          DESTINATION ${CMAKE_INSTALL_DATADIR}/lxspell)
endif()
if(TARGET lxspell AND EXISTS ${PROJECT_SOURCE_DIR}/tools/lxspell.1)
  install(FILES ${PROJECT_SOURCE_DIR}/tools/lxspell.1
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
