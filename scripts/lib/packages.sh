# shellcheck shell=bash
# Sourced by the scripts: installs what they need on a bare Debian machine, and nothing where
# everything is there.

# need PROGRAM [PACKAGE]: notes the package of a program that is missing.
mMissing=()
need() {
    command -v "$1" >/dev/null || mMissing+=("${2:-$1}")
}

need_compiler() {
    need c++ g++
    need cmake
    # CMake writes makefiles unless it is told otherwise.
    case ${CMAKE_GENERATOR:-} in
        Ninja*) need ninja ninja-build ;;
        *) need make ;;
    esac
}

need_gtest() {
    echo '#include <gtest/gtest.h>' | "${CXX:-c++}" -E -x c++ - >/dev/null 2>&1 ||
        mMissing+=(libgtest-dev)
}

# Google Benchmark, and what the benchmarks measure against.
need_benchmarks() {
    need pkg-config
    [[ -e /usr/include/benchmark/benchmark.h ]] || mMissing+=(libbenchmark-dev)
    local module
    for module in hdf5 muparser inih; do
        pkg-config --exists "$module" 2>/dev/null || mMissing+=("lib$module-dev")
    done
}

# The run-time library that clang links fuzz targets with.
need_fuzzer() {
    [[ -e $(clang++ -print-file-name="libclang_rt.fuzzer-$(uname -m).a" 2>/dev/null) ]] ||
        mMissing+=(libclang-rt-14-dev)
}

# The tests compile a locale with a decimal comma from its sources.
need_locale_sources() {
    [[ -e /usr/share/i18n/locales/de_DE ]] || mMissing+=(locales)
}

# Installs the packages noted so far.
install_missing() {
    [[ ${#mMissing[@]} -gt 0 ]] || return 0
    if ! command -v apt-get >/dev/null; then
        echo "please install: ${mMissing[*]}" >&2
        return 1
    fi
    local as_root=()
    if [[ $(id -u) != 0 ]]; then
        if ! command -v sudo >/dev/null; then
            echo "as root, please run: apt-get install ${mMissing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "installing ${mMissing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${mMissing[@]}" >/dev/null
    mMissing=()
}
