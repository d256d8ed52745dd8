#!/usr/bin/env bash
# Makes the PNGs from the SVGs, in the sizes that the diagram draws and at twice those for dense screens. The
# PNGs are kept in the tree, so a build does not need the packages this needs: librsvg2-bin and optipng.
set -euo pipefail
cd "$(dirname "$0")"

for name in INPUT LOAD REC INV; do
    rsvg-convert "$name.svg" -o "$name.png"
    rsvg-convert --zoom 2 "$name.svg" -o "$name@2x.png"
done
optipng -quiet -strip all ./*.png
