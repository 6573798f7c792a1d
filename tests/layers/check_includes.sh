#!/bin/bash
# check_includes.sh FOLDER: checks what the sources below the project's FOLDER include. Layers point
# one way, and each third-party library has its room: the files that may include it.
set -euo pipefail
cd "$1"

# Layer and the layers that it may include.
layers='
kernel    kernel
geometry  kernel|geometry
raster    kernel|geometry|raster
renderer  kernel|geometry|raster|renderer
tools     kernel|geometry|raster|renderer|tools'

# Third-party header and the files that may include it, as regular expressions.
rooms='
tbb/.*             kernel/ParallelForTBB\.cpp
cbor\.h            kernel/(CborReader|SavedWriter)\.cpp
(ft2build|freetype/.*)\.h geometry/text/FaceOutlines\.cpp
hb(-ot)?\.h         geometry/text/FaceShaper\.cpp
fontconfig/.*      geometry/text/FontCatalogue\.cpp
fribidi\.h         geometry/text/BidiRuns\.cpp
agg_.*             renderer/core/coverage/.*
lcms2\.h           raster/ICC[^/]*
png\.h             raster/P(ng|NG)[^/]*
j(peglib|error)\.h raster/J(peg|PEG)[^/]*
gif_lib\.h         raster/G(if|IF)[^/]*
flann/.*           raster/NearestColour\.cpp
tiffio\.h           raster/T(iff|IFF)[^/]*
webp/.*            raster/W(ebP|EBP)[^/]*
(Imf|Iex)[A-Za-z]*\.h raster/E(xr|XR)[^/]*
OpenColorIO/.*     raster/adjustments/OpenColorIO[^/]*\.cpp
pugixml\.hpp       tools/svg/.*\.cpp
zlib\.h            (tools/svg/.*|raster/DeflatedPixels)\.cpp
iconv\.h           tools/svg/.*\.cpp
CLI/.*             tools/renderer/.*\.cpp
fmt/.*             .*\.cpp
immintrin\.h       .*\.cpp
(unistd|fcntl|locale|wctype|sys/[a-z]+)\.h .*\.cpp'

grep -rnoE --include='*.h' --include='*.cpp' '^ *# *include *[<"][^">]+[">]' \
    kernel geometry raster renderer tools |
    sed -E 's/^([^:]+):([0-9]+):.*[<"]([^">]+)[">]$/\1 \2 \3/' |
    awk -v layers="$layers" -v rooms="$rooms" '
    function Fail(why) { print $1 ":" $2 ": " $3 " " why; failed = 1 }
    BEGIN {
        count = split(layers, lines, "\n")
        for (i = 1; i <= count; ++i)
            if (split(lines[i], words, " ") == 2)
                allowed[words[1]] = "^(" words[2] ")$"
        roomCount = 0
        count = split(rooms, lines, "\n")
        for (i = 1; i <= count; ++i)
            if (split(lines[i], words, " ") == 2) {
                header[++roomCount] = "^" words[1] "$"
                room[roomCount] = "^" words[2] "$"
            }
    }
    {
        ++total
        layer = $1; sub("/.*", "", layer)
        target = $3; sub("/.*", "", target)
        if (target in allowed) {
            if (target !~ allowed[layer])
                Fail("belongs to a higher layer")
            if (system("test -e " $3) != 0)
                Fail("does not exist")
            next
        }
        if ($3 ~ /^[a-z_]+$/)
            next # the standard library
        folder = $1; sub("[^/]*$", "", folder)
        if (layer == "tools" && system("test -e " folder $3 " -o -e tools/" $3) == 0)
            next # headers of the command
        for (i = 1; i <= roomCount; ++i)
            if ($3 ~ header[i]) {
                if ($1 !~ room[i])
                    Fail("may only be included by " room[i])
                next
            }
        Fail("is not known: third-party headers need a room")
    }
    END {
        if (total < 100) { print "only " total " includes were found"; failed = 1 }
        exit failed
    }'
