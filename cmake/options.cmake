# Settings of our own targets; nothing here reaches a program that uses the library.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Files that stand alone have helpers of the same names.
set(CMAKE_UNITY_BUILD OFF)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# For every target of the project, tests and tools included.
add_library(oci_number_options INTERFACE)
target_compile_options(oci_number_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wformat=2
  # Log lines and binaries name source files from the project's root, and not the build's folder.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -ffile-prefix-map=${PROJECT_BINARY_DIR}=.
  $<$<BOOL:${OCI_NUMBER_WERROR}>:-Werror>)
# Hardening: the stack's return addresses guarded, indirect jumps to marked places only, the C
# library's checked functions where sizes are known, tables of addresses read-only.
include(CheckCCompilerFlag)
check_c_compiler_flag(-fcf-protection OCI_NUMBER_HAS_CF_PROTECTION)
target_compile_options(oci_number_options INTERFACE
  -fstack-protector-strong $<$<BOOL:${OCI_NUMBER_HAS_CF_PROTECTION}>:-fcf-protection>)
if(NOT OCI_NUMBER_SANITIZE)
  target_compile_options(oci_number_options INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
endif()
target_link_options(oci_number_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
if(OCI_NUMBER_SANITIZE)
  target_compile_options(oci_number_options INTERFACE
    -fsanitize=${OCI_NUMBER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(oci_number_options INTERFACE -fsanitize=${OCI_NUMBER_SANITIZE})
endif()

# For the library's own units.
add_library(oci_number_library_options INTERFACE)
target_link_libraries(oci_number_library_options INTERFACE oci_number_options)
target_include_directories(oci_number_library_options INTERFACE
  ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(oci_number_library_options INTERFACE _GNU_SOURCE)
target_compile_options(oci_number_library_options INTERFACE
  -fvisibility=hidden
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fvisibility-inlines-hidden>)

# For tests and benchmarks, after oci_number_options: EXPECT_ macros after an `if`, formats from tables,
# and false alarms of g++ 12 inside std::string and std::regex.
add_library(oci_number_test_options INTERFACE)
target_compile_options(oci_number_test_options INTERFACE
  -Wno-dangling-else -Wno-format-nonliteral
  "$<$<CXX_COMPILER_ID:GNU>:-Wno-restrict;-Wno-maybe-uninitialized>")
