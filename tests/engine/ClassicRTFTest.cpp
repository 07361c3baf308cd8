#include "engine/ClassicRTF.h"
#include "EngineRun.h"
#include "FakeTools.h"
#include "OdtFile.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "render/RTFDowngrade.h"
#include "support/PlatformError.h"

#include "richtext/HtmlReader.h"
#include "richtext/OdtReader.h"
#include "richtext/RtfWriter.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

// "Café “quoted” Š ☺ €" with a bold word, as wpd2odt and wpd2html would give it.
const std::string words = "Caf\xC3\xA9 \xE2\x80\x9Cquoted\xE2\x80\x9D \xC5\xA0 \xE2\x98\xBA \xE2\x82\xAC";

std::string flatOdt()
{
    return Odt{.automaticStyles = R"(<style:style style:name="B" style:family="text"><style:text-properties
               fo:font-weight="bold"/></style:style>)",
               .body = R"(<text:p><text:span text:style-name="B">Bold</text:span> )" + words + "</text:p>"}
        .flat();
}

std::string html()
{
    return "<!DOCTYPE HTML>\n<html><head><meta http-equiv=\"content-type\" content=\"text/html; "
           "charset=UTF-8\" >"
           "<style>\n.span0 {\n font-weight: bold;\n}\n</style></head><body><p><span "
           "class=\"span0\">Bold</span>\n"
           "<span>" +
           words + "</span>\n</p></body></html>";
}

Decoded decoded(Decoded::Type type)
{
    return {type == Decoded::Type::html ? html() : flatOdt(), type};
}

// What our rich-text library makes of the document before the classic rewriting.
std::string modernRTF(const Decoded &document)
{
    richtext::RtfWriter writer;
    if (document.type == Decoded::Type::html)
        richtext::HtmlReader::read(document.data, writer);
    else
        richtext::OdtReader::read(document.data, writer);
    return writer.rtf();
}

struct Case {
    Decoded::Type type;
    RTFCharset charset;
    std::vector<std::string> contains;
};

void PrintTo(const Case &c, std::ostream *out)
{
    *out << (c.type == Decoded::Type::html ? "HTML" : "ODT") << " in " << rawValue(c.charset);
}

class WriteClassicRTF : public testing::TestWithParam<Case> {};

TEST_P(WriteClassicRTF, WritesTheDocumentInTheCharset)
{
    TempDir dir;
    const fs::path to = dir / "Letter.rtf";
    writeFile(to, "an older conversion");
    const Decoded document = decoded(GetParam().type);
    Converter::steps::writeClassicRTF(document, GetParam().charset, to);
    const std::string written = readFile(to);
    for (const std::string &part : GetParam().contains)
        EXPECT_NE(written.find(part), std::string::npos) << "no " << part << " in\n" << written;
    EXPECT_EQ(written.find("ansi") == std::string::npos, GetParam().charset == RTFCharset::mac)
        << "Mac holds no \\ansi nor \\ansicpg";
    EXPECT_EQ(written, RTFDowngrade::classic(modernRTF(document),
                                             Converter::steps::downgradeCharset(GetParam().charset)))
        << "the file is the classic rewriting, byte for byte";
}

const std::vector<std::string> ansi = {"{\\rtf1\\ansi\\ansicpg1252", "\\b Bold}",
                                       "Caf\\'e9 \\'93quoted\\'94 \\'8a \\u9786\\'3f \\'80"};
const std::vector<std::string> mac = {"{\\rtf1\\mac", "\\b Bold}",
                                      "Caf\\'8e \\'d2quoted\\'d3 \\'3f \\u9786\\'3f \\'db"};

INSTANTIATE_TEST_SUITE_P(ClassicRTF, WriteClassicRTF,
                         testing::Values(Case{Decoded::Type::openDocumentText, RTFCharset::ansi, ansi},
                                         Case{Decoded::Type::openDocumentText, RTFCharset::mac, mac},
                                         Case{Decoded::Type::html, RTFCharset::ansi, ansi},
                                         Case{Decoded::Type::html, RTFCharset::mac, mac}));

struct Unreadable {
    const char *why;
    Decoded document;
    std::string reason;
};

void PrintTo(const Unreadable &c, std::ostream *out)
{
    *out << c.why;
}

