# Steps that ./run, ./test and .ci/run share. To be sourced by bash in the project's root folder.
set -euo pipefail

# install_packages [FILE…]: installs what packages.txt and the other files list and the system lacks.
# Instant when nothing is missing.
install_packages() {
    local missing wanted
    wanted=$(sort -u packages.txt "$@")
    missing=$(comm -23 <(echo "$wanted") <(list_installed_packages $wanted | sort -u))
    [[ -z $missing ]] && return
    if ! command -v apt-get >/dev/null; then
        echo "Not a Debian system; these packages may be missing:" $missing >&2
        return
    fi
    echo "Installing" $missing >&2
    run_quietly as_root apt-get update
    run_quietly as_root apt-get install --yes --no-install-recommends $missing
}

# list_installed_packages PACKAGE…
list_installed_packages() {
    # dpkg-query fails when it does not know a package, which is no failure here.
    dpkg-query --show --showformat '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null |
        sed -n 's/ installed$//p' || true
}

as_root() {
    if [[ $(id -u) == 0 ]]; then
        DEBIAN_FRONTEND=noninteractive "$@"
    elif command -v sudo >/dev/null; then
        sudo DEBIAN_FRONTEND=noninteractive "$@"
    else
        echo "Packages can only be installed by root." >&2
        return 1
    fi
}

# Runs a command and shows what it prints only if it fails.
run_quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    [[ $status == 0 ]] || cat "$log" >&2
    rm -f "$log"
    return $status
}

# configure PRESET FOLDER: writes the build files unless they are there and up to date. Changes of
# CMakeLists.txt files are noticed by the build itself.
configure() {
    local preset=$1 folder=$2
    if [[ -e $folder/build.ninja && ! CMakePresets.json -nt $folder/build.ninja ]] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt"; then
        return
    fi
    # Build files of a project folder that was moved are of no use.
    run_quietly cmake --fresh --preset "$preset"
}

# build FOLDER [TARGET…]: builds what is stale. Prints to the standard error stream, and nothing when
# there is nothing to do.
build() {
    local folder=$1
    shift
    cmake --build "$folder" --parallel "$(nproc)" ${1+--target "$@"} 2>&1 |
        { grep --line-buffered -vE '^ninja: no work to do|Re-checking globbed directories|^-- GLOB mismatch' || true; } >&2
}
