// Our WordPerfect files as readers other than libwpd see them: wp2latex (5.1 and 6) and wp2x (5.1)
// take every file without a warning and find the words libwpd finds.

#include "IndependentReaders.h"
#include "ProgramRun.h"
#include "ScratchFolder.h"
#include "WpTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Fixture {
    const char *name;
    std::string styles;
    std::string body;
    std::string masterStyles = {};
    std::string meta = {};
};

const Fixture fixtures[] = {
    {"PlainParagraphs", "", "<text:p>first paragraph of words</text:p><text:p>second paragraph here</text:p>"},
    {"SummaryInItsOwnIndexBlock", "", "<text:p>body words</text:p>", "",
     "<office:meta><dc:title>Title words</dc:title><dc:subject>Subject words</dc:subject>"
     "<dc:creator>Author Name</dc:creator><dc:description>Abstract words</dc:description>"
     "<meta:keyword>keyword</meta:keyword></office:meta>"},
    {"Characters", "",
     "<text:p>caf\u00e9 na\u00efve \u00bfqu\u00e9? \u00df \u2022 bullet \u2013 dash \u201cquoted\u201d</text:p>"
     "<text:p>\u03b1\u03b2\u03b3 Greek \u0416\u0438\u0437\u043d\u044c Cyrillic \u05e9\u05dc\u05d5\u05dd Hebrew"
     " \u30ab\u30bf\u30ab\u30ca kana soft\u00adhyphen non\u2011breaking</text:p>"},
};

std::string document(const Fixture &fixture)
{
    std::string odt = wptest::flatOdt(fixture.styles, fixture.body, fixture.masterStyles);
    if (!fixture.meta.empty())
        odt.insert(odt.find("<office:automatic-styles>"), fixture.meta);
    return odt;
}

struct Case {
    const Fixture *fixture;
    const char *option;
};

void PrintTo(const Case &c, std::ostream *os) { *os << c.fixture->name << " " << c.option; }

class IndependentReaders : public ::testing::TestWithParam<Case> {};

TEST_P(IndependentReaders, ReadOurFileWithoutComplaintAndFindLibwpdsWords)
{
    const Case &param = GetParam();
    ScratchFolder scratch;
    const std::string source = scratch.write("source.fodt", document(*param.fixture));
    const std::string output = scratch.file("out.wp");
    const ProgramRun run = ProgramRun::of({ODT2WP5_PATH, param.option, source, output});
    ASSERT_EQ(run.status, 0) << run.err;

    const readers::Reading reference = readers::libwpd(output);
    ASSERT_EQ(reference.status, 0);
    EXPECT_TRUE(reference.complaints.empty()) << reference.complaints.front();
    ASSERT_GE(readers::words(reference.text).size(), 2u) << reference.text;

    const readers::Reading latex = readers::wp2latex(output);
    if (!latex.available)
        GTEST_SKIP() << "wp2latex is not installed";
    EXPECT_EQ(latex.status, 0);
    EXPECT_EQ(latex.complaints, std::vector<std::string> {});
    const readers::WordShare byLatex = readers::shareOfWords(reference.text, latex.text);
    EXPECT_GE(byLatex.share, 0.98) << "wp2latex misses " << ::testing::PrintToString(byLatex.missing);

    if (std::string(param.option) != "--wp5")
        return;
    const readers::Reading x = readers::wp2x(output);
    if (!x.available)
        GTEST_SKIP() << "wp2x is not installed";
    EXPECT_EQ(x.status, 0);
    EXPECT_EQ(x.complaints, std::vector<std::string> {});
    const readers::WordShare byX = readers::shareOfWords(reference.text, x.text);
    EXPECT_GE(byX.share, 0.90) << "wp2x misses " << ::testing::PrintToString(byX.missing);
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    for (const Fixture &fixture : fixtures) {
        all.push_back({&fixture, "--wp6"});
        all.push_back({&fixture, "--wp5"});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Fixtures, IndependentReaders, ::testing::ValuesIn(cases()), [](const auto &info) {
    return std::string(info.param.fixture->name) + "_" + (info.param.option + 2);
});

} // namespace
