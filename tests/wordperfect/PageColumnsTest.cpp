// A page style set in columns, as librevenge hands it to the writer: WordPerfect 6 sets its text in
// newspaper columns, a column break moves on to the next, and sections with columns of their own
// return to the page's. libwpd reads no 5.1 columns; it takes 5.1's column break, a hard page, for a
// page break (wp2latex reads the columns: IndependentReadersTest).

#include "WpTestSupport.h"

#include "richtext/wordperfect/WordPerfectWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using richtext::wordperfect::WordPerfectWriter;

struct Written {
    wptest::ReadBack back;
    richtext::Losses losses;
};

Written write(WordPerfectWriter::Version version)
{
    const auto writer = WordPerfectWriter::create(version);
    writer->startDocument({});
    librevenge::RVNGPropertyList page;
    page.insert("fo:column-count", 2);
    page.insert("fo:column-gap", 0.5, librevenge::RVNG_INCH);
    writer->openPageSpan(page);
    auto paragraph = [&](const char *text, bool columnBreak = false) {
        librevenge::RVNGPropertyList properties;
        if (columnBreak)
            properties.insert("fo:break-before", "column");
        writer->openParagraph(properties);
        writer->insertText(text);
        writer->closeParagraph();
    };
    paragraph("left column");
    paragraph("right column", true);
    librevenge::RVNGPropertyList three;
    three.insert("fo:column-count", 3);
    writer->openSection(three);
    paragraph("in three");
    writer->closeSection();
    paragraph("back in two");
    writer->closePageSpan();
    writer->endDocument();
    return {wptest::readWordPerfect(writer->fileBytes()), writer->losses()};
}

TEST(PageColumns, SetsThePageStylesColumnsInWordPerfect6)
{
    const Written written = write(WordPerfectWriter::Version::wp6);
    ASSERT_TRUE(written.back.ok);
    EXPECT_TRUE(written.losses.empty()) << written.losses.joined();
    EXPECT_EQ(wptest::sectionColumns(written.back.document), (std::vector<std::string>{"2", "3", "2"}));
    const richtext::Paragraph *right = wptest::paragraphWith(written.back.document, "right column");
    ASSERT_NE(right, nullptr);
    EXPECT_EQ(wptest::property(right->properties, "fo:break-before"), "column");
}

TEST(PageColumns, BreaksWordPerfect51sColumnWithAHardPage)
{
    const Written written = write(WordPerfectWriter::Version::wp5);
    ASSERT_TRUE(written.back.ok);
    EXPECT_TRUE(written.losses.empty()) << written.losses.joined();
    EXPECT_EQ(wptest::texts(written.back.document),
              (std::vector<std::string>{"left column", "right column", "in three", "back in two"}));
    const richtext::Paragraph *right = wptest::paragraphWith(written.back.document, "right column");
    ASSERT_NE(right, nullptr);
    EXPECT_EQ(wptest::property(right->properties, "fo:break-before"), "page");
}

} // namespace
