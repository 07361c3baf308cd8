#!/usr/bin/env python3
"""Page fidelity: what a reader sees of a converted document, page by page.

LibreOffice lays out each source and each output as PDF. For every output kind the bench
compares, document by document, the page count, the pictures (pdfimages -list), the words of
each page in order (pdftotext) and a coarse picture of each page (pdftoppm, grey, about 20 dpi,
lightly blurred). An output kind is a command that turns one source into one output, or one
batch command for many; see KINDS. Two kinds calibrate the scale: LibreOffice's own conversion
of the source to ODT (the ceiling) and the plain text of the source (the floor).

    bench/pages/pages.py [--work DIR] [--all-wp] [--all-office] [KIND...]

--all-wp takes every WordPerfect document of the corpus that libwpd opens without a password
instead of the twelve below; --all-office every office document of the corpus (those LibreOffice
cannot lay out, such as a password-protected one, are left out and named). --without-pictures adds, for ODT and RTF outputs, a second look
figure ("look without pictures"): the source against the same output laid out again without its
pictures. It is for a LibreOffice without its Draw filters, whose WordPerfect import shows every
WordPerfect graphic as a blank; scripts/setup installs them, so by default the look counts pictures.

Environment: KEEP=DIR keeps the worst pages of each kind side by side (source left, output
right) as PNG; WORST=N sets how many (default 6). Python standard library only.
"""

import argparse
import difflib
import hashlib
import operator
import os
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree
import zipfile
import zlib
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CORPUS = ROOT.parent / "shared" / "corpus"
BIN = ROOT / "build" / "bin"

# WordPerfect documents libwpd reads, big and small, with pictures, columns and tables.
WP_SOURCES = [
    "TOPOPREC.WPD", "keji2001finalrep.wpd", "images5.wp", "opinion_wpd.wpd", "feature_test.wpd",
    "9140-columns.wpd", "M2-R.END.wpd", "1414.wp", "01FINALE1.WPD", "expectation_document.wpd",
    "header_footer.wpd", "test5.wp",
]


