#!/usr/bin/env bash
# Builds the Debian package from the build tree and checks it the way a user
# meets it: the files it holds, its control fields, lintian, the file types it
# registers, and its companion converting a corpus file from an unpacked copy.
# Exits 77 (skipped) after every other check when the corpus is not there.
set -euo pipefail
build=$1
corpus=$2
version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail=0
problem() { echo "FAIL: $*"; fail=1; }

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/out" >"$work/cpack.log" 2>&1 || {
    cat "$work/cpack.log"; exit 1; }
deb="$work/out/quillmorph_${version}_$(dpkg --print-architecture).deb"
[ -f "$deb" ] || { echo "no $(basename "$deb") in:"; ls "$work/out"; exit 1; }

# Every file a user or the desktop looks for.
dpkg-deb -c "$deb" | awk '{ print $6 }' | sed 's|^\./|/|' >"$work/listing"
for path in /usr/bin/quillmorph /usr/bin/quillmorph-convert \
            /usr/lib/quillmorph/Files/wpd2odt /usr/lib/quillmorph/Files/odt2wp5 /usr/lib/quillmorph/Files/svg2png \
            /usr/lib/quillmorph/Files/wpd2html /usr/lib/quillmorph/Files/wpg2svg \
            /usr/lib/quillmorph/Help.html \
            /usr/share/applications/quillmorph.desktop \
            /usr/share/icons/hicolor/scalable/apps/quillmorph.svg \
            /usr/share/icons/hicolor/48x48/apps/quillmorph.png \
            /usr/share/icons/hicolor/128x128/apps/quillmorph.png \
            /usr/share/icons/hicolor/256x256/apps/quillmorph.png \
            /usr/share/metainfo/io.github.quillmorph.Quillmorph.metainfo.xml \
            /usr/share/mime/packages/quillmorph.xml \
            /usr/share/man/man1/quillmorph.1.gz /usr/share/man/man1/quillmorph-convert.1.gz \
            /usr/share/man/man1/wpd2odt.1.gz /usr/share/man/man1/odt2wp5.1.gz \
            /usr/share/doc/quillmorph/copyright /usr/share/doc/quillmorph/changelog.gz; do
    grep -qxF "$path" "$work/listing" || problem "the package lacks $path"
done

# Depends: the converters from their packages, and what dpkg-shlibdeps found.
depends=$(dpkg-deb -f "$deb" Depends)
recommends=$(dpkg-deb -f "$deb" Recommends)
for wanted in libwpd-tools libwpg-tools fonts-urw-base35 libqt6widgets6 libwpd-0.10-10 libodfgen-0.1-1 libc6; do
    [[ ", $depends," == *", $wanted"[\ ,]* ]] || problem "Depends lacks $wanted: $depends"
done
for wanted in libreoffice-writer pandoc; do
    [[ "$recommends" == *"$wanted"* ]] || problem "Recommends lacks $wanted: $recommends"
done

mkdir "$work/root"
dpkg-deb -x "$deb" "$work/root"
usr="$work/root/usr"

# The links to the converters of other packages resolve, once installed, to theirs.
for tool in wpd2html wpg2svg; do
    target=$(readlink "$usr/lib/quillmorph/Files/$tool")
    [ "$(realpath -m "/usr/lib/quillmorph/Files/$target")" = "/usr/bin/$tool" ] ||
        problem "Files/$tool points at $target, not /usr/bin/$tool"
done

zcat "$usr/share/doc/quillmorph/changelog.gz" | head -n 1 | grep -qF "quillmorph ($version)" ||
    problem "the changelog's latest entry is not $version"

# The manual page lists every option --help lists.
"$usr/bin/quillmorph-convert" --help >"$work/help"
options=$(grep -oE -- '(^|[ ,])--?[a-z][a-z-]*' "$work/help" | tr -d ' ,' | sort -u)
[ -n "$options" ] || problem "no options found in quillmorph-convert --help"
zcat "$usr/share/man/man1/quillmorph-convert.1.gz" | sed 's/\\-/-/g' >"$work/man"
for option in $options; do
    grep -qE -- "(^|[^a-z-])$option([^a-z-]|\$)" "$work/man" || problem "quillmorph-convert(1) lacks $option"
done

# lintian: errors fail, the rest is shown.
lintian --fail-on error "$deb" >"$work/lintian" 2>&1 || { cat "$work/lintian"; problem "lintian reports errors"; }
grep -E '^[EW]: ' "$work/lintian" || true

# The registered file types tell a WordPerfect graphic from a document by
# content alone (the shared database alone takes both for documents).
if [ -n "$corpus" ] && [ -d "$corpus" ]; then
    data="$work/data"
    mkdir -p "$data/mime/packages"
    cp "$usr/share/mime/packages/quillmorph.xml" "$data/mime/packages/"
    update-mime-database "$data/mime" 2>/dev/null
    cp "$corpus/wpg/WPG.wpg" "$work/picture"
    cp "$corpus/wp/testWordPerfect_5_1.wp" "$work/letter"
    for pair in picture:application/x-wpg letter:application/vnd.wordperfect; do
        found=$(XDG_DATA_DIRS="$data:/usr/share" gio info -a standard::content-type "$work/${pair%%:*}" |
                sed -n 's/.*content-type: //p')
        [ "$found" = "${pair#*:}" ] || problem "${pair%%:*} is seen as $found, not ${pair#*:}"
    done
fi

[ $fail -eq 0 ] || exit 1

if [ -z "$corpus" ] || [ ! -f "$corpus/wp/testWordPerfect_5_1.wp" ]; then
    echo "skipped the conversions: the corpus is not beside the checkout"
    exit 77
fi

# The unpacked companion converts with the converters unpacked beside it.
convert() {
    XDG_CONFIG_HOME="$work/config" XDG_STATE_HOME="$work/state" "$usr/bin/quillmorph-convert" "$@"
}
mkdir "$work/docs"
cp "$corpus/wp/testWordPerfect_5_1.wp" "$work/docs/Letter.wp"
convert "$work/docs/Letter.wp" >"$work/convert.log" 2>&1 || { cat "$work/convert.log"; exit 1; }
# An OpenDocument package opens with its stored "mimetype" member.
head -c 100 "$work/docs/Letter.odt" 2>/dev/null | grep -qaF 'mimetypeapplication/vnd.oasis.opendocument.text' ||
    { cat "$work/convert.log"; echo "FAIL: the unpacked companion wrote no OpenDocument Letter.odt"; exit 1; }

# And it used those: without them the same conversion fails.
chmod a-x "$usr/lib/quillmorph/Files/wpd2odt"
cp "$corpus/wp/testWordPerfect_5_1.wp" "$work/docs/Again.wp"
if convert "$work/docs/Again.wp" >"$work/again.log" 2>&1 || [ -e "$work/docs/Again.odt" ]; then
    echo "FAIL: converted without the unpacked wpd2odt: a converter outside the package was used"
    exit 1
fi
echo "package ok: $(basename "$deb")"
