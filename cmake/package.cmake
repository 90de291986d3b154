# Packages by CPack: Debian packages by component (tools/package.sh), a source archive
# (cpack --config CPackSourceConfig.cmake).
set(CPACK_PACKAGE_NAME oci-number)
set(CPACK_PACKAGE_VENDOR "The oci-number authors")
set(CPACK_PACKAGE_CONTACT "The oci-number authors <oci-number@lists.example.org>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)

set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME oci-number-${PROJECT_VERSION})
set(CPACK_SOURCE_IGNORE_FILES "/build/" "/\\\\.git/" "/\\\\.git$" "/__pycache__/" "~$")

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# debian_package(component name section description [VARIABLE value]...)
function(debian_package component name section description)
  string(TOUPPER ${component} upper)
  set(variables PACKAGE_NAME ${name} PACKAGE_SECTION ${section} DESCRIPTION "${description}"
      ${ARGN})
  while(variables)
    list(POP_FRONT variables variable value)
    set(CPACK_DEBIAN_${upper}_${variable} "${value}" PARENT_SCOPE)
  endwhile()
  if(OCI_NUMBER_DEBIAN)
    set(folder ${PROJECT_BINARY_DIR}/debian/${name})
    file(MAKE_DIRECTORY ${folder})
    configure_file(${PROJECT_SOURCE_DIR}/LICENSE ${folder}/copyright COPYONLY)
    # Without the time in it, two builds give the same bytes.
    execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/CHANGELOG.md
                    OUTPUT_FILE ${folder}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/cmake/debian/changelog
                    OUTPUT_FILE ${folder}/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${folder}/copyright ${folder}/changelog.gz ${folder}/changelog.Debian.gz
            DESTINATION share/doc/${name} COMPONENT ${component})
  endif()
endfunction()

set(library_package liboci-number${PROJECT_VERSION_MAJOR})
set(about "The number functions of the OCI call interface over a 22-byte decimal of up
to 40 digits: arithmetic, elementary functions, rounding, conversions to and
from integers, floating point and formatted text, all correctly rounded.")

# What dpkg needs to know of the library.
set(debian_folder ${PROJECT_BINARY_DIR}/debian)
file(WRITE ${debian_folder}/triggers "activate-noawait ldconfig\n")
file(WRITE ${debian_folder}/shlibs
     "liboci_number ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
debian_package(runtime ${library_package} libs "${about}" PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian_folder}/triggers ${debian_folder}/shlibs)
debian_package(development liboci-number-dev libdevel
  "${about}\n\nHeaders, archive, CMake package and pkg-config file."
  PACKAGE_DEPENDS "${library_package} (= ${debian_version})")
debian_package(debugger liboci-number-gdb debug
  "${about}\n\nPrinters for GDB, which show a record as the number that it holds."
  PACKAGE_DEPENDS "${library_package} (= ${debian_version})" PACKAGE_RECOMMENDS gdb)
debian_package(tool ocinumber utils
  "A filter that encodes, decodes, inspects and computes 22-byte decimal records\nin bulk."
  PACKAGE_SHLIBDEPS ON PACKAGE_DEPENDS "${library_package} (= ${debian_version})")
# The library that the tool is linked with is not installed while the packages are made.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
debian_package(documents oci-number-doc doc
  "${about}\n\nThe documents."
  PACKAGE_ARCHITECTURE all)

include(CPack)
