#!/usr/bin/env bash
# docs.sh: builds the pages into out/docs/; start at out/docs/index.html. Every warning is an error. The pages fetch
# nothing: what draws the formulas stands beside them.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/setup.sh
need doxygen libjs-mathjax

rm -rf out/docs
mkdir -p out/docs/mathjax/{extensions,jax/input,jax/output}

# Formulas: the reader of TeX and the writer of SVG, whose glyphs are outlines in its own files.
mathjax=/usr/share/javascript/mathjax
cp -rL $mathjax/MathJax.js out/docs/mathjax
cp -rL $mathjax/extensions/{TeX,tex2jax.js,MathEvents.js,MathMenu.js,MathZoom.js} out/docs/mathjax/extensions
cp -rL $mathjax/jax/element out/docs/mathjax/jax
cp -rL $mathjax/jax/input/TeX out/docs/mathjax/jax/input
cp -rL $mathjax/jax/output/SVG out/docs/mathjax/jax/output

doxygen docs/Doxyfile

if grep -rhoE '<(script|link|img|iframe)[^>]*(src|href)="(https?:)?//[^"]*"' --include='*.html' out/docs; then
  echo "the pages fetch these from elsewhere"
  exit 1
fi
echo "out/docs/index.html"
