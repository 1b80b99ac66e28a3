# One function per kind of module. The layers of the system are link rules: what a target does not
# name in LINK it cannot include.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# A library's calls of its own functions are its own, and calls of others go there directly.
string(APPEND CMAKE_CXX_FLAGS_RELEASE " -fno-semantic-interposition -fno-plt")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib:$ORIGIN/../lib/${CMAKE_LIBRARY_ARCHITECTURE}:$ORIGIN/../..:$ORIGIN")

include(GNUInstallDirs)
include(TavuPlugin)
include(TavuWarnings)
include(TavuSanitizers)

find_package(Qt5 5.15 REQUIRED COMPONENTS Core Network DBus)
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(Log4cplus REQUIRED IMPORTED_TARGET log4cplus)

find_program(TAVU_CCACHE ccache)
if(TAVU_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TAVU_CCACHE})
endif()

# What this tree asks of its own code.
function(tavu_strict target)
  target_link_libraries(${target} PRIVATE tavu_warnings tavu_sanitizers)
  target_compile_definitions(
    ${target}
    PRIVATE QT_NO_CAST_FROM_ASCII
            QT_NO_CAST_TO_ASCII
            QT_NO_CAST_FROM_BYTEARRAY
            QT_NO_URL_CAST_FROM_STRING
            QT_NO_FOREACH
            QT_NO_KEYWORDS
            QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
            QT_FORCE_ASSERTS)
endfunction()

function(_tavu_common target)
  cmake_parse_arguments(ARG "" "" "LINK;PRIVATE_LINK;INCLUDE" ${ARGN})
  tavu_strict(${target})
  target_link_libraries(${target} PUBLIC ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
                                              ${ARG_INCLUDE})
endfunction()

# tavu_library(<name> SHARED|STATIC|OBJECT SOURCES ... [LINK ...] [PRIVATE_LINK ...] [INCLUDE ...])
# Shared libraries export what is marked with the macro of their export header.
function(tavu_library name kind)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK;INCLUDE" ${ARGN})
  add_library(${name} ${kind} ${ARG_SOURCES})
  _tavu_common(${name} LINK ${ARG_LINK} PRIVATE_LINK ${ARG_PRIVATE_LINK} INCLUDE ${ARG_INCLUDE})
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  if(kind STREQUAL "SHARED")
    _tavu_install_host_library(${name})
  endif()
endfunction()

# A host library is what plug-ins are built against: the library, its headers, its CMake target.
function(_tavu_install_host_library name)
  add_library(tavu::${name} ALIAS ${name})
  install(TARGETS ${name} EXPORT TavuTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  get_target_property(sources ${name} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.h$")
  install(FILES ${sources} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavu)
  target_include_directories(${name} PUBLIC $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tavu>)
endfunction()

# The package that find_package(Tavu) finds. Call it once, after all host libraries.
function(tavu_install_package)
  include(CMakePackageConfigHelpers)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/Tavu)
  configure_package_config_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/TavuConfig.cmake.in
                                ${CMAKE_CURRENT_BINARY_DIR}/TavuConfig.cmake INSTALL_DESTINATION ${folder})
  write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/TavuConfigVersion.cmake
                                   COMPATIBILITY SameMinorVersion)
  install(EXPORT TavuTargets NAMESPACE tavu:: DESTINATION ${folder})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/TavuConfig.cmake
                ${CMAKE_CURRENT_BINARY_DIR}/TavuConfigVersion.cmake
                ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/TavuPlugin.cmake
                ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/plugin.map DESTINATION ${folder})
endfunction()

# tavu_program(<name> SOURCES ... LINK ...)
function(tavu_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  _tavu_common(${name} LINK ${ARG_LINK})
  install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()

# tavu_test(<name> SOURCES ... LINK ... [TIMEOUT s] [LABELS ...]): one GoogleTest program, registered
# with ctest. tests/support supplies main().
function(tavu_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 180)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  _tavu_common(${name} LINK ${ARG_LINK} tavu_test_support)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()

# tavu_npm(<stamp>): installs what the folder's package-lock.json names. <stamp> becomes a file to
# depend on.
function(tavu_npm stamp)
  find_program(TAVU_NPM npm REQUIRED)
  set(file ${CMAKE_CURRENT_SOURCE_DIR}/node_modules/.package-lock.json)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${TAVU_NPM} ci --no-audit --no-fund --loglevel=error
    COMMAND ${CMAKE_COMMAND} -E touch ${file}
    DEPENDS package.json package-lock.json
    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
    COMMENT "Installing the libraries of ${folder} from npm"
    VERBATIM)
  set(${stamp} ${file} PARENT_SCOPE)
endfunction()
