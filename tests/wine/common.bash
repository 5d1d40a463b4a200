# Shared by the Wine runners: where things are kept, and a private Windows installation ("prefix") that is ready to use.
#
# A prefix is made once and reused. Two runners that start together are kept apart by a lock beside the prefix, and a
# prefix whose making was cut short is made again. A prefix that somebody else made (WINEPREFIX) is used as it stands.

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

fail() {
  echo "${0##*/}: $*" >&2
  exit 125
}

# The folder that holds, or will hold, 32-bit Wine when Debian's wine32 is not installed on this machine.
wine32_root() {
  local codename
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-debian}")
  echo "${VELLOBAR_WINE32_ROOT:-${XDG_CACHE_HOME:-${HOME:-$source_dir/build}/.cache}/vellobar/wine32-$codename}"
}

# Debian's own wine32, there only where the machine has the i386 architecture.
host_wine32=/usr/lib/wine/wine

# Settings under which every Windows program runs the same way, on a desk and on a server without a display.
set_wine_environment() {
  export WINEDEBUG="${WINEDEBUG:--all}"
  # No .NET and no browser engine: Wine would offer to fetch them. No menu entries on the user's desktop.
  export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
  # The ANSI code page is then 1252, and file names reach the disk as UTF-8.
  export LC_ALL=C.UTF-8
  unset DISPLAY WAYLAND_DISPLAY
}

# Starts a display of its own for programs with real windows. A Windows desktop keeps the display it was started with, so the
# prefix is used by one such program at a time, and its desktop ends with the display.
start_display() {
  command -v Xvfb >/dev/null || fail "Xvfb is missing; scripts/install-packages installs it"
  mkdir -p "$(dirname "$WINEPREFIX")"
  exec 8>"$WINEPREFIX.display.lock"
  flock 8
  local number_file=$WINEPREFIX.display
  rm -f "$number_file"
  mkfifo "$number_file"
  Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$number_file" >/dev/null 2>&1 8>&- &
  xvfb_pid=$!
  trap stop_display EXIT
  trap 'exit 143' TERM INT HUP
  local number=
  read -r -t 30 number <"$number_file" || true
  rm -f "$number_file"
  [ -n "$number" ] || fail "Xvfb did not start"
  "$WINESERVER" -k 8>&- 2>/dev/null
  export DISPLAY=":$number"
}

stop_display() {
  "$WINESERVER" -k 8>&- 2>/dev/null
  "$WINESERVER" -w 8>&- 2>/dev/null
  kill "$xvfb_pid" 2>/dev/null
  wait "$xvfb_pid" 2>/dev/null
}

prefix_is_ready() {
  [ -e "$WINEPREFIX/system.reg" ] && [ ! -e "$WINEPREFIX/.being-made" ]
}

# Makes the prefix unless it is there. $1: the Wine loader.
prepare_prefix() {
  prefix_is_ready && return
  mkdir -p "$(dirname "$WINEPREFIX")"
  exec 9>"$WINEPREFIX.lock"
  flock 9
  if ! prefix_is_ready; then
    if [ -e "$WINEPREFIX/.being-made" ]; then
      "$WINESERVER" -k 9>&- 2>/dev/null
      rm -rf "$WINEPREFIX"
    fi
    mkdir -p "$WINEPREFIX"
    touch "$WINEPREFIX/.being-made"
    # Wine's server outlives this command and must not inherit the lock; waiting for it puts the registry on disk.
    "$1" wineboot --init </dev/null >"$WINEPREFIX.log" 2>&1 9>&- && "$WINESERVER" -w 9>&-
    [ -e "$WINEPREFIX/system.reg" ] || fail "Wine could not make $WINEPREFIX; see $WINEPREFIX.log"
    rm "$WINEPREFIX/.being-made"
  fi
  exec 9>&-
}

# Starts the Windows desktop if it is not up, for as long as programs come: that takes longer than most of them run. Its
# processes live on behind the first program, so they must not hold what that one writes to. $1: the Wine loader.
keep_desktop_up() {
  exec 9>"$WINEPREFIX.lock"
  flock 9
  # The server says no when it is up already.
  if "$WINESERVER" -p20 </dev/null >/dev/null 2>&1 9>&-; then
    "$1" cmd /c exit </dev/null >/dev/null 2>&1 9>&-
  fi
  exec 9>&-
}

# Runs a Windows program and ends with its exit code. $1: the Wine loader, then the program and its arguments.
run_windows_program() {
  local loader=$1
  shift
  set_wine_environment
  prepare_prefix "$loader"
  if [ -z "${VELLOBAR_DISPLAY:-}" ]; then
    keep_desktop_up "$loader"
    exec "$loader" "$@" </dev/null
  fi
  start_display
  "$loader" "$@" </dev/null 8>&-
}

# Reads the runner's own option. $1: the default name of the prefix, then the command line; leaves the rest in `program`.
choose_prefix() {
  local prefix="$source_dir/build/wine/$1"
  shift
  if [ "${1:-}" = --prefix ]; then
    [ $# -ge 2 ] || fail "--prefix needs a folder"
    prefix=$2
    shift 2
  fi
  [ $# -ge 1 ] || fail "usage: ${0##*/} [--prefix FOLDER] PROGRAM [ARGUMENT...]"
  case $prefix in /*) ;; *) prefix="$PWD/$prefix" ;; esac
  # Programs with windows restart their Windows desktop and so get an installation of their own.
  export WINEPREFIX="${WINEPREFIX:-$prefix${VELLOBAR_DISPLAY:+-display}}"
  program=("$@")
}
