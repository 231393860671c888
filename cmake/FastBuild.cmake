# What makes a whole build take less time: the headers that most files include are compiled once for many targets, and
# files of tests and of generated code several at a time. Off by default, and in CI, so that a missing include is seen.
include_guard()

option(SONVEL_FAST_BUILD "Compile the most used headers once, and tests and generated code several files at a time" OFF)

# sonvel_compile_together(target count): so many files of the target at a time.
function(sonvel_compile_together target count)
  if(SONVEL_FAST_BUILD)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${count})
    # Fixtures in an unnamed namespace are meant to be of their file alone.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()

# sonvel_compile_group(target count sources...): the same for these generated sources alone, without warnings.
function(sonvel_compile_group target count)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP
      UNITY_BUILD_CODE_BEFORE_INCLUDE "#pragma GCC diagnostic ignored \"-Wshadow\"")
  set(group 0)
  set(size 0)
  foreach(source IN LISTS ARGN)
    set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "generated_${group}")
    math(EXPR size "${size} + 1")
    if(size EQUAL count)
      math(EXPR group "${group} + 1")
      set(size 0)
    endif()
  endforeach()
endfunction()

# sonvel_precompile(name HEADERS ... [LIBS ...] [INCLUDES_OF ...] FOR targets...)
# LIBS: libraries that all targets use; INCLUDES_OF: those whose headers are found, but whose definitions not all
# targets have, because the compiler refuses the headers where one of their definitions is missing. The targets must
# have the same compiler options as the calling folder.
function(sonvel_precompile name)
  if(NOT SONVEL_FAST_BUILD)
    return()
  endif()
  cmake_parse_arguments(arg "" "" "HEADERS;LIBS;INCLUDES_OF;FOR" ${ARGN})
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(${name} OBJECT "${source}")
  target_link_libraries(${name} PRIVATE sonvel_options ${arg_LIBS})
  foreach(library IN LISTS arg_INCLUDES_OF)
    target_include_directories(${name} SYSTEM PRIVATE "$<TARGET_PROPERTY:${library},INTERFACE_INCLUDE_DIRECTORIES>")
  endforeach()
  target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
  foreach(target IN LISTS arg_FOR)
    target_precompile_headers(${target} REUSE_FROM ${name})
  endforeach()
endfunction()

set(SONVEL_STANDARD_HEADERS <algorithm> <array> <chrono> <condition_variable> <filesystem> <functional> <map>
    <memory> <mutex> <optional> <set> <span> <string> <string_view> <utility> <variant> <vector>)
set(SONVEL_QT_HEADERS ${SONVEL_STANDARD_HEADERS} <QCoroTask> <QDBusArgument> <QDBusConnection> <QDBusMessage>
    <QDBusServiceWatcher> <QFile> <QGuiApplication> <QIcon> <QQmlEngine> <QQuickWindow> <QTimer> <QUrl> <QVariantMap>)
set(SONVEL_QT_LIBS QCoro6::Coro QCoro6::Core Qt6::DBus Qt6::Gui Qt6::Network Qt6::Qml Qt6::QmlIntegration Qt6::QmlModels
    Qt6::Quick)