def all_wp_sources(folder):
    """Every document of the folder that libwpd opens without a password (wpd2text succeeds)."""
    names = []
    for path in sorted(folder.iterdir(), key=lambda p: p.name.lower()):
        if not path.is_file():
            continue
        try:
            done = subprocess.run(["wpd2text", str(path)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  timeout=120, check=False)
        except subprocess.TimeoutExpired:
            continue
        if done.returncode == 0:
            names.append(path.name)
    return names


# Office documents for the other direction.
OFFICE_SOURCES = [
    "6953-advanced_formatting.doc", "Sample_OpenXML_DOCX.docx", "testRTFVarious.rtf", "SF-428-B.docx",
    "bug10808.odt", "9044-table_in_header.doc", "6953-tables.doc", "6953-headers_and_footnotes.doc",
    "footnotes.docx", "testWORD_embedded_pics.docx", "ooo-test.odt", "wv-example-graphic-inclusion.doc",
]


@dataclass
class Kind:
    """How to make one output kind. In commands, $SRC and $OUT name one source and its output;
    a batch command gets $SRCS (all sources) and $OUTDIR, and leaves <stem>.<ext> there."""
    name: str
    sources: str  # "wp" or "office"
    ext: str
    what: str
    each: str = ""
    batch: str = ""
    settings: dict = field(default_factory=dict)  # the companion's settings, for companion kinds
    role: str = "output"  # or "ceiling" / "floor"


def companion(settings):
    return dict(batch="companion", settings=settings)


KINDS = [
    Kind("ceiling", "wp", "odt", "LibreOffice's own import saved as ODT", batch="soffice odt", role="ceiling"),
    Kind("floor", "wp", "txt", "plain text (wpd2text)", each='wpd2text "$SRC" > "$OUT"', role="floor"),
    Kind("odt", "wp", "odt", "our wpd2odt", each='"$BIN/Resources/Files/wpd2odt" "$SRC" "$OUT"'),
    Kind("ref-wpd2odt", "wp", "odt", "Debian's writerperfect wpd2odt (reference)", each='/usr/bin/wpd2odt "$SRC" "$OUT"'),
    Kind("rtf", "wp", "rtf", "our classic RTF, ANSI", **companion({"documentTarget": "rtf", "rtfCharset": "ansi"})),
    Kind("rtf-mac", "wp", "rtf", "our classic RTF, Mac Roman", **companion({"documentTarget": "rtf", "rtfCharset": "mac"})),
    Kind("lo-rtf", "wp", "rtf", "LibreOffice's --convert-to rtf (peer)", batch="soffice rtf"),
    Kind("office-ceiling", "office", "odt", "LibreOffice's own ODT of the source", batch="soffice odt", role="ceiling"),
    Kind("office-floor", "office", "txt", "plain text (LibreOffice's text export)", batch="soffice txt:Text (encoded):UTF8", role="floor"),
    Kind("wp6", "office", "wp6", "our companion, WordPerfect 6", **companion({"wordPerfectTarget": "wp6"})),
    Kind("wp5", "office", "wp5", "our companion, WordPerfect 5.1", **companion({"wordPerfectTarget": "wp5"})),
]


def log(*args):
    print(*args, file=sys.stderr, flush=True)


class Office:
    """One LibreOffice profile for the whole run; many files per start."""

    def __init__(self, work):
        self.profile = f"-env:UserInstallation=file://{work}/profile"
        self.env = dict(os.environ, HOME=str(work / "home"))
        (work / "home").mkdir(exist_ok=True)

    def convert(self, files, target, outdir, infilter=None):
        if not files:
            return
        outdir.mkdir(parents=True, exist_ok=True)
        cmd = ["soffice", self.profile, "--headless", "--norestore"]
        if infilter:
            cmd.append(f"--infilter={infilter}")
        cmd += ["--convert-to", target, "--outdir", str(outdir)] + [str(f) for f in files]
        try:
            subprocess.run(cmd, env=self.env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           timeout=900, check=False)
        except subprocess.TimeoutExpired:
            log(f"soffice timed out converting to {target} in {outdir}")


# --- making outputs -------------------------------------------------------------------------


def make_outputs(kind, sources, outdir, office, work):
    outdir.mkdir(parents=True, exist_ok=True)
    if kind.each:
        for src in sources:
            out = outdir / f"{src.stem}.{kind.ext}"
            env = dict(os.environ, SRC=str(src), OUT=str(out), BIN=str(BIN))
            subprocess.run(["bash", "-c", kind.each], env=env, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL, timeout=600, check=False)
    elif kind.batch.startswith("soffice "):
        office.convert(sources, kind.batch.split(" ", 1)[1], outdir,
                       "WordPerfect" if kind.sources == "wp" else None)
    elif kind.batch == "companion":
        # The companion writes beside the originals, as the application does.
        config = work / f"config-{kind.name}"
        (config / "Quillmorph").mkdir(parents=True, exist_ok=True)
        lines = ["[General]"] + [f"{k}={v}" for k, v in kind.settings.items()]
        (config / "Quillmorph" / "Quillmorph.conf").write_text("\n".join(lines) + "\n")
        for src in sources:
            shutil.copy(src, outdir / src.name)
        env = dict(os.environ, XDG_CONFIG_HOME=str(config), HOME=str(work / "home"))
        subprocess.run([str(BIN / "quillmorph-convert"), "--replace", "-j", "2", str(outdir)], env=env,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=1800, check=False)
        for src in sources:
            (outdir / src.name).unlink()
            # An extension the companion does not know stays in the name (ooo.sxw -> ooo.sxw.wp6).
            kept = outdir / f"{src.name}.{kind.ext}"
            if kept.exists():
                kept.rename(outdir / f"{src.stem}.{kind.ext}")
    else:
        env = dict(os.environ, SRCS=" ".join(shlex.quote(str(s)) for s in sources), OUTDIR=str(outdir))
        subprocess.run(["bash", "-c", kind.batch], env=env, timeout=1800, check=False)
    return {src.stem: outdir / f"{src.stem}.{kind.ext}" for src in sources}


# A frame with nothing nested in it; its content is group 1.
INNERMOST_FRAME = re.compile(r"<draw:frame\b[^>]*>((?:(?!<draw:frame\b|</draw:frame>).)*)</draw:frame>", re.S)


def remove_pictures(odt, target):
    """A copy of the ODT without its pictures, as LibreOffice's WordPerfect import has it: every
    frame that holds a picture (and no text) is taken out of the content and the styles, and the
    text flows on as if it had never been there."""

    def drop(match):
        inside = match.group(1)
        return "" if "<draw:image" in inside and "<draw:text-box" not in inside else match.group(0)

    with zipfile.ZipFile(odt) as source, zipfile.ZipFile(target, "w") as copy:
        for item in source.infolist():
            data = source.read(item)
            if item.filename in ("content.xml", "styles.xml"):
                data = INNERMOST_FRAME.sub(drop, data.decode("utf-8")).encode("utf-8")
            copy.writestr(item, data, compress_type=zipfile.ZIP_STORED if item.filename == "mimetype"
                          else zipfile.ZIP_DEFLATED)


def rtf_group_end(text, start):
    """The index just past the group that opens at text[start] ('{'), escapes skipped."""
    depth = 0
    i = start
    while i < len(text):
        c = text[i]
        if c == "\\":
            i += 2
            continue
        if c == "{":
            depth += 1
        elif c == "}":
            depth -= 1
            if depth == 0:
                return i + 1
        i += 1
    return len(text)


RTF_PICTURE_GROUP = re.compile(r"\{\\(?:shp(?![a-z])|\*\\shppict|nonshppict|pict(?![a-z]))")


def remove_rtf_pictures(rtf, target):
    """A copy of the RTF without its pictures: every shape that holds a picture and no text, and
    every picture group, is taken out, and the text flows on as if it had never been there."""
    text = rtf.read_text("latin-1")
    out = []
    pos = 0
    while True:
        match = RTF_PICTURE_GROUP.search(text, pos)
        if not match:
            break
        end = rtf_group_end(text, match.start())
        group = text[match.start():end]
        out.append(text[pos:match.start()])
        if "\\pict" not in group or "\\shptxt" in group:
            out.append(group[:len(match.group(0))])  # keep it, look inside it next
            end = match.start() + len(match.group(0))
        pos = end
    out.append(text[pos:])
    target.write_text("".join(out), "latin-1")


# --- reading PDFs ---------------------------------------------------------------------------


def run_text(cmd):
    return subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout.decode(
        "utf-8", "replace")


@dataclass
class Layout:
    pages: int
    words: list  # per page, the words in reading order
    pictures: int
    images: list  # per page, (width, height, grey bytes)


def read_pgm(path):
    data = path.read_bytes()
    # P5 header: magic, width, height, maxval, each separated by whitespace.
    fields = []
    pos = 0
    while len(fields) < 4:
        while data[pos:pos + 1].isspace():
            pos += 1
        start = pos
        while not data[pos:pos + 1].isspace():
            pos += 1
        fields.append(data[start:pos])
    width, height = int(fields[1]), int(fields[2])
    pos += 1
    return width, height, data[pos:pos + width * height]


def read_layout(pdf, scratch, dpi=20):
    if not pdf.exists() or pdf.stat().st_size == 0:
        return None
    info = run_text(["pdfinfo", str(pdf)])
    pages = next((int(line.split()[1]) for line in info.splitlines() if line.startswith("Pages:")), 0)
    if pages == 0:
        return None
    text = run_text(["pdftotext", "-enc", "UTF-8", str(pdf), "-"])
    words = [page.split() for page in text.split("\f")][:pages]
    words += [[] for _ in range(pages - len(words))]
    listing = run_text(["pdfimages", "-list", str(pdf)]).splitlines()[2:]
    pictures = sum(1 for line in listing if len(line.split()) > 2 and line.split()[2] == "image")
    if scratch.exists():
        shutil.rmtree(scratch)
    scratch.mkdir(parents=True)
    subprocess.run(["pdftoppm", "-gray", "-r", str(dpi), str(pdf), str(scratch / "p")], check=False,
                   stderr=subprocess.DEVNULL)
    images = [read_pgm(p) for p in sorted(scratch.glob("p-*.pgm"), key=lambda p: int(p.stem.split("-")[-1]))]
    shutil.rmtree(scratch)
    return Layout(pages, words, pictures, images)


DRAW = "{urn:oasis:names:tc:opendocument:xmlns:drawing:1.0}"


def pictures_libwpd_hands_over(source):
    """The pictures of a WordPerfect document as libwpd hands them over, counted in the flat ODF
    of Debian's writerperfect wpd2odt: LibreOffice draws imported WordPerfect graphics as vector
    shapes, which pdfimages does not see in the PDF of the source."""
    if not shutil.which("wpd2odt"):
        return None
    flat = subprocess.run(["wpd2odt", "--stdout", str(source)], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False).stdout
    try:
        root = ElementTree.fromstring(flat)
    except ElementTree.ParseError:
        return None

    def count(element):
        if element.tag == DRAW + "object":
            return 0
        own = element.tag == DRAW + "frame" and any(
            child.tag in (DRAW + "object", DRAW + "image") for child in element)
        return int(own) + sum(count(child) for child in element)

    return count(root)


# --- comparing ------------------------------------------------------------------------------


def fit(image, width, height):
    """The image cropped or padded with white to width x height, as a flat list of values."""
    w, h, pixels = image
    rows = []
    for y in range(height):
        row = pixels[y * w:(y + 1) * w] if y < h else b""
        row = row[:width] + b"\xff" * max(0, width - len(row))
        rows.append(row)
    return b"".join(rows)


def blurred_ink(pixels, width):
    """Ink (255 - grey) summed over a 3 x 3 box around each pixel. The flat shifts wrap across
    row ends, which only touches the page's white margins."""
    ink = pixels.translate(bytes(range(255, -1, -1)))
    across = list(map(operator.add, map(operator.add, ink[:-2], ink[1:-1]), ink[2:]))
    return list(map(operator.add, map(operator.add, across[:-2 * width], across[width:-width]), across[2 * width:]))


def look(a, b):
    """100 when the blurred pages are the same, 0 when no ink of one lies where the other's is:
    the mean absolute difference taken relative to the ink on both pages."""
    if a is None and b is None:
        return 100.0
    blank = (a or b)[0], (a or b)[1], b"\xff" * ((a or b)[0] * (a or b)[1])
    a, b = a or blank, b or blank
    width, height = a[0], a[1]
    ia = blurred_ink(fit(a, width, height), width)
    ib = blurred_ink(fit(b, width, height), width)
    ink = sum(ia) + sum(ib)
    if ink == 0:
        return 100.0
    diff = sum(map(abs, map(operator.sub, ia, ib)))
    return max(0.0, 100.0 * (1.0 - diff / ink))


def common_words(a, b):
    if not a or not b:
        return 0
    matcher = difflib.SequenceMatcher(None, a, b, autojunk=False)
    return sum(block.size for block in matcher.get_matching_blocks())


@dataclass
class DocResult:
    name: str
    source_pages: int
    pages: int
    source_pictures: int
    pictures: int
    source_words: int
    words_kept: int
    looks: list  # per page
    bare_looks: list = None  # per page, against the output without its pictures


def page_looks(src, out):
    if out is None:
        return [0.0] * src.pages
    count = max(src.pages, out.pages)
    return [look(src.images[i] if i < len(src.images) else None, out.images[i] if i < len(out.images) else None)
            for i in range(count)]


def compare(name, src, out, bare=None, with_bare=False):
    """bare is the layout of the output without its pictures, when with_bare."""
    bare_looks = page_looks(src, bare) if with_bare else None
    if out is None:
        return DocResult(name, src.pages, 0, src.pictures, 0, sum(map(len, src.words)), 0, [0.0] * src.pages,
                         bare_looks)
    kept = sum(common_words(src.words[i], out.words[i]) for i in range(min(src.pages, out.pages)))
    return DocResult(name, src.pages, out.pages, src.pictures, out.pictures, sum(map(len, src.words)), kept,
                     page_looks(src, out), bare_looks)


# --- keeping pages for a look ---------------------------------------------------------------


def write_png(path, width, height, grey):
    raw = b"".join(b"\x00" + grey[y * width:(y + 1) * width] for y in range(height))

    def chunk(tag, body):
        return struct.pack(">I", len(body)) + tag + body + struct.pack(">I", zlib.crc32(tag + body) & 0xFFFFFFFF)

    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(raw, 6)) + chunk(b"IEND", b""))


