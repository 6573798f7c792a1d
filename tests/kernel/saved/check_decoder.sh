#!/bin/bash
# check_decoder.sh PYTHON: compares what the decoder of its own says of the golden files with what
# they hold.
set -euo pipefail
cd "$(dirname "$0")"
for file in golden/*.saved ../../paint/golden/*.saved; do
    PYTHONIOENCODING=utf-8 "$1" decode_saved.py "$file" | diff "${file%.saved}.txt" -
done
