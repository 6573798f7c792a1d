#!/bin/bash
# check_package.sh SOURCE BUILD COMPILER: installs the build into a temporary prefix, moves the prefix,
# and builds and runs the example there, once found by CMake and once by pkg-config. Checks what the
# installed headers include.
set -euo pipefail
source=$1 build=$2 compiler=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cmake --install "$build" --prefix "$work/first" >install.log
mv first prefix # nothing in it may hold the path that it was installed to
include=prefix/include/librenderer
libraries=$(dirname "$(find prefix -name librenderer.so)")

check_headers() {
    # Other headers of the project must be installed; all else must be of the standard library.
    local status=0 file header
    while read -r file header; do
        case $header in
        kernel/* | geometry/* | raster/* | renderer/*)
            [[ -e $include/$header ]] && continue
            echo "$file includes $header, which is not installed: is one private, the other not?" ;;
        *)
            [[ $header =~ ^[a-z_]+$ ]] && continue
            echo "$file includes $header, which is neither of this project nor standard" ;;
        esac
        status=1
    done < <(grep -roE '^ *# *include *[<"][^">]+' $include --include='*.h' |
        sed -E 's/^([^:]+):.*[<"]/\1 /')
    return $status
}

# The example writes a PNG file into the folder it is run in.
check_example() {
    rm -f picture.png
    "$1"
    [[ $(head -c 4 picture.png) == $'\x89PNG' && $(stat -c %s picture.png) -gt 1000 ]] ||
        { echo "$1 drew no picture"; return 1; }
}

check_headers
[[ $(find $include -name '*.h' | wc -l) -gt 50 ]]
[[ -L $libraries/librenderer.so.0 && ! -e $include/renderer/core/blend ]]

cp -r "$source/examples/consumer" example
cmake -S example -B cmake -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_COMPILER="$compiler" >cmake.log
cmake --build cmake >build.log || { cat build.log; exit 1; }
check_example cmake/consumer

PKG_CONFIG_PATH=$libraries/pkgconfig
export PKG_CONFIG_PATH
"$compiler" -std=c++20 example/main.cpp $(pkg-config --cflags --libs renderer) -o by-pkg-config
export LD_LIBRARY_PATH=$libraries
check_example ./by-pkg-config
