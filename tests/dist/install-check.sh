#!/usr/bin/env bash
# Installs the build into a scratch prefix and checks the layout the
# programs rely on; then converts a file with the installed companion, so
# the converters are found in <prefix>/lib/quillmorph/Files.
set -euo pipefail
build=$1
samples=$2
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
prefix=/opt/quillmorph-check

DESTDIR="$stage" cmake --install "$build" --prefix "$prefix" >/dev/null
root="$stage$prefix"
fail=0
for path in bin/quillmorph bin/quillmorph-convert \
            lib/quillmorph/Files/wpd2odt lib/quillmorph/Files/wpd2html lib/quillmorph/Files/wpg2svg \
            lib/quillmorph/Help.html lib/quillmorph/quillmorph-icon.png \
            share/applications/quillmorph.desktop share/icons/hicolor/scalable/apps/quillmorph.svg \
            share/metainfo/io.github.quillmorph.Quillmorph.metainfo.xml \
            share/mime/packages/quillmorph.xml share/man/man1/quillmorph-convert.1.gz; do
    if [ ! -e "$root/$path" ]; then
        echo "missing after install: $path"
        fail=1
    fi
done
for tool in wpd2odt wpd2html wpg2svg; do
    [ -x "$root/lib/quillmorph/Files/$tool" ] || { echo "not executable: $tool"; fail=1; }
done
[ $fail -eq 0 ] || exit 1

if [ -f "$samples/min51.wp5" ]; then
    work=$(mktemp -d)
    cp "$samples/min51.wp5" "$work/Letter.wp5"
    XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" "$root/bin/quillmorph-convert" "$work/Letter.wp5"
    [ -s "$work/Letter.odt" ] || { echo "the installed companion wrote no Letter.odt"; exit 1; }
    grep -q "run wpd2odt" "$work/state/Quillmorph/Quillmorph.log"
    rm -rf "$work"
else
    echo "skipped the conversion: the WordPerfect samples are not beside the checkout"
fi
echo "install layout ok"
