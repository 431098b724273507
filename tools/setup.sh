# Sourced by the scripts of tools/ and by .ci/run.
#
# zelsysts_require <who> <need>...: makes sure the Debian packages of each need are installed.
# Run as root with apt-get at hand, it installs what is missing (apt-get update only then);
# otherwise it names the missing packages, says how to install them, and stops the script.
#   build   the library and the demonstration: cmake, Ninja, g++
#   tests   the test suite: GoogleTest, pkg-config (the install test builds a pkg-config client),
#           nlohmann-json (the dictionary tool's tests parse its JSON); Graphviz stays optional
#   clang   the clang builds (thread-safety analysis, ThreadSanitizer): clang and its runtimes
#   valgrind  the demonstration under valgrind's memcheck (continuous integration)
#   bench   tools/bench.sh: Google Benchmark, GLib (the registration benchmark's peer), python3
# Google Benchmark (libbenchmark-dev) and GLib (libglib2.0-dev, a baseline of one benchmark) are
# never required by the build and the tests: without them the benchmarks, or that baseline, are
# left out.
#
# zelsysts_parallelism: CMAKE_BUILD_PARALLEL_LEVEL and CTEST_PARALLEL_LEVEL, the one way every
# script and preset is told how many jobs to run, default to the number of processors.

zelsysts_packages_for() {
  case "$1" in
    build) echo cmake ninja-build g++ ;;
    tests) echo libgtest-dev pkg-config nlohmann-json3-dev ;;
    clang) echo clang libclang-rt-14-dev ;;
    valgrind) echo valgrind ;;
    bench) echo libbenchmark-dev libglib2.0-dev pkg-config python3 ;;
    *) echo "zelsysts_require: unknown need '$1'" >&2; return 1 ;;
  esac
}

zelsysts_require() {
  local who="$1" need package missing=()
  shift
  for need in "$@"; do
    for package in $(zelsysts_packages_for "$need"); do
      dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
        missing+=("$package")
    done
  done
  ((${#missing[@]} == 0)) && return 0
  if [[ "$(id -u)" -ne 0 ]] || ! command -v apt-get >/dev/null 2>&1; then
    echo "$who: missing Debian packages: ${missing[*]}" >&2
    echo "$who: install them (as root) with: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  echo "$who: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -y -q --no-install-recommends "${missing[@]}"
}

zelsysts_parallelism() {
  local processors
  processors="$(nproc 2>/dev/null || echo 2)"
  export CMAKE_BUILD_PARALLEL_LEVEL="${CMAKE_BUILD_PARALLEL_LEVEL:-$processors}"
  export CTEST_PARALLEL_LEVEL="${CTEST_PARALLEL_LEVEL:-$processors}"
}
