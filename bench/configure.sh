# SPDX-License-Identifier: BSD-3-Clause
# Sourced by the scripts that measure, from the top folder: installs what is missing on Debian and
# configures build/bench.

bench_needs="heaptrack libbenchmark-dev libceres-dev libcli11-dev libcminpack-dev libeigen3-dev
  libgsl-dev libgtest-dev libimath-dev libopencv-dev nlohmann-json3-dev pkg-config pybind11-dev
  python3-dev python3-numpy python3-opencv valgrind zlib1g-dev"

install_missing() {
  command -v dpkg-query >/dev/null || return 0
  local missing=() package as_root=
  for package in $bench_needs; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "installing ${missing[*]}"
  [ "$(id -u)" = 0 ] || as_root=sudo
  { $as_root apt-get update -qq && $as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; } ||
    echo "not installed: ${missing[*]}" >&2
}

configure() {
  local log=build/bench-configure.log
  mkdir -p build
  cmake --preset release -B build/bench -DCORNERPIN_BENCH=ON >"$log" 2>&1 || {
    cat "$log" >&2
    return 1
  }
  grep '^-- bench:' "$log"
}

# build TARGET...
build() {
  cmake --build build/bench -j "${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" --target "$@" \
    >build/bench-build.log 2>&1 || {
    cat build/bench-build.log >&2
    return 1
  }
}
