# FUSE file systems of the tests' own and the helper that mounts them. libfuse3 is looked for once, here;
# where it is missing the functions below build nothing, and the tests that mount skip themselves wherever
# FUSE cannot be mounted.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(FUSE3 QUIET IMPORTED_TARGET fuse3)
endif()
if(FUSE3_FOUND)
  add_library(vindaro_fuse_fs STATIC ${CMAKE_CURRENT_LIST_DIR}/FuseFs.cpp)
  target_include_directories(vindaro_fuse_fs PUBLIC ${CMAKE_CURRENT_LIST_DIR})
  target_link_libraries(vindaro_fuse_fs PUBLIC PkgConfig::FUSE3)
  vindaro_warnings(vindaro_fuse_fs)

  add_library(vindaro_fuse_mount STATIC ${CMAKE_CURRENT_LIST_DIR}/FuseMount.cpp)
  target_include_directories(vindaro_fuse_mount PUBLIC ${CMAKE_CURRENT_LIST_DIR})
  target_link_libraries(vindaro_fuse_mount PUBLIC vindaro_test_support)
  vindaro_warnings(vindaro_fuse_mount)
else()
  message(STATUS "libfuse3 not found: the FUSE tests are not built")
endif()

# vindaro_fuse_program(NAME SOURCES ...): a FUSE file system for the tests and the benchmarks.
function(vindaro_fuse_program name)
  if(NOT TARGET vindaro_fuse_fs)
    return()
  endif()
  cmake_parse_arguments(P "" "" "SOURCES" ${ARGN})
  add_executable(${name} ${P_SOURCES})
  target_link_libraries(${name} PRIVATE vindaro_fuse_fs)
  vindaro_warnings(${name})
endfunction()

# vindaro_fuse_test(NAME SOURCES ... LIBS ... PROGRAMS ...): a test that runs PROGRAMS (FUSE file systems or
# tools); each one's path is a macro named after it in capitals (medium_fs: MEDIUM_FS, vindaro-copy: VINDARO_COPY).
function(vindaro_fuse_test name)
  if(NOT TARGET vindaro_fuse_mount)
    return()
  endif()
  cmake_parse_arguments(T "" "" "SOURCES;LIBS;PROGRAMS" ${ARGN})
  vindaro_test(${name} SOURCES ${T_SOURCES} LIBS vindaro_fuse_mount ${T_LIBS})
  foreach(program ${T_PROGRAMS})
    string(MAKE_C_IDENTIFIER ${program} macro)
    string(TOUPPER ${macro} macro)
    add_dependencies(${name} ${program})
    target_compile_definitions(${name} PRIVATE ${macro}="$<TARGET_FILE:${program}>")
  endforeach()
endfunction()

# Read-only files with read errors, hanging reads and refused removals, for the file commands' and the media
# windows' tests.
vindaro_fuse_program(faulty_fs SOURCES ${CMAKE_CURRENT_LIST_DIR}/FaultyFs.cpp)
