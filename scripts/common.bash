# Shared by the commands of this folder: stages that say what they do, how long it took, and which one failed.

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$source_dir" || exit 1
summary=()

# Runs one stage and ends the whole command with that stage's exit code when it fails. $1: its name, then its command.
stage() {
  local name=$1 started=$SECONDS status=0
  shift
  echo
  echo "==> $name"
  "$@" || status=$?
  if [ $status -ne 0 ]; then
    echo
    echo "FAILED: $name (exit code $status, after $((SECONDS - started)) s)" >&2
    exit $status
  fi
  summary+=("$(printf '%5d s  %s' $((SECONDS - started)) "$name")")
}

# Prints what the stages so far took.
print_summary() {
  echo
  echo "Done so far:"
  printf '%s\n' "${summary[@]}"
  printf '%5d s  in all\n' "$SECONDS"
}

# Runs a command and shows what it printed only when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  [ $status -eq 0 ] || cat "$log"
  rm -f "$log"
  return $status
}

# Configures and builds one preset with every processor. $1: the preset; then targets, all of them when none is named.
build() {
  local preset=$1
  shift
  if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}; fi
  quietly cmake --preset "$preset" && quietly cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"}
}
