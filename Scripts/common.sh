# Functions that the entry scripts share. Sourced by bash with `set -euo pipefail`.

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
    local missing=() package sudo=() log=$root/build/install.log
    [ -z "${VQM_NO_INSTALL:-}" ] || return 0
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null || {
        say "This machine has no apt. Install these packages, or what carries their names here, and put"
        say "VQM_NO_INSTALL=1 into the environment:"
        say "    $(packages_of "$@" | sort -u | paste -sd' ')"
        exit 1
    }
    local installed
    installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${binary:Package}\n' | sed -n 's/^ii  *\([^:]*\).*/\1/p')
    while read -r package; do
        grep -qxF -- "$package" <<<"$installed" || missing+=("$package")
    done < <(packages_of "$@" | sort -u)
    [ ${#missing[@]} -eq 0 ] && return 0

    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            say "Packages are missing, and this user cannot install them: there is no sudo. As root:"
            ask_for_packages "${missing[@]}"
        }
        sudo=(sudo)
    fi
    say "Installing ${missing[*]}"
    mkdir -p "$root/build"
    "${sudo[@]}" apt-get update -qq >"$log" 2>&1 || say "apt-get update failed; going on with the lists at hand"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        -o APT::Status-Fd=1 "${missing[@]}" 2>&1 | follow "$log" || {
        tail -n 20 "$log" >&2
        say "Could not install the packages; the whole story is in $log. By hand, as root:"
        ask_for_packages "${missing[@]}"
    }
}

# Ends a script that cannot install what it needs.
ask_for_packages() {
    say "    apt-get install -y --no-install-recommends $*"
    say "If this machine has what they bring from elsewhere, put VQM_NO_INSTALL=1 into the environment."
    exit 1
}

# Adds what it reads to a log, and shows how far apt or ninja has come: in place on a terminal, else
# in a line every half minute.
follow() {
    local log=$1 line far shown=$SECONDS terminal=
    if [ -t 2 ] && [ "${TERM:-dumb}" != dumb ]; then terminal=1; fi
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$log"
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
            far="${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} steps"
        elif [[ $line =~ ^(dl|pm)status:[^:]*:([0-9]+) ]]; then
            case ${BASH_REMATCH[1]} in dl) far="downloaded" ;; *) far="installed" ;; esac
            far="${BASH_REMATCH[2]} % $far"
        else
            continue
        fi
        if [ -n "$terminal" ]; then
            printf '\r    %s\033[K' "$far" >&2
        elif [ $((SECONDS - shown)) -ge 30 ]; then
            shown=$SECONDS
            say "    $far"
        fi
    done
    [ -z "$terminal" ] || printf '\r\033[K' >&2
}

# Where this machine's apt gets a release from: apt_site 'bookworm|trixie'; nothing where it does not.
apt_site() {
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(SITE) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        awk -v release="^($1)\$" '$2 ~ release && $3 == "main" { print $1; exit }'
}

# Prepares ccache. Checkouts in different folders share what it keeps. Where it can keep nothing, as in
# a home that is read-only, it would compile nothing, so it is left out.
prepare_ccache() {
    local folder
    export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$root} CCACHE_NOHASHDIR=1
    command -v ccache >/dev/null && [ -z "${CCACHE_READONLY:-}" ] || return 0
    folder=$(ccache --get-config cache_dir 2>/dev/null) && mkdir -p "$folder" 2>/dev/null && [ -w "$folder" ] ||
        export CCACHE_DISABLE=1
}

# Configures and builds a preset: build_preset dev [target...]
build_preset() { build_with -DVQM_BUILD_TESTS=ON -- "$@"; }

# The same for everything but tests. Dependencies of tests and benchmarks are not looked for, unless the
# build folder has them already.
build_product() {
    local parts=(-DVQM_BUILD_TESTS=OFF -DVQM_BUILD_BENCHMARKS=OFF)
    ! grep -qs '^VQM_BUILD_TESTS:BOOL=ON' "$root/build/$1/CMakeCache.txt" || parts=()
    build_with "${parts[@]}" -- "$@"
}

# build_with CMAKE_ARGUMENT... -- PRESET [TARGET...]
build_with() {
    local settings=() preset log targets=()
    while [ "$1" != -- ]; do
        settings+=("$1")
        shift
    done
    preset=$2
    shift 2
    [ $# -eq 0 ] || targets=(--target "$@")
    log=$root/build/$preset.log
    mkdir -p "$root/build"
    say "Building ($preset)"
    prepare_ccache
    : >"$log"
    (cd "$root" && cmake --preset "$preset" "${settings[@]}" &&
        NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" "${targets[@]}") 2>&1 | follow "$log" || {
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
    prepare_ccache
    mkdir -p "$build"
    : >"$build/build.log"
    (cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVQM_BUILD_TESTS=OFF -DVQM_BUILD_BENCHMARKS=ON &&
        NINJA_STATUS='[%f/%t] ' ninja -C "$build" "$@") 2>&1 | follow "$build/build.log" || {
        tail -n 20 "$build/build.log" >&2
        fail "the build failed; the whole story is in $build/build.log"
    }
}

# Runs a stage and says how long it took: stage NAME COMMAND...
stage() {
    # A function of the caller's that runs here sees these variables too, hence their long names.
    local stage_title=$1 stage_start=$SECONDS
    shift
    say "=== $stage_title"
    "$@" || fail "$stage_title failed after $((SECONDS - stage_start)) s"
    say "=== $stage_title: $((SECONDS - stage_start)) s"
}
