#include "TestSupport.h"
#include "classify/InputFile.h"
#include "support/PlatformError.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>

namespace fs = std::filesystem;
using testing_support::TempDir;
using testing_support::writeFile;
using Kind = InputFile::Kind;
using Bytes = std::vector<std::uint8_t>;

namespace {

Bytes prefix(std::size_t size, std::initializer_list<std::pair<std::size_t, std::uint8_t>> set = {})
{
    Bytes bytes(size, 0);
    const std::uint8_t signature[] = {0xFF, 0x57, 0x50, 0x43};
    for (std::size_t i = 0; i < std::min<std::size_t>(size, 4); ++i)
        bytes[i] = signature[i];
    for (auto [index, value] : set)
        bytes[index] = value;
    return bytes;
}

Bytes text(const std::string &s)
{
    return Bytes(s.begin(), s.end());
}

// A zip whose first member is a stored media type, as OpenDocument packages begin.
Bytes zipWithMimetype(const std::string &mimetype)
{
    Bytes bytes{0x50, 0x4B, 0x03, 0x04, 0x14, 0, 0, 0, 0, 0};
    bytes.resize(30, 0);
    bytes[26] = 8; // name length
    const std::string name = "mimetype";
    bytes.insert(bytes.end(), name.begin(), name.end());
    bytes.insert(bytes.end(), mimetype.begin(), mimetype.end());
    return bytes;
}

struct Case {
    const char *description;
    std::string name;
    Bytes bytes;
    Kind kind;
    bool isEncrypted;
    bool wpVersionIsWP6;
};

std::string padding(std::size_t n)
{
    return std::string(n, 'x');
}

} // namespace

// The header decides, then the name; where the bytes leave it open libwpd decides, and plain text
// stays text whatever its heuristics say.
TEST(InputFile, ClassifiesByHeaderThenExtension)
{
    // A WordPerfect 4.2 document: text and a three-byte function group (C2 .. C2).
    Bytes wp42 = text("Minutes of the meeting\n");
    wp42.insert(wp42.end(), {0xC2, 0x00, 0xC2});
    const Bytes moreText = text("Budget approved\n");
    wp42.insert(wp42.end(), moreText.begin(), moreText.end());
    // A media type past byte 512 is not read: the zip is then some other office file.
    Bytes lateMimetype = zipWithMimetype("");
    lateMimetype.resize(512, ' ');
    const Bytes late = text("application/vnd.oasis.opendocument.text");
    lateMimetype.insert(lateMimetype.end(), late.begin(), late.end());
    const Case cases[] = {
        {"empty file decided by its name", "letter.wpd", {}, Kind::wpDocument, false, false},
        {"empty .htm decided by its name", "page.htm", {}, Kind::office, false, false},
        {"bare four-byte prefix", "anything.txt", prefix(4), Kind::wpDocument, false, false},
        {"prefix shorter than its signature", "x.txt", prefix(3), Kind::office, false, false},
        {"graphic type in byte 9 beats .wpd", "pic.wpd", prefix(10, {{9, 0x16}}), Kind::wpGraphic, false,
         false},
        {"graphic type needs 10 bytes", "pic.wpg", prefix(9), Kind::wpDocument, false, false},
        {"WP6 flag without the key byte", "a.wpd", prefix(12, {{10, 2}}), Kind::wpDocument, false, true},
        {"key byte 13 alone is not encryption", "a.wpd", prefix(16, {{13, 0x5A}}), Kind::wpDocument, false,
         false},
        {"key byte 12 is encryption", "a.wpd", prefix(16, {{12, 0x01}}), Kind::wpDocument, true, false},
        {"major version 0 is not WP6", "a.wpd", prefix(16, {{10, 0}}), Kind::wpDocument, false, false},
        {"major version 3 is not WP6", "a.wpd", prefix(16, {{10, 3}}), Kind::wpDocument, false, false},
        {"encrypted WordPerfect 6", "a.doc", prefix(16, {{10, 2}, {12, 9}}), Kind::wpDocument, true, true},
        {"zip without OpenDocument text", "report.docx", zipWithMimetype("application/zip"), Kind::office,
         false, false},
        {"zip named .wpd", "report.wpd", zipWithMimetype("whatever"), Kind::office, false, false},
        {"OpenDocument package", "a.zip", zipWithMimetype("application/vnd.oasis.opendocument.text"),
         Kind::openDocument, false, false},
        {"OpenDocument template package", "a.ott",
         zipWithMimetype("application/vnd.oasis.opendocument.text-template"), Kind::openDocument, false,
         false},
        {"spreadsheet package", "a.odt", zipWithMimetype("application/vnd.oasis.opendocument.spreadsheet"),
         Kind::office, false, false},
        {"OLE2 container", "a.wpd", {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1}, Kind::office, false, false},
        {"RTF opening", "a.wpd", text("{\\rtf1\\ansi hello}"), Kind::office, false, false},
        {"RTF test is case-sensitive", "a.wpd", text("{\\RTF1 hello}"), Kind::wpDocument, false, false},
        {"byte-order mark before RTF", "a.dat", Bytes{0xEF, 0xBB, 0xBF, '{', '\\', 'r', 't', 'f'},
         Kind::office, false, false},
        {"RTF past the first 8 bytes", "a.dat", text("12345{\\rtf1"), Kind::unknown, false, false},
        {"upper-case HTML named .wpd", "notes.wpd", text("<HTML><BODY>hi</BODY></HTML>"), Kind::office, false,
         false},
        {"doctype", "a.dat", text("<!DocType html>"), Kind::office, false, false},
        {"head tag", "a.dat", text("<head><title>x</title>"), Kind::office, false, false},
        {"HTML after 400 characters, .txt", "notes.txt", text(padding(400) + "<html>"), Kind::office, false,
         false},
        {"HTML after 400 characters, .dat", "notes.dat", text(padding(400) + "<html>"), Kind::unknown, false,
         false},
        {"HTML within 400 characters of UTF-8 text", "notes.dat",
         text(std::string(199, 'x') + "\u00E9" + "<html>"), Kind::office, false, false},
        {"flat OpenDocument named .xml", "doc.xml",
         text("<?xml version=\"1.0\"?><office:document xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:"
              "office:1.0\">"),
         Kind::openDocument, false, false},
        {"office:document without the namespace", "doc.xml", text("<office:document>"), Kind::unknown, false,
         false},
        {"Latin-1 bytes still sniffed", "a.dat", Bytes{0xE9, 0xE8, '<', 'h', 't', 'm', 'l', '>'},
         Kind::office, false, false},
        {"upper-case WordPerfect extension", "REPORT.WPD", text("plain"), Kind::wpDocument, false, false},
        {"upper-case graphic extension", "PIC.WPG", text("plain"), Kind::wpGraphic, false, false},
        {"upper-case flat ODT extension", "A.FODT", text("plain"), Kind::openDocument, false, false},
        {"no extension", "README", text("plain words"), Kind::unknown, false, false},
        {"binary noise", "noise", Bytes{0x00, 0x01, 0xFE, 0xFF, 0x80, 0xC0}, Kind::unknown, false, false},
        {"media type past byte 512", "late.odt", lateMimetype, Kind::office, false, false},
        {"WordPerfect 4.2 named as a Word file", "LETTER.DOC", wp42, Kind::wpDocument, false, false},
        {"WordPerfect 4.2 without an extension", "LETTER", wp42, Kind::wpDocument, false, false},
        {"encrypted WordPerfect 4.2 marker", "notes.txt",
         Bytes{0xFE, 0xFF, 0x61, 0x61, 0x12, 0x34, 0x41, 0x42}, Kind::wpDocument, true, false},
        {"UTF-8 text with umlauts", "notes.txt", text("some text: \xC3\xB6\xC3\xA4\xC3\xBC\n"), Kind::office,
         false, false},
        {"plain text named .doc", "plain.doc", text("just words\n"), Kind::office, false, false},
    };
    TempDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.description);
        const fs::path file = dir / c.name;
        writeFile(file, c.bytes);
        const InputFile result = InputFile::classify(file);
        EXPECT_EQ(result.kind, c.kind) << kindName(result.kind);
        EXPECT_EQ(result.isEncrypted, c.isEncrypted);
        EXPECT_EQ(result.wpVersionIsWP6, c.wpVersionIsWP6);
        EXPECT_EQ(result.url, file);
        fs::remove(file);
    }
}

