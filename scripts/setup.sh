# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 Vantrell Capture developers
#
# Sourced by ./run and ./test: makes a fresh Debian 12 machine ready. Each step looks first and does nothing
# when it has nothing to do.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
tools=$root/build/tools

say() { printf '\033[1m== %s\033[0m\n' "$*" >&2; }
fail() { printf '%s\n' "$*" >&2; exit 1; }

build_packages=(
  clang-19 clang-tidy-19 clang-format-19 libclang-rt-19-dev lld-19 cmake ninja-build pkg-config ccache git ca-certificates
  qt6-base-dev qt6-base-private-dev qt6-svg-dev qt6-l10n-tools qcoro-qt6-dev nlohmann-json3-dev libcurl4-openssl-dev libssl-dev libgtest-dev libgmock-dev
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev libx264-dev libyuv-dev libturbojpeg0-dev
  libxcb1-dev libxcb-shm0-dev libxcb-damage0-dev libxcb-xfixes0-dev libxcb-composite0-dev libxcb-randr0-dev
  libxcb-shape0-dev libxcb-xinput-dev libxcb-xkb-dev libxcb-screensaver0-dev libxcb-icccm4-dev libxcb-ewmh-dev libxcb-image0-dev
  libxcb-render0-dev libxcb-util-dev libxcb-xtest0-dev libpulse-dev libpipewire-0.3-dev libsecret-1-dev libglib2.0-dev
  libwayland-dev libwayland-bin wayland-protocols libxkbcommon-dev
)
# A desktop out of nothing, for the demo and the tests.
desktop_packages=(xvfb openbox dbus xauth x11-utils x11-xserver-utils xdotool hsetroot procps openssl curl)
test_packages=(
  ffmpeg mpv chromium gstreamer1.0-plugins-base-apps gstreamer1.0-plugins-good gstreamer1.0-libav
  gnome-keyring libglib2.0-bin libsecret-tools python3-dbusmock desktop-file-utils glib-networking picom sox
  pipewire pipewire-bin pipewire-pulse wireplumber pulseaudio-utils
  sway xdg-desktop-portal xdg-desktop-portal-wlr grim wtype qt6-wayland
  at-spi2-core gir1.2-atspi-2.0 python3-gi
)
# For packaging/: building packages, looking at them, and a bare system to install them in.
packaging_packages=(
  debhelper dpkg-dev lintian desktop-file-utils appstream man-db zstd patchelf mmdebstrap
)

# install_packages <package>... installs what is missing, with apt.
install_packages() {
  local missing=() package
  local installed
  installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' 2>/dev/null | sed -n 's/^ii *//p')
  for package; do
    grep -qxF "$package" <<<"$installed" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  command -v apt-get >/dev/null || fail "These packages are missing and this is no Debian system: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || fail "Install these packages as root, then try again: ${missing[*]}"
    as_root=(sudo)
  fi
  say "Installing ${#missing[@]} packages"
  "${as_root[@]}" apt-get update -qq || fail "apt-get update failed"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >"${TMPDIR:-/tmp}/vantrell-apt.$$.log" 2>&1 ||
    { tail -n 20 "${TMPDIR:-/tmp}/vantrell-apt.$$.log" >&2; fail "apt-get install failed"; }
  rm -f "${TMPDIR:-/tmp}/vantrell-apt.$$.log"
}

node_is_new_enough() { [ "$("$1" -p 'process.versions.node.split(".")[0] >= 20' 2>/dev/null)" = true ]; }

# setup_service: Node 20 or newer in PATH and the service's packages from its lock file.
setup_service() {
  export PATH=$tools/node_modules/node/bin:$PATH
  if ! command -v npm >/dev/null; then
    install_packages nodejs npm
  fi
  if ! node_is_new_enough node; then
    say "Fetching a newer Node for the service"
    mkdir -p "$tools"
    npm install --silent --no-audit --no-fund --prefix "$tools" node@20 >&2 || fail "npm could not fetch Node"
    hash -r
    node_is_new_enough node || fail "Node 20 or newer is needed"
  fi
  local stamp=$root/service/node_modules/.installed
  if ! cmp -s "$root/service/package-lock.json" "$stamp"; then
    say "Installing the service's packages"
    (cd "$root/service" && npm ci --silent --no-audit --no-fund >&2) || fail "npm ci failed"
    cp "$root/service/package-lock.json" "$stamp"
  fi
}

# build <preset> [target]...
build() {
  local preset=$1
  shift
  if [ ! -f "$root/build/$preset/build.ninja" ]; then
    say "Configuring ($preset)"
    (cd "$root" && cmake --preset "$preset" >"$root/build/$preset.log" 2>&1) ||
      { cat "$root/build/$preset.log" >&2; fail "cmake failed"; }
  fi
  say "Building ($preset)"
  (cd "$root" && cmake --build --preset "$preset" ${1:+--target "$@"} >&2) || fail "the build failed"
}
