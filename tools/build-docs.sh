#!/usr/bin/env bash
# tools/build-docs.sh [OUTPUT_DIR]
# Builds the HTML API reference from the public header with Doxygen
# (docs/Doxyfile); any Doxygen warning fails the build. Default output:
# build/doxygen/html.
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/doxygen}
mkdir -p "$out"
{ cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $out"; } | doxygen -
echo "API reference: $out/html/index.html"
