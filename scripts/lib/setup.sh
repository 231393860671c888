# Sourced by the scripts: makes sure that the packages are there that the project is built and tested with.

# Keep in step with docs/dependencies.md.
build_packages=(g++ cmake ninja-build pkg-config libpipewire-0.3-dev libglib2.0-dev libgtest-dev libgmock-dev
                libbenchmark-dev libsndfile1-dev qt6-base-dev qcoro-qt6-dev qt6-declarative-dev qt6-svg-dev
                qml6-module-qtqml qml6-module-qtqml-workerscript qml6-module-qtquick qml6-module-qtquick-controls
                qml6-module-qtquick-layouts qml6-module-qtquick-templates qml6-module-qtquick-window libsodium-dev
                libatspi2.0-dev libxcb1-dev)
session_packages=(dbus pipewire pipewire-bin pipewire-pulse libspa-0.2-modules wireplumber pulseaudio-utils ffmpeg
                  python3-pytest python3-numpy python3-gi python3-dbusmock python3-pyatspi gir1.2-atspi-2.0
                  xvfb at-spi2-core fonts-dejavu-core hicolor-icon-theme adwaita-icon-theme openssl)
bench_packages=(pavucontrol)
lint_packages=(git clang-16 libclang-rt-16-dev clang-tidy-16 clang-format-16 python3 binutils)

# install_packages PACKAGE...: quick when all are there.
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
  [[ -f build/$preset/build.ninja ]] || cmake --preset "$preset"
  cmake --build --preset "$preset" ${1:+--target "$@"}
}
