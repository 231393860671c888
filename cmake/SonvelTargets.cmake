# The kinds of target in this project, each with the same language level and warnings.
include_guard()
include(GoogleTest)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

set(SONVEL_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them (empty: none)")

add_library(sonvel_options INTERFACE)
target_include_directories(sonvel_options INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_definitions(sonvel_options INTERFACE QT_NO_KEYWORDS)  # `signals` is a name in GIO
target_compile_options(sonvel_options INTERFACE -pthread  # everywhere: it defines a macro that precompiled headers use
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi $<$<BOOL:${SONVEL_WARNINGS_AS_ERRORS}>:-Werror>
    -Wno-missing-field-initializers)  # designated initialisers omit members with defaults on purpose
if(SONVEL_SANITIZE)
  target_compile_options(sonvel_options INTERFACE
      "-fsanitize=${SONVEL_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(sonvel_options INTERFACE "-fsanitize=${SONVEL_SANITIZE}")
  if(SONVEL_SANITIZE STREQUAL "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Qt uses a fence, which GCC's thread sanitizer does not support and warns about.
    target_compile_options(sonvel_options INTERFACE -Wno-tsan)
  endif()
endif()

# sonvel_library(name SOURCES ... [PUBLIC libs ...] [PRIVATE libs ...])
# PUBLIC: libraries that the folder's headers include; PRIVATE: those that only its sources include.
function(sonvel_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC sonvel_options ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
endfunction()

# No warnings and no clang-tidy for code that Qt's tools generate for a QML module.
function(sonvel_leave_generated_code_alone target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "/(qmlcache/|${target}_qmltyperegistrations)")
  if(SONVEL_FAST_BUILD)
    set(cached ${sources})
    list(FILTER cached INCLUDE REGEX "/qmlcache/")
    list(FILTER sources EXCLUDE REGEX "/qmlcache/")
    sonvel_compile_group(${target} 12 ${cached})
  endif()
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS -w)
endfunction()

# sonvel_program(name SOURCES ... LIBS ...)
function(sonvel_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE sonvel_options ${arg_LIBS})
endfunction()

set(SONVEL_TEST_TIMEOUT 120) # seconds
if(SONVEL_SANITIZE)
  set(SONVEL_TEST_TIMEOUT 900) # the thread sanitizer makes the longest one some forty times slower
endif()

# ctest runs tests up to four "processors" at once on two cores (see scripts/test): a test that computes counts as
# two, and one that mostly waits for sound as one. A sanitizer makes all of them compute.
set(SONVEL_COMPUTES PROCESSORS 2)
set(SONVEL_WAITS PROCESSORS 1)
if(SONVEL_SANITIZE)
  set(SONVEL_WAITS ${SONVEL_COMPUTES})
endif()

# sonvel_test(name SOURCES ... LIBS ... [LABELS ...] [LAUNCHER program] [PROPERTIES ...])
# A GoogleTest program; ctest runs each of its tests separately, through the launcher if given. The thread sanitizer is
# for those with the label threads.
function(sonvel_test name)
  cmake_parse_arguments(arg "" "LAUNCHER" "SOURCES;LIBS;LABELS;PROPERTIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  sonvel_compile_together(${name} 3)
  target_link_libraries(${name} PRIVATE sonvel_options ${arg_LIBS} GTest::gmock GTest::gtest_main)
  if(arg_LAUNCHER)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${arg_LAUNCHER}")
  endif()
  set(load ${SONVEL_COMPUTES})
  if("sound" IN_LIST arg_LABELS)
    set(load ${SONVEL_WAITS})
  endif()
  set(labels "")
  if(arg_LABELS)
    list(JOIN arg_LABELS "-" label) # one, because gtest_discover_tests takes no list; "ctest -L" looks for a part of it
    set(labels LABELS "${label}")
  endif()
  gtest_discover_tests(${name}
      TEST_PREFIX "${name}."
      DISCOVERY_MODE PRE_TEST
      PROPERTIES TIMEOUT ${SONVEL_TEST_TIMEOUT} ${load} ${labels} ${arg_PROPERTIES})
endfunction()

set(SONVEL_PYTHON /usr/bin/python3 CACHE FILEPATH "The Python that has the distribution's packages for tests")

# sonvel_pytest(name FILES ... [ALONE] [LABELS ...] [TIMEOUT seconds])
# Runs each test function of the files as a test of its own, in Python on a private desktop (see tests/support). ALONE:
# runs alone, because it counts lost cycles; others wait for what they want to hear.
function(sonvel_pytest name)
  cmake_parse_arguments(arg "ALONE" "TIMEOUT" "FILES;LABELS" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  foreach(file IN LISTS arg_FILES)
    set(path "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${path}")
    file(STRINGS "${path}" functions REGEX "^def test_")
    foreach(function IN LISTS functions)
      string(REGEX REPLACE "^def (test_[A-Za-z0-9_]+).*" "\\1" function "${function}")
      add_test(NAME "${name}.${function}" COMMAND "${SONVEL_PYTHON}" -m pytest "${path}::${function}")
      set_tests_properties("${name}.${function}" PROPERTIES
          TIMEOUT "${arg_TIMEOUT}" RUN_SERIAL ${arg_ALONE} ${SONVEL_WAITS} LABELS "${arg_LABELS}"
          ENVIRONMENT "SONVEL_BIN=${CMAKE_RUNTIME_OUTPUT_DIRECTORY};PYTHONDONTWRITEBYTECODE=1")
    endforeach()
  endforeach()
endfunction()