def render_page(pdf, page, scratch, dpi=60):
    scratch.mkdir(parents=True, exist_ok=True)
    prefix = scratch / "keep"
    subprocess.run(["pdftoppm", "-gray", "-r", str(dpi), "-f", str(page), "-l", str(page), "-singlefile", str(pdf),
                    str(prefix)], check=False, stderr=subprocess.DEVNULL)
    path = prefix.with_suffix(".pgm")
    if not path.exists():
        return None
    image = read_pgm(path)
    path.unlink()
    return image


def layout_setting():
    """What a layout depends on besides the file: the fonts installed and LibreOffice's build."""
    fonts = subprocess.run(["fc-list", "--format", "%{file}\\n"], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True).stdout
    soffice = shutil.which("soffice")
    build = Path(soffice).resolve().stat().st_mtime if soffice else 0
    digest = hashlib.sha256("\n".join(sorted(fonts.splitlines())).encode()).hexdigest()
    return f"fonts {digest}\nsoffice {soffice} {build}\n"


def keep_side_by_side(target, src_pdf, out_pdf, page, scratch):
    a = render_page(src_pdf, page, scratch)
    b = render_page(out_pdf, page, scratch) if out_pdf and out_pdf.exists() else None
    if a is None and b is None:
        return
    wa, ha = (a[0], a[1]) if a else (b[0], b[1])
    wb, hb = (b[0], b[1]) if b else (wa, ha)
    height, gap = max(ha, hb), 8
    rows = []
    for y in range(height):
        left = (a[2][y * wa:(y + 1) * wa] if a and y < ha else b"\xff" * wa).ljust(wa, b"\xff")
        right = (b[2][y * wb:(y + 1) * wb] if b and y < hb else b"\xff" * wb).ljust(wb, b"\xff")
        rows.append(left + b"\x40" * gap + right)
    write_png(target, wa + gap + wb, height, b"".join(rows))


