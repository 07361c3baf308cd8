#include "Fixtures.h"
#include "TestSupport.h"

#include "richtext/ReadError.h"

#include <gtest/gtest.h>

#include <functional>

using namespace fixtures;

namespace {

Odt oneParagraph(const std::string &text = "fine")
{
    const Odt odt{.body = "<text:p>" + text + "</text:p>"};
    return odt;
}

// Overwrites a little-endian 32-bit field wherever the zip headers of `name` hold it.
std::string withDeclaredSize(std::string zip, const std::string &name, std::uint32_t size)
{
    auto put = [&](std::size_t at) {
        for (int i = 0; i < 4; ++i)
            zip[at + static_cast<std::size_t>(i)] = static_cast<char>((size >> (8 * i)) & 0xFF);
    };
    for (std::size_t at = 0; (at = zip.find(name, at)) != std::string::npos; at += name.size()) {
        if (at >= 30 && zip.compare(at - 30, 4, "PK\x03\x04") == 0)
            put(at - 30 + 22);
        else if (at >= 46 && zip.compare(at - 46, 4, "PK\x01\x02") == 0)
            put(at - 46 + 24);
    }
    return zip;
}

struct BadInput {
    const char *name;
    std::function<std::string()> bytes;
    std::string error;                  // part of the expected message; empty: read as best it can
    std::vector<std::string> text = {}; // what a best-effort reading holds
    richtext::InflateLimits limits = {};
};

void PrintTo(const BadInput &input, std::ostream *out)
{
    *out << input.name;
}

class OdtBadInput : public testing::TestWithParam<BadInput> {};

TEST_P(OdtBadInput, GivesAClearErrorOrABestEffortDocument)
{
    const BadInput &input = GetParam();
    const std::string bytes = input.bytes();
    if (input.error.empty()) {
        richtext::Document document;
        ASSERT_NO_THROW(document = readOdt(bytes, input.limits));
        EXPECT_EQ(texts(document), input.text);
        return;
    }
    try {
        readOdt(bytes, input.limits);
        ADD_FAILURE() << "read without complaint";
    } catch (const richtext::ReadError &error) {
        EXPECT_NE(std::string(error.what()).find(input.error), std::string::npos) << error.what();
    }
}

std::string billionLaughs()
{
    std::string dtd = "<!DOCTYPE office:document-content [<!ENTITY l0 \"ha\">";
    for (int i = 1; i < 10; ++i)
        dtd += "<!ENTITY l" + std::to_string(i) + " \"" + [&] {
            std::string ten;
            for (int k = 0; k < 10; ++k)
                ten += "&l" + std::to_string(i - 1) + ";";
            return ten;
        }() + "\">";
    std::string content = oneParagraph("&l9;").contentXml();
    content.insert(content.find('\n') + 1, dtd + "]>\n");
    return zipOf({{"mimetype", "application/vnd.oasis.opendocument.text"}, {"content.xml", content}});
}

std::string externalEntity()
{
    static testing_support::TempDir dir;
    testing_support::writeFile(dir / "secret.txt", "TOP-SECRET");
    std::string flat = oneParagraph("&secret;").flat();
    flat.insert(flat.find('\n') + 1, "<!DOCTYPE office:document [<!ENTITY secret SYSTEM \"file://" +
                                         (dir / "secret.txt").string() + "\">]>\n");
    return flat;
}

std::string nested(int depth)
{
    std::string open, close;
    for (int i = 0; i < depth; ++i) {
        open += "<text:span>";
        close += "</text:span>";
    }
    return oneParagraph(open + "deep" + close).flat();
}

INSTANTIATE_TEST_SUITE_P(
    OdtReader, OdtBadInput,
    testing::Values(
        BadInput{"empty", [] { return std::string(); }, "empty"},
        BadInput{"not a document", [] { return std::string("hello, world"); },
                 "neither an OpenDocument package"},
        BadInput{"a truncated package",
                 [] {
                     const std::string p = oneParagraph().package();
                     return p.substr(0, p.size() / 2);
                 },
                 "not a readable zip package"},
        BadInput{"damaged compressed data",
                 [] {
                     std::string p = oneParagraph(std::string(4000, 'x') + "end").package();
                     const std::size_t at = p.find("content.xml") + 40;
                     for (std::size_t i = at; i < at + 40; ++i)
                         p[i] = static_cast<char>(p[i] ^ 0x5A);
                     return p;
                 },
                 "content.xml"},
        BadInput{
            "an encrypted package",
            [] {
                return oneParagraph().package(
                    {{"META-INF/manifest.xml",
                      "<manifest:manifest "
                      "xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\">"
                      "<manifest:file-entry manifest:full-path=\"content.xml\"><manifest:encryption-data/>"
                      "</manifest:file-entry></manifest:manifest>"}});
            },
            "protected by a password"},
        BadInput{"a package without content.xml",
                 [] {
                     return zipOf({{"mimetype", "application/vnd.oasis.opendocument.text"},
                                   {"styles.xml", oneParagraph().stylesXml()}});
                 },
                 "no content.xml"},
        BadInput{"malformed content.xml",
                 [] {
                     return zipOf({{"content.xml", oneParagraph().contentXml().substr(0, 300)}});
                 },
                 "content.xml is not well-formed XML"},
        BadInput{"malformed flat XML", [] { return oneParagraph("<text:span>unclosed").flat(); },
                 "not well-formed XML"},
        BadInput{"text that is not UTF-8", [] { return oneParagraph("caf\xE9").flat(); },
                 "not well-formed XML"},
        // Found by fuzzing: librevenge's base64 decoder threw through the reader.
        BadInput{"a picture whose base64 is damaged",
                 [] {
                     return oneParagraph("kept<draw:frame><draw:image><office:binary-data>iVBO*#!w0KGgo="
                                         "</office:binary-data></draw:image></draw:frame>")
                         .flat();
                 },
                 "",
                 {"kept"}},
        BadInput{"XML that is not OpenDocument",
                 [] { return std::string("<?xml version=\"1.0\"?><html><p>x</p></html>"); },
                 "not an OpenDocument document"},
        BadInput{"a spreadsheet",
                 [] {
                     std::string flat = oneParagraph().flat();
                     const std::size_t at = flat.find("<office:text>");
                     return flat.replace(at, 13, "<office:spreadsheet>")
                         .replace(flat.find("</office:text>"), 14, "</office:spreadsheet>");
                 },
                 "holds no text"},
        BadInput{"an external entity", externalEntity, "declares a DTD"},
        BadInput{"a billion laughs", billionLaughs, "declares a DTD"},
        BadInput{"a zip bomb",
                 [] { return oneParagraph(std::string(4 << 20, ' ')).package(); },
                 "unpacks to more than",
                 {},
                 {1 << 20, 8 << 20}},
        BadInput{"a bomb that lies about its size",
                 [] {
                     return withDeclaredSize(oneParagraph(std::string(4 << 20, ' ')).package(), "content.xml",
                                             100);
                 },
                 "content.xml",
                 {},
                 {1 << 20, 8 << 20}},
        BadInput{"entries that together unpack too far",
                 [] {
                     return oneParagraph(
                                "fine <draw:frame><draw:image xlink:href=\"Pictures/x.png\"/></draw:frame>" +
                                std::string(600 << 10, ' '))
                         .package({{"Pictures/x.png", std::string(600 << 10, 'x')}});
                 },
                 "",
                 {"fine "},
                 {1 << 20, 1 << 20}},
        BadInput{"a package without styles.xml",
                 [] {
                     return zipOf({{"content.xml", oneParagraph("no styles").contentXml()}});
                 },
                 "",
                 {"no styles"}},
        BadInput{
            "elements nobody knows",
            [] {
                const Odt odt{
                    .body =
                        R"(<text:p>keep <x:y xmlns:x="urn:x">inner</x:y> this<text:unknown>too</text:unknown>
                          </text:p><x:block xmlns:x="urn:x"><text:p>para in unknown</text:p></x:block>)"};
                return odt.flat();
            },
            "",
            {"keep inner thistoo ", "para in unknown"}},
        BadInput{"very deep nesting", [] { return nested(1500); }, "", {""}},
        BadInput{"absurd repeat counts",
                 [] {
                     const Odt odt{
                         .body = R"(<table:table><table:table-row table:number-rows-repeated="2000000000">
                          <table:table-cell
                              table:number-columns-repeated="2000000000"/></table:table-row></table:table>
                              <text:p>after</text:p>)"};
                     return odt.flat();
                 },
                 "",
                 {"after"}}));

TEST(OdtBadInput, BombsUnderTheDefaultLimitsAreRefusedBeforeInflating)
{
    // The declared size alone gives it away; nothing is inflated.
    const std::string bomb = withDeclaredSize(oneParagraph().package(), "content.xml", 0xF0000000u);
    try {
        readOdt(bomb);
        ADD_FAILURE() << "read a 3.75 GB entry";
    } catch (const richtext::ReadError &error) {
        EXPECT_NE(std::string(error.what()).find("unpacks to more than 256 MB"), std::string::npos)
            << error.what();
    }
}

} // namespace
