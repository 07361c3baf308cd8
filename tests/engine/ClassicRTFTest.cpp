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

// Both decoded forms, in both charsets: the file is the classic rewriting of our library's RTF.
TEST(WriteClassicRTF, WritesTheDocumentInTheCharset)
{
    const std::vector<std::string> ansi = {"{\\rtf1\\ansi\\ansicpg1252", "\\b Bold}",
                                           "Caf\\'e9 \\'93quoted\\'94 \\'8a \\u9786\\'3f \\'80"};
    const std::vector<std::string> mac = {"{\\rtf1\\mac", "\\b Bold}",
                                          "Caf\\'8e \\'d2quoted\\'d3 \\'3f \\u9786\\'3f \\'db"};
    TempDir dir;
    const fs::path to = dir / "Letter.rtf";
    for (const auto type : {Decoded::Type::openDocumentText, Decoded::Type::html}) {
        for (const auto charset : {RTFCharset::ansi, RTFCharset::mac}) {
            SCOPED_TRACE(std::string(type == Decoded::Type::html ? "HTML in " : "ODT in ") +
                         std::string(rawValue(charset)));
            writeFile(to, "an older conversion");
            const Decoded document = decoded(type);
            Converter::steps::writeClassicRTF(document, charset, to);
            const std::string written = readFile(to);
            for (const std::string &part : charset == RTFCharset::mac ? mac : ansi)
                EXPECT_NE(written.find(part), std::string::npos) << "no " << part << " in\n" << written;
            EXPECT_EQ(written.find("ansi") == std::string::npos, charset == RTFCharset::mac)
                << "Mac holds no \\ansi nor \\ansicpg";
            EXPECT_EQ(written, RTFDowngrade::classic(modernRTF(document),
                                                     Converter::steps::downgradeCharset(charset)));
        }
    }
}

// The readers' own tests cover their messages; here: they reach the caller and the old file stays.
TEST(WriteClassicRTF, AnUnreadableDocumentFailsWithTheReadersWordsAndKeepsTheOldFile)
{
    const struct {
        Decoded document;
        const char *reason;
    } rows[] = {
        {{"<office:document><unclosed", Decoded::Type::openDocumentText}, "not well-formed XML"},
        {{"  \n", Decoded::Type::html}, "empty"},
    };
    TempDir dir;
    const fs::path to = dir / "Letter.rtf";
    writeFile(to, "an older conversion");
    for (const auto &row : rows) {
        SCOPED_TRACE(row.reason);
        try {
            Converter::steps::writeClassicRTF(row.document, RTFCharset::ansi, to);
            ADD_FAILURE() << "no error";
        } catch (const PlatformError &error) {
            EXPECT_NE(std::string(error.what()).find(row.reason), std::string::npos) << error.what();
        }
        EXPECT_EQ(readFile(to), "an older conversion");
    }
}

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
