# Sourced by tools/demo.sh and tools/test.sh: installs the Debian packages that configuring the
# default preset needs (the library, its tests and benchmarks) when they are missing. As root
# they are installed with apt-get (apt-get update only when something is missing); otherwise the
# missing ones are named and the script stops.
zelsysts_packages=(cmake ninja-build g++ clang libgtest-dev libgmock-dev libbenchmark-dev
  pkg-config libglib2.0-dev)

zelsysts_install_missing_packages() {
  local who="$1" missing=() package
  command -v dpkg >/dev/null 2>&1 || return 0
  for package in "${zelsysts_packages[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
  done
  ((${#missing[@]} == 0)) && return 0
  if [[ "$(id -u)" -ne 0 ]]; then
    echo "$who: missing packages: ${missing[*]}" >&2
    echo "$who: install them with: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  echo "$who: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -y -q --no-install-recommends "${missing[@]}"
}