class UnreadableDocument : public testing::TestWithParam<Unreadable> {};

TEST_P(UnreadableDocument, FailsWithTheReadersWordsAndKeepsTheOldFile)
{
    TempDir dir;
    const fs::path to = dir / "Letter.rtf";
    writeFile(to, "an older conversion");
    try {
        Converter::steps::writeClassicRTF(GetParam().document, RTFCharset::ansi, to);
        ADD_FAILURE() << "no error";
    } catch (const PlatformError &error) {
        EXPECT_NE(std::string(error.what()).find(GetParam().reason), std::string::npos) << error.what();
    }
    EXPECT_EQ(readFile(to), "an older conversion");
}

INSTANTIATE_TEST_SUITE_P(
    ClassicRTF, UnreadableDocument,
    testing::Values(Unreadable{"malformed XML",
                               {"<office:document><unclosed", Decoded::Type::openDocumentText},
                               "not well-formed XML"},
                    Unreadable{"not ODT at all",
                               {"%PDF-1.4", Decoded::Type::openDocumentText},
                               "neither an OpenDocument package nor OpenDocument XML"},
                    Unreadable{"a damaged package",
                               {std::string("PK\x03\x04garbage", 11), Decoded::Type::openDocumentText},
                               "not a readable zip package"},
                    Unreadable{"empty HTML", {"  \n", Decoded::Type::html}, "empty"}));

TEST(WriteClassicRTF, AFailedWriteIsThePlatformsError)
{
    TempDir dir;
    try {
        Converter::steps::writeClassicRTF(decoded(Decoded::Type::openDocumentText), RTFCharset::ansi,
                                          dir / "missing" / "Letter.rtf");
        ADD_FAILURE() << "wrote into a missing folder";
    } catch (const PlatformError &error) {
        EXPECT_EQ(error.what(), testing_support::systemMessage(ENOENT));
    }
}

// The whole job, with stand-ins for the converters: "success" or the error.
std::string wpToRTF(const FakeTools &tools, RTFCharset charset, const fs::path &to)
{
    return outcomeText(performAndWait(JobCase::wpToRTF{tools.work("Letter.wpd"), std::nullopt, charset}, to));
}

TEST(WordPerfectToRTF, ConvertsThroughWpd2odt)
{
    FakeTools tools;
    writeFile(tools.work("decoded.fodt"), flatOdt());
    tools.add("wpd2odt", "cat '" + tools.work("decoded.fodt").string() + "'");
    const fs::path to = tools.work("Letter.rtf");
    writeFile(to, "older");
    EXPECT_EQ(wpToRTF(tools, RTFCharset::mac, to), "success");
    EXPECT_EQ(readFile(to), RTFDowngrade::classic(modernRTF(decoded(Decoded::Type::openDocumentText)),
                                                  RTFDowngrade::Charset::mac));
    EXPECT_EQ(tools.argsOf("wpd2odt"), "--stdout " + tools.work("Letter.wpd").string() + "\n");
}

TEST(WordPerfectToRTF, FallsBackToWpd2html)
{
    FakeTools tools;
    writeFile(tools.work("decoded.html"), html());
    tools.add("wpd2odt", "exit 1");
    tools.add("wpd2html", "cat '" + tools.work("decoded.html").string() + "'");
    EXPECT_EQ(wpToRTF(tools, RTFCharset::ansi, tools.work("Letter.rtf")), "success");
    EXPECT_NE(readFile(tools.work("Letter.rtf")).find("Caf\\'e9"), std::string::npos);
}

TEST(WordPerfectToRTF, PassesFailuresOnAndLeavesTheDestinationAlone)
{
    FakeTools tools;
    const fs::path to = tools.work("Letter.rtf");
    writeFile(to, "older");

    tools.add("wpd2odt", "exit 1");
    tools.add("wpd2html", "exit 1");
    EXPECT_EQ(wpToRTF(tools, RTFCharset::ansi, to), "conversionFailed(\"\")");
    EXPECT_EQ(readFile(to), "older");

    tools.add("wpd2odt", "printf 'this is no document'");
    EXPECT_NE(wpToRTF(tools, RTFCharset::ansi, to).find("OpenDocument"), std::string::npos);
    EXPECT_EQ(readFile(to), "older");
}

} // namespace
