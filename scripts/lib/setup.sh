# Sourced by the scripts: installs the packages for building and testing.

# Keep docs/dependencies.md in step. Only this file knows the differences between Debian releases.
clang_version=16
svg_plugins=()
layer_shell=()
if (. /etc/os-release && ((${VERSION_ID:-12} >= 13))); then
  clang_version=19
  svg_plugins=(qt6-svg-plugins) # many applications have SVG icons; before Debian 13 the library brings the plugins
  layer_shell=(liblayershellqtinterface-dev libwayland-dev) # for Qt 6 since Debian 13
fi

# Packages for building the program without tests (BUILD_TESTING=OFF), and its run-time modules.
build_packages=(g++ cmake ninja-build pkg-config libpipewire-0.3-dev libglib2.0-dev qt6-base-dev qcoro-qt6-dev
                qt6-declarative-dev qt6-svg-dev qt6-l10n-tools libsodium-dev libxcb1-dev librsvg2-bin
                qml6-module-qtqml qml6-module-qtqml-workerscript qml6-module-qtquick qml6-module-qtquick-controls
                qml6-module-qtquick-layouts qml6-module-qtquick-templates qml6-module-qtquick-window
                "${svg_plugins[@]}" "${layer_shell[@]}")
# Packages for building the tests, and for the desktop and sound server that they start.
test_packages=(libgtest-dev libgmock-dev
               dbus pipewire pipewire-bin pipewire-pulse libspa-0.2-modules wireplumber pulseaudio-utils ffmpeg
               python3-pytest python3-numpy python3-dbus python3-dbusmock
               xvfb at-spi2-core fonts-dejavu-core hicolor-icon-theme adwaita-icon-theme openssl)
# Packages for making and checking a Debian package.
package_packages=(dpkg-dev file lintian desktop-file-utils appstream)
# The panels and compositors that scripts/pictures shows the program in.
picture_packages=(sway waybar foot grim wtype qt6-wayland xfce4-panel xfwm4)
bench_packages=(libbenchmark-dev pavucontrol)
lint_packages=(git "clang-$clang_version" "libclang-rt-$clang_version-dev" "clang-tidy-$clang_version"
               "clang-format-$clang_version" python3 binutils)

# install_packages PACKAGE...   returns quickly if all are installed
install_packages() {
  local missing=() package
  for package in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null) == ii* ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  local as_root=()
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null || ! sudo -v; then
      echo "These Debian packages are missing: ${missing[*]}" >&2
      echo "Install them as root with: apt-get install --no-install-recommends ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  if [[ ! -f build/$preset/build.ninja ]]; then
    local options=()
    [[ $preset != clang && $preset != fuzz ]] || options=("-DCMAKE_CXX_COMPILER=clang++-$clang_version")
    cmake --preset "$preset" "${options[@]}"
  fi
  cmake --build --preset "$preset" ${1:+--target "$@"}
}
