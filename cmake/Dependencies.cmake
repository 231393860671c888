# All libraries of the program, its tests and benchmarks. Their purposes: docs/dependencies.md.
include_guard()

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui Network Qml Quick Svg Widgets)
find_package(QCoro6 REQUIRED COMPONENTS Core)
pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-unix-2.0)
pkg_check_modules(PipeWire REQUIRED IMPORTED_TARGET libpipewire-0.3)
pkg_check_modules(Sodium REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
# Optional: shows the panel at the tray on Wayland. Debian 12 has it for Qt 5 alone.
find_package(LayerShellQt 6 QUIET)
pkg_check_modules(WaylandClient QUIET IMPORTED_TARGET wayland-client)
set(SONVEL_HAS_LAYER_SHELL FALSE)
if(LayerShellQt_FOUND AND WaylandClient_FOUND)
  set(SONVEL_HAS_LAYER_SHELL TRUE)
endif()
# Compiles the translations. Its CMake package would require all of Qt's tools.
find_program(SONVEL_LRELEASE lrelease REQUIRED HINTS "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_BINS}" NO_DEFAULT_PATH)

if(BUILD_TESTING)
  find_package(GTest REQUIRED)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
endif()
if(SONVEL_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
