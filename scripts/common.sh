# What the scripts share; to be sourced. Each script works from any folder and needs only POSIX tools to begin with.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
cd "$top"

say() { printf '%s\n' "$*"; }
fail() { printf '%s\n' "$*" >&2; exit 1; }

# probe KIND:NAME - whether a command, or a library that pkg-config knows, is there.
probe() {
  case "$1" in
    command:*) command -v "${1#command:}" >/dev/null 2>&1 ;;
    library:*) command -v pkg-config >/dev/null 2>&1 && pkg-config --exists "${1#library:}" ;;
    file:*) ls ${1#file:} >/dev/null 2>&1 ;;
  esac
}

# need KIND:NAME=DEBIAN-PACKAGE ... - installs what is missing with Debian's package manager where that is possible;
# elsewhere stops with the list of what is missing.
need() {
  missing="" packages=""
  for item in "$@"; do
    if ! probe "${item%%=*}"; then
      missing="$missing
  ${item%%=*}  (Debian package ${item#*=})"
      packages="$packages ${item#*=}"
    fi
  done
  [ -n "$missing" ] || return 0
  become=""
  if command -v apt-get >/dev/null 2>&1; then
    if [ "$(id -u)" != 0 ]; then
      command -v sudo >/dev/null 2>&1 || fail "These are missing, and installing them needs root or sudo:$missing"
      become=sudo
    fi
    say "Installing with apt-get:$packages"
    mkdir -p build
    # shellcheck disable=SC2086
    { $become apt-get update -qq &&
      $become env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $packages; } \
      >build/install.log 2>&1 || { cat build/install.log; fail "These could not be installed:$missing"; }
  else
    fail "These are missing; please install them and run this again:$missing"
  fi
}

need_build() {
  need command:g++=g++ command:cmake=cmake command:ninja=ninja-build command:pkg-config=pkg-config \
       library:CLI11=libcli11-dev library:nlohmann_json=nlohmann-json3-dev "$@"
}

# configure_and_build PRESET [TARGET...] - quick where nothing has changed; all targets if none is named.
configure_and_build() {
  preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if ! cmake --preset "$preset" -G Ninja >"$log" 2>&1; then
    cat "$log"
    fail "Configuring the preset $preset failed."
  fi
  if ! cmake --build --preset "$preset" ${1:+--target "$@"} >"$log" 2>&1; then
    tail -n 100 "$log"
    fail "Building the preset $preset failed."
  fi
}
