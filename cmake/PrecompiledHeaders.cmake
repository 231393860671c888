# The headers that most files include, compiled once for many targets, so that a whole build takes less time. Off by
# default, and in CI, so that a missing include is seen.
include_guard()

option(SONVEL_PRECOMPILED_HEADERS "Compile the most used headers once for many targets" OFF)

# sonvel_precompile(name HEADERS ... [LIBS ...] [INCLUDES_OF ...] FOR targets...)
# LIBS: libraries that all targets use; INCLUDES_OF: those whose headers are found, but whose definitions not all
# targets have, because the compiler refuses the headers where one of their definitions is missing. The targets must
# have the same compiler options as the calling folder.
function(sonvel_precompile name)
  if(NOT SONVEL_PRECOMPILED_HEADERS)
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
