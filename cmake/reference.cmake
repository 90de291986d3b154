# The reference of the public headers, made of their comments: manual pages where there is Python,
# and pages for browsers by Doxygen (target docs), which are a part of the documents if asked for.
option(OCI_NUMBER_REFERENCE "Build and install the reference by Doxygen" OFF)
find_package(Python3 QUIET COMPONENTS Interpreter)
if(NOT Python3_FOUND)
  if(OCI_NUMBER_REFERENCE)
    message(FATAL_ERROR "The reference (OCI_NUMBER_REFERENCE) takes Python 3")
  endif()
  return()
endif()

set(reference_source ${PROJECT_SOURCE_DIR}/tools/reference)
file(GLOB reference_c_headers CONFIGURE_DEPENDS include/*.h)
file(GLOB reference_headers CONFIGURE_DEPENDS include/*.h include/*.hpp)

# Which pages there will be, their comments tell; so they are written into a folder.
set(man_folder ${PROJECT_BINARY_DIR}/reference/man3)
set(compress)
if(OCI_NUMBER_DEBIAN)
  set(compress COMMAND gzip -9nr ${man_folder})
endif()
add_custom_command(OUTPUT ${man_folder}.stamp
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${man_folder}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${man_folder}
  COMMAND ${Python3_EXECUTABLE} -B ${reference_source}/man_pages.py ${PROJECT_VERSION} ${man_folder}
          ${reference_c_headers}
  ${compress}
  COMMAND ${CMAKE_COMMAND} -E touch ${man_folder}.stamp
  DEPENDS ${reference_c_headers} ${reference_source}/man_pages.py ${reference_source}/comments.py
  VERBATIM)
add_custom_target(reference_man_pages ALL DEPENDS ${man_folder}.stamp)
install(DIRECTORY ${man_folder} DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT development)

find_program(DOXYGEN doxygen)
if(NOT DOXYGEN)
  if(OCI_NUMBER_REFERENCE)
    message(FATAL_ERROR "The reference (OCI_NUMBER_REFERENCE) takes Doxygen")
  endif()
  return()
endif()
set(reference_folder ${PROJECT_BINARY_DIR}/reference/html)
set(reference_filter "${Python3_EXECUTABLE} -B ${reference_source}/doxygen_filter.py")
configure_file(tools/reference/Doxyfile.in reference/Doxyfile @ONLY)
add_custom_command(OUTPUT ${reference_folder}.stamp
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${reference_folder}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${reference_folder}
  COMMAND ${DOXYGEN} ${PROJECT_BINARY_DIR}/reference/Doxyfile
  COMMAND ${CMAKE_COMMAND} -E touch ${reference_folder}.stamp
  DEPENDS ${reference_headers} ${reference_source}/doxygen_filter.py ${reference_source}/comments.py
          ${reference_source}/main.md ${reference_source}/style.css
          ${PROJECT_BINARY_DIR}/reference/Doxyfile
  VERBATIM)
set(all)
if(OCI_NUMBER_REFERENCE)
  set(all ALL)
  install(DIRECTORY ${reference_folder}/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference
          COMPONENT documents)
endif()
add_custom_target(docs ${all} DEPENDS ${reference_folder}.stamp)
