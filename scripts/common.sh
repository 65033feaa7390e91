# What the scripts share; sourced, not run. Leaves the shell in the project's folder, whatever folder it was in.
scripts=$(cd "$(dirname "$0")" && pwd)
project=$(dirname "$scripts")
cd "$project"

# Configures and builds a preset:  build PRESET [TARGET ...].  What it says is shown only if it fails, or with VERBOSE=1.
build() {
  preset=$1
  shift
  if command -v ccache >/dev/null; then
    export TOLVENAR_CCACHE="${TOLVENAR_CCACHE-ccache}"
  else
    export TOLVENAR_CCACHE=
  fi
  echo "Building the preset '$preset' ..."
  log="build/$preset.log"
  mkdir -p build
  if [ "${VERBOSE:-}" = 1 ]; then
    cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}
  else
    { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } >"$log" 2>&1 ||
      { status=$?; cat "$log" >&2; echo "The build of '$preset' failed; what it said is above and in $log." >&2; return "$status"; }
  fi
}
