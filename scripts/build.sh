# Shared by ./run and ./check, which source it: installs what is missing and builds a preset.
# What these steps print goes to standard error, so that standard output is the program's or the tests'.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# Runs a command and shows its output only if it fails.
quietly() {
  local output
  if output=$("$@" 2>&1); then return 0; fi
  printf '%s\n' "$output" >&2
  return 1
}

# install_missing PACKAGE...: does nothing, and needs no rights, when all are there. On a system without
# Debian's packages they are taken to be there, and the build says what it does not find.
install_missing() {
  command -v dpkg-query >/dev/null || return 0
  local package missing=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "Installing ${missing[*]}..." >&2
  quietly as_root apt-get update
  quietly as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"
}

# build PRESET [CMAKE OPTION...]
build() {
  local preset=$1
  shift
  echo "Building ($preset)..." >&2
  (cd "$root" && quietly cmake --preset "$preset" "$@" &&
    quietly cmake --build --preset "$preset" --parallel "$(nproc)")
}

build_packages=(g++ cmake make libncl-dev libcli11-dev zlib1g-dev)
test_packages=(git libgtest-dev)
python_packages=(python3-dev python3-venv python3-pip python3-setuptools python3-wheel python3-pybind11 pybind11-dev
  python3-numpy)

# Installs the Python module as users do, in an environment that sees Debian's packages; its interpreter is then
# $python.
build_python() {
  install_missing "${python_packages[@]}" "$@"
  local environment=$root/build/venv
  python=$environment/bin/python
  [ -d "$environment" ] || /usr/bin/python3 -m venv --system-site-packages "$environment"
  (cd "$root" && quietly "$environment/bin/pip" install --no-build-isolation --no-deps .)
}