# --- the run --------------------------------------------------------------------------------


def fmt_pct(x):
    return f"{x:.1f}"


def summarise(kind, results):
    n = len(results)
    same = sum(1 for r in results if r.pages == r.source_pages)
    src_pics = sum(r.source_pictures for r in results)
    kept_pics = sum(min(r.pictures, r.source_pictures) for r in results)
    extra_pics = sum(max(0, r.pictures - r.source_pictures) for r in results)
    words = [100.0 * r.words_kept / r.source_words if r.source_words else 100.0 for r in results]
    looks = [sum(r.looks) / len(r.looks) if r.looks else 0.0 for r in results]
    bare = n > 0 and all(r.bare_looks is not None for r in results)
    bare_looks = [sum(r.bare_looks) / len(r.bare_looks) if r.bare_looks else 0.0
                  for r in results] if bare else [None] * n
    print(f"\n## {kind.name}: {kind.what}")
    print(f"{'document':<28} {'pages':>9} {'pictures':>9} {'words %':>8} {'look':>6} {'worst page':>12}"
          + (f" {'no pict.':>8} {'worst page':>12}" if bare else ""))

    def worst_page(values):
        if not values:
            return "-"
        worst = min(range(len(values)), key=lambda i: values[i])
        return f"p{worst + 1} {values[worst]:.0f}"

    for r, w, lk, bl in zip(results, words, looks, bare_looks):
        print(f"{r.name:<28} {r.pages:>4}/{r.source_pages:<4} {r.pictures:>4}/{r.source_pictures:<4} "
              f"{w:>8.1f} {lk:>6.1f} {worst_page(r.looks):>12}"
              + (f" {bl:>8.1f} {worst_page(r.bare_looks):>12}" if bare else ""))
    mean_words = sum(words) / n if n else 0
    mean_look = sum(looks) / n if n else 0
    worst_docs = sorted(zip(looks, (r.name for r in results)))[:3]
    summary = dict(kind=kind.name, same=f"{same}/{n}", pictures=f"{kept_pics}/{src_pics}", words=mean_words,
                   look=mean_look, worst=worst_docs, bare=None)
    line = (f"summary {kind.name}: same page count {same}/{n}, pictures {kept_pics}/{src_pics} kept"
            f" ({extra_pics} extra), words per page {mean_words:.1f} %, look {mean_look:.1f}"
            f" (worst: {', '.join(f'{name} {lk:.0f}' for lk, name in worst_docs)})")
    if bare:
        summary["bare"] = sum(bare_looks) / n
        summary["bare_worst"] = sorted(zip(bare_looks, (r.name for r in results)))[:3]
        line += (f", look without pictures {summary['bare']:.1f} (worst: "
                 f"{', '.join(f'{name} {lk:.0f}' for lk, name in summary['bare_worst'])})")
    mismatched = [f"{r.name} {r.pages}/{r.source_pages}" for r in results if r.pages != r.source_pages]
    if mismatched:
        line += f"; page count differs: {', '.join(mismatched)}"
    print(line)
    return summary


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kinds", nargs="*", help="kinds to measure (default: all): " +
                        ", ".join(k.name for k in KINDS))
    parser.add_argument("--work", help="keep intermediate files here; the layouts of the sources are reused")
    parser.add_argument("--all-wp", action="store_true",
                        help="every WordPerfect document of the corpus libwpd opens, not only the twelve")
    parser.add_argument("--all-office", action="store_true",
                        help="every office document of the corpus LibreOffice lays out, not only the twelve")
    parser.add_argument("--without-pictures", action="store_true",
                        help="also lay out ODT and RTF outputs without their pictures (a look figure of its own)")
    parser.add_argument("--kind", action="append", default=[], metavar="NAME:SOURCES:EXT:COMMAND",
                        help="an extra kind: SOURCES is wp or office, COMMAND uses $SRC and $OUT")
    args = parser.parse_args()

    kinds = list(KINDS)
    for extra in args.kind:
        name, sources, ext, command = extra.split(":", 3)
        kinds.append(Kind(name, sources, ext, command, each=command))
    wanted = args.kinds or [k.name for k in kinds]
    unknown = set(wanted) - {k.name for k in kinds}
    if unknown:
        parser.error(f"unknown kind: {', '.join(sorted(unknown))}")
    # Calibration first, so that the scale comes before the figures.
    kinds = sorted([k for k in kinds if k.name in wanted], key=lambda k: {"ceiling": 0, "floor": 1}.get(k.role, 2))

    if not CORPUS.is_dir():
        print(f"skipped: no corpus at {CORPUS}")
        return 0
    for tool in ("soffice", "pdftotext", "pdftoppm", "pdfimages", "pdfinfo"):
        if not shutil.which(tool):
            print(f"{tool} not found")
            return 2

    work = Path(args.work).resolve() if args.work else Path(tempfile.mkdtemp(prefix="pages-bench-"))
    work.mkdir(parents=True, exist_ok=True)
    office = Office(work)
    keep = Path(os.environ["KEEP"]).resolve() if os.environ.get("KEEP") else None
    worst_n = int(os.environ.get("WORST", "6"))
    started = time.monotonic()

    # Sources get short names of their own: a.doc and a.docx would otherwise share a PDF.
    wp_sources = all_wp_sources(CORPUS / "wp") if args.all_wp else WP_SOURCES
    office_sources = (sorted((p.name for p in (CORPUS / "office").iterdir() if p.is_file()), key=str.lower)
                      if args.all_office else OFFICE_SOURCES)
    groups = {"wp": (CORPUS / "wp", wp_sources), "office": (CORPUS / "office", office_sources)}
    sources, names, layouts = {}, {}, {}
    for group, (folder, files) in groups.items():
        if not any(k.sources == group for k in kinds):
            continue
        staged = work / "sources" / group
        staged.mkdir(parents=True, exist_ok=True)
        sources[group] = []
        for name in files:
            if not (folder / name).exists():
                continue
            ext = "wpd" if group == "wp" else name.rsplit(".", 1)[-1]
            safe = "".join(c if c.isalnum() or c in "-_" else "_" for c in name)
            target = staged / f"{safe}.{ext}"
            shutil.copy(folder / name, target)
            sources[group].append(target)
            names[target.stem] = name
        pdfs = staged / "pdf"
        # A source's layout kept from an earlier run holds only while the fonts and LibreOffice
        # that made it are the same: installing a font moves every line.
        stamp, setting = pdfs / "laid-out-with", layout_setting()
        if not stamp.exists() or stamp.read_text() != setting:
            shutil.rmtree(pdfs, ignore_errors=True)
            pdfs.mkdir(parents=True)
            stamp.write_text(setting)
        missing = [s for s in sources[group] if not (pdfs / f"{s.stem}.pdf").exists()]
        log(f"laying out {len(missing)} {group} sources")
        if group == "wp":
            office.convert(missing, "pdf", pdfs, "WordPerfect")
        else:
            # A web page opened as such is laid out by Writer/Web, whose PDF leaves out most of the
            # text; a word processor's reader of the page is the one to compare with.
            web = [s for s in missing if s.suffix.lower() in (".html", ".htm")]
            office.convert([s for s in missing if s not in web], "pdf", pdfs)
            office.convert(web, "pdf", pdfs, "HTML (StarWriter)")
        for s in sources[group]:
            layouts[s.stem] = read_layout(pdfs / f"{s.stem}.pdf", work / "scratch")
            if layouts[s.stem] is None:
                log(f"LibreOffice does not lay out {names[s.stem]}: left out")
            elif group == "wp":
                handed_over = pictures_libwpd_hands_over(s)
                if handed_over is not None:
                    layouts[s.stem].pictures = max(layouts[s.stem].pictures, handed_over)
        sources[group] = [s for s in sources[group] if layouts[s.stem] is not None]

    summaries = []
    for kind in kinds:
        t0 = time.monotonic()
        outdir = work / "out" / kind.name
        if outdir.exists():
            shutil.rmtree(outdir)
        outputs = make_outputs(kind, sources[kind.sources], outdir, office, work)
        made = [p for p in outputs.values() if p.exists() and p.stat().st_size > 0]
        office.convert(made, "pdf", outdir / "pdf", "WordPerfect" if kind.ext in ("wp6", "wp5") else None)
        bare_dir = None
        if kind.ext in ("odt", "rtf") and kind.role == "output" and args.without_pictures:
            bare_dir = outdir / "without-pictures"
            bare_dir.mkdir(parents=True, exist_ok=True)
            for made_file in made:
                try:
                    if kind.ext == "odt":
                        remove_pictures(made_file, bare_dir / made_file.name)
                    else:
                        remove_rtf_pictures(made_file, bare_dir / made_file.name)
                except zipfile.BadZipFile:
                    pass
            office.convert(sorted(bare_dir.glob(f"*.{kind.ext}")), "pdf", bare_dir / "pdf")
        results = []
        for src in sources[kind.sources]:
            out_pdf = outdir / "pdf" / f"{src.stem}.pdf"
            out = read_layout(out_pdf, work / "scratch") if outputs[src.stem] in made else None
            bare = None
            if bare_dir is not None and out is not None:
                bare = read_layout(bare_dir / "pdf" / f"{src.stem}.pdf", work / "scratch")
            results.append(compare(names[src.stem], layouts[src.stem], out, bare, bare_dir is not None))
        log(f"{kind.name}: {len(made)}/{len(outputs)} outputs, {time.monotonic() - t0:.0f} s")
        summaries.append(summarise(kind, results))
        pages = sorted((lk, r.name, i + 1) for r in results for i, lk in enumerate(r.looks))[:worst_n]
        print(f"worst pages of {kind.name}: " + ", ".join(f"{name} p{p} {lk:.0f}" for lk, name, p in pages))
        kept_sets = [(f"{kind.name}-", pages, outdir / "pdf")]
        if bare_dir is not None:
            bare_pages = sorted((lk, r.name, i + 1) for r in results
                                   for i, lk in enumerate(r.bare_looks or []))[:worst_n]
            print(f"worst pages of {kind.name} without pictures: " +
                  ", ".join(f"{name} p{p} {lk:.0f}" for lk, name, p in bare_pages))
            kept_sets.append((f"{kind.name}-nopictures-", bare_pages, bare_dir / "pdf"))
        if keep:
            keep.mkdir(parents=True, exist_ok=True)
            for old in keep.glob(f"{kind.name}-*.png"):
                old.unlink()
            stems = {names[s.stem]: s.stem for s in sources[kind.sources]}
            for prefix, chosen, pdfs in kept_sets:
                for lk, name, p in chosen:
                    stem = stems[name]
                    keep_side_by_side(keep / f"{prefix}{name}-p{p}.png",
                                      work / "sources" / kind.sources / "pdf" / f"{stem}.pdf",
                                      pdfs / f"{stem}.pdf", p, work / "scratch")

    print("\n## summary (source laid out by LibreOffice against the output laid out by LibreOffice)")
    print("| kind | same page count | pictures kept | words per page | look | worst documents |"
          " look without pictures | worst documents |")
    print("|---|---|---|---|---|---|---|---|")
    for s in summaries:
        worst = ", ".join(f"{name} {lk:.0f}" for lk, name in s["worst"])
        bare = "— | —"
        if s["bare"] is not None:
            bare = f"{s['bare']:.1f} | " + ", ".join(f"{name} {lk:.0f}" for lk, name in s["bare_worst"])
        print(f"| {s['kind']} | {s['same']} | {s['pictures']} | {s['words']:.1f} % | {s['look']:.1f} | {worst} |"
              f" {bare} |")
    print(f"\n{time.monotonic() - started:.0f} s in all; work folder {work}")
    if not args.work:
        shutil.rmtree(work, ignore_errors=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
