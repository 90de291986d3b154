# What lands where, by component: runtime (the shared library), development (headers, archive,
# CMake package, pkg-config file), debugger (printers for GDB), tool, documents.
include(CMakePackageConfigHelpers)

install(FILES include/oratypes.h include/oci.h include/oci_number_arrow.h
              include/oci_number_column.h include/oci_number_log.h include/oci_number.hpp
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(TARGETS ${oci_number_libraries} EXPORT oci_number_targets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)
install(FILES LICENSE README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/oci_number)
install(EXPORT oci_number_targets NAMESPACE oci:: DESTINATION ${package_dir}
        COMPONENT development)
configure_package_config_file(cmake/oci_number-config.cmake.in oci_number-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(oci_number-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/oci_number-config.cmake
              ${PROJECT_BINARY_DIR}/oci_number-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)

# The prefix is found from the file's own place, so that the installed tree can
# be put anywhere (cmake --install --prefix). Directories may be absolute; the
# prefix stays out of them then. Under /usr it is written as it is, so that pkg-config leaves
# out what compilers search anyway.
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
             BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig
             OUTPUT_VARIABLE pc_up)
  set(pc_prefix "\${pcfiledir}/${pc_up}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  set(pc_${dir} "\${prefix}")
  cmake_path(APPEND pc_${dir} "${CMAKE_INSTALL_${dir}}")
endforeach()
configure_file(cmake/oci_number.pc.in oci_number.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/oci_number.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

# The debugger's printers go where GDB looks for them: under the whole path of the library's file.
# That is known when the tree is installed; while a package is made, CMAKE_INSTALL_PREFIX is the
# folder that it is collected in, and its own prefix the configured one.
install(CODE "
  set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
  if(prefix MATCHES /_CPack_Packages/)
    set(prefix \"${CMAKE_INSTALL_PREFIX}\")
  endif()
  set(oci_number_libdir \"${CMAKE_INSTALL_LIBDIR}\")
  cmake_path(ABSOLUTE_PATH oci_number_libdir BASE_DIRECTORY \"\${prefix}\")" COMPONENT debugger)
install(FILES tools/gdb/oci_number-gdb.py
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/gdb/auto-load\${oci_number_libdir}"
        RENAME liboci_number.so.${PROJECT_VERSION}-gdb.py COMPONENT debugger)
