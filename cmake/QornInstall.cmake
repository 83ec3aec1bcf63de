# The installed package: headers, libraries, tool, a CMake package and a pkg-config file. Both files find their way
# from where they lie, so that the installed tree can be moved.
include(CMakePackageConfigHelpers)

install(TARGETS qorn EXPORT qornTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)
if(TARGET qorn_c)
  install(TARGETS qorn_c EXPORT qornTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development)
  install(FILES binding/c/qorn_c.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development)
endif()
install(DIRECTORY include/qorn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qorn)
install(EXPORT qornTargets NAMESPACE qorn:: DESTINATION ${package_dir} COMPONENT Development)
configure_package_config_file(cmake/qornConfig.cmake.in qornConfig.cmake INSTALL_DESTINATION ${package_dir})
# Until 1.0 a minor version may change what there is.
write_basic_package_version_file(qornConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qornConfig.cmake ${PROJECT_BINARY_DIR}/qornConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT Development)

# Where the install directories are absolute, they stand in the file as they are.
function(qorn_pc_path name dir)
  if(IS_ABSOLUTE "${dir}")
    set(${name} "${dir}" PARENT_SCOPE)
  else()
    set(${name} "\${prefix}/${dir}" PARENT_SCOPE)
  endif()
endfunction()
qorn_pc_path(QORN_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
qorn_pc_path(QORN_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
file(RELATIVE_PATH QORN_PC_PREFIX_FROM_HERE "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
foreach(library qorn qorn_c)
  if(TARGET ${library})
    set(QORN_PC_LIBRARY ${library})
    configure_file(cmake/qorn.pc.in ${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
      COMPONENT Development)
  endif()
endforeach()
