# What the entry scripts share. Sourced by bash with `set -euo pipefail`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*" >&2; }
fail() {
    say "$(basename "$0"): $*"
    exit 1
}

# The packages of the given sections of the list, for example: packages_of build run
packages_of() {
    awk -v wanted=" $* " '/^# / { section = $2 } /^[^#]/ { if (index(wanted, " " section " ")) print }' \
        "$root/Packaging/debian-packages.txt"
}

# Installs what is missing of the given sections.
install_packages() {
    local missing=() package sudo=()
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null || {
        say "This machine has no apt. Install these packages, or what carries their names here, and put"
        say "VQM_NO_INSTALL=1 into the environment:"
        packages_of "$@" | tr '\n' ' ' >&2
        say ""
        [ -n "${VQM_NO_INSTALL:-}" ] || exit 1
        return 0
    }
    [ -z "${VQM_NO_INSTALL:-}" ] || return 0
    local installed
    installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${binary:Package}\n' | sed -n 's/^ii  *\([^:]*\).*/\1/p')
    while read -r package; do
        grep -qxF -- "$package" <<<"$installed" || missing+=("$package")
    done < <(packages_of "$@")
    [ ${#missing[@]} -eq 0 ] && return 0

    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "need root or sudo to install: ${missing[*]}"
        sudo=(sudo)
    fi
    say "Installing ${missing[*]}"
    local log="$root/build/install.log"
    mkdir -p "$root/build"
    "${sudo[@]}" apt-get update -qq >"$log" 2>&1 || say "apt-get update failed; going on with the lists at hand"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" \
        >>"$log" 2>&1 || {
        tail -n 20 "$log" >&2
        fail "could not install the packages; the whole story is in $log"
    }
}

# Configures and builds a preset: build_preset dev [target...]
build_preset() {
    local preset=$1 log
    shift
    log="$root/build/$preset.log"
    mkdir -p "$root/build"
    local targets=()
    [ $# -eq 0 ] || targets=(--target "$@")
    say "Building ($preset)"
    (cd "$root" && cmake --preset "$preset" && cmake --build --preset "$preset" "${targets[@]}") >"$log" 2>&1 || {
        grep -E 'rror|warning|FAILED' "$log" | head -n 30 >&2 || true
        tail -n 10 "$log" >&2
        fail "the build failed; the whole story is in $log"
    }
}

# Installs what the benchmarks need and builds these targets of them for release, in $build.
build_benchmarks() {
    install_packages build run benchmark
    build=$root/build/benchmark
    say "Building (release, with the benchmarks)"
    mkdir -p "$build"
    (cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVQM_BUILD_TESTS=OFF -DVQM_BUILD_BENCHMARKS=ON &&
        ninja -C "$build" "$@") >"$build/build.log" 2>&1 || {
        tail -n 20 "$build/build.log" >&2
        fail "the build failed; the whole story is in $build/build.log"
    }
}

# Runs a stage and says how long it took: stage NAME COMMAND...
stage() {
    local name=$1 start=$SECONDS
    shift
    say "=== $name"
    "$@" || fail "$name failed after $((SECONDS - start)) s"
    say "=== $name: $((SECONDS - start)) s"
}