TEST(InputFile, UnreadableFilesThrowThePlatformReason)
{
    TempDir dir;
    try {
        InputFile::classify(dir / "missing.wpd");
        FAIL() << "a missing file was classified";
    } catch (const PlatformError &error) {
        EXPECT_EQ(error.what(), testing_support::systemMessage(ENOENT));
    }
    fs::create_directory(dir / "folder.wpd");
    EXPECT_THROW(InputFile::classify(dir / "folder.wpd"), PlatformError) << "a folder cannot be read";
}

TEST(InputFile, ANamedPipeDoesNotHang)
{
    TempDir dir;
    ASSERT_EQ(mkfifo((dir / "pipe.wpd").c_str(), 0600), 0);
    const InputFile file = InputFile::classify(dir / "pipe.wpd");
    EXPECT_EQ(file.kind, Kind::wpDocument) << "nothing to read: the name decides";
}

TEST(InputFile, VersionFamilyNamesThePrefix)
{
    EXPECT_EQ(versionFamily(prefix(16, {{9, 0x0A}, {10, 0}})), "WordPerfect 5.x");
    EXPECT_EQ(versionFamily(prefix(16, {{9, 0x0A}, {10, 2}})), "WordPerfect 6 or later");
    EXPECT_EQ(versionFamily(prefix(16, {{9, 0x2C}, {10, 3}})), "WordPerfect for Macintosh");
    EXPECT_EQ(versionFamily(prefix(16, {{9, 0x16}, {10, 1}})), "WordPerfect graphic");
    EXPECT_EQ(versionFamily(text("{\\rtf1 nothing")), "no WordPerfect prefix");
    EXPECT_EQ(versionFamily({}), "no WordPerfect prefix");
    EXPECT_EQ(versionFamily(prefix(8)), "WordPerfect prefix cut short");
}

TEST(InputFile, NamesAndOtherProducts)
{
    EXPECT_EQ(displayName("/archive/Sub/"), "Sub");
    EXPECT_EQ(displayName("/archive/Sub/."), "Sub");
    EXPECT_EQ(displayName("/archive/Letter.wpd"), "Letter.wpd");
    TempDir dir;
    Bytes slides = prefix(16, {{8, 0x0A}, {9, 0x0A}, {10, 2}});
    writeFile(dir / "Slides.wpd", slides);
    EXPECT_EQ(whyNotADocument(InputFile::classify(dir / "Slides.wpd")),
              std::optional<std::string>("a WordPerfect Presentations file, not a document"));
    writeFile(dir / "Letter.wpd", prefix(16, {{8, 1}, {9, 0x0A}, {10, 2}}));
    EXPECT_EQ(whyNotADocument(InputFile::classify(dir / "Letter.wpd")), std::nullopt);
}
