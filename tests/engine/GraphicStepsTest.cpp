#include "EngineRun.h"
#include "FakeTools.h"
#include "support/ConversionError.h"
#include "engine/Converter.h"
#include "render/SVGRasterizer.h"

#include <gtest/gtest.h>

#include <QImage>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

const char *redSquare =
    "<?xml version=\"1.0\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 40 20\">"
    "<rect width=\"40\" height=\"20\" fill=\"#f00\"/></svg>\n";

} // namespace

TEST(GraphicJobs, WriteTheSVGOrItsPictureReplacingWhatWasThere)
{
    FakeTools tools;
    tools.add("wpg2svg", std::string("cat <<'SVG'\n") + redSquare + "SVG");
    writeFile(tools.work("Pic.svg"), "older");
    writeFile(tools.work("Pic.png"), "older");
    EXPECT_EQ(performAndWait(JobCase::wpgToSVG{tools.work("Pic.wpg")}, tools.work("Pic.svg")), nullptr);
    EXPECT_EQ(readFile(tools.work("Pic.svg")), redSquare);
    EXPECT_EQ(performAndWait(JobCase::wpgToPNG{tools.work("Pic.wpg")}, tools.work("Pic.png")), nullptr);
    const QImage png(QString::fromStdString(tools.work("Pic.png").string()));
    EXPECT_EQ(png.size(), QSize(1600, 800)) << "40 points wide: the scale stops at 40";
    EXPECT_EQ(png.pixelColor(800, 400), QColor(Qt::red));
    EXPECT_EQ(tools.argsOf("wpg2svg"),
              tools.work("Pic.wpg").string() + "\n" + tools.work("Pic.wpg").string() + "\n");
}

TEST(GraphicJobs, APictureIsDrawnBySvg2pngWhenItIsThere)
{
    FakeTools tools;
    tools.add("wpg2svg", std::string("cat <<'SVG'\n") + redSquare + "SVG");
    const struct {
        const char *svg2png; // the stand-in's body
        const char *outcome;
        const char *written;
    } rows[] = {
        {"printf 'drawn elsewhere'", "success", "drawn elsewhere"},
        {"echo 'svg2png: the SVG could not be read' >&2; exit 1", "conversionFailed(\"snapshot failed\")",
         "older"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.svg2png);
        tools.add("svg2png", row.svg2png);
        writeFile(tools.work("Pic.png"), "older");
        EXPECT_EQ(
            outcomeText(performAndWait(JobCase::wpgToPNG{tools.work("Pic.wpg")}, tools.work("Pic.png"))),
            row.outcome);
        EXPECT_EQ(readFile(tools.work("Pic.png")), row.written);
    }
    // The canvas's size follows the drawing's, and the markup goes over in a file removed afterwards.
    const std::string args = tools.argsOf("svg2png");
    EXPECT_NE(args.find(" 1600 800\n"), std::string::npos) << args;
    const std::string markupFile = args.substr(0, args.find(' '));
    EXPECT_FALSE(fs::exists(markupFile)) << markupFile;
}

TEST(GraphicJobs, FailuresLeaveAnExistingFileAlone)
{
    FakeTools tools;
    struct Row {
        const char *tool; // the stand-in's body; empty: no tool at all
        Job job;
        const char *failure;
    };
    const Row rows[] = {
        {"exit 0", JobCase::wpgToSVG{tools.work("Pic.wpg")}, "conversionFailed(\"\")"},
        {"exit 0", JobCase::wpgToPNG{tools.work("Pic.wpg")}, "conversionFailed(\"\")"},
        {"printf 'no drawing here'", JobCase::wpgToPNG{tools.work("Pic.wpg")},
         "conversionFailed(\"not valid SVG\")"},
        {"", JobCase::wpgToSVG{tools.work("Pic.wpg")}, "toolMissing(\"wpg2svg\")"},
        {"", JobCase::wpgToPNG{tools.work("Pic.wpg")}, "toolMissing(\"wpg2svg\")"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(jobName(row.job)) + " with " + (*row.tool ? row.tool : "no tool"));
        fs::remove(tools.folder() / "wpg2svg");
        if (*row.tool)
            tools.add("wpg2svg", row.tool);
        writeFile(tools.work("Pic.out"), "older");
        EXPECT_EQ(outcomeText(performAndWait(row.job, tools.work("Pic.out"))), row.failure);
        EXPECT_EQ(readFile(tools.work("Pic.out")), "older");
    }
}

TEST(GraphicJobs, AMetafileThatCannotBeDrawnIsALossNotAFailure)
{
    FakeTools tools;
    // "no metafile", as base64: libwmf draws nothing from it.
    tools.add(
        "wpg2svg",
        "cat <<'SVG'\n<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\""
        " viewBox=\"0 0 40 20\"><rect width=\"40\" height=\"10\" fill=\"#f00\"/><image width=\"40\""
        " height=\"10\" xlink:href=\"data:image/wmf;base64,bm8gbWV0YWZpbGU=\"/></svg>\nSVG");
    for (const Job &job :
         {Job(JobCase::wpgToSVG{tools.work("Pic.wpg")}), Job(JobCase::wpgToPNG{tools.work("Pic.wpg")})}) {
        SCOPED_TRACE(jobName(job));
        Converter::Losses losses;
        EXPECT_EQ(performAndWait(job, tools.work("Pic.out"), &losses), nullptr);
        EXPECT_EQ(losses.kinds(), std::vector<std::string>{std::string(richtext::loss::unreadablePictures)});
        EXPECT_FALSE(readFile(tools.work("Pic.out")).empty()) << "the rest of the graphic is written";
    }
}

TEST(GraphicJobs, EveryCorpusGraphicBecomesSVGAndAPictureOfItsSize)
{
    const auto corpus = corpusDir();
    if (!corpus)
        GTEST_SKIP() << "../shared/corpus is not beside the checkout";
    TempDir out;
    int converted = 0;
    for (const auto &entry : fs::directory_iterator(*corpus / "wpg")) {
        const fs::path source = entry.path();
        SCOPED_TRACE(source.filename().string());
        const std::string prefix = readFile(source).substr(0, 4);
        const fs::path svg = out / (source.stem().string() + ".svg");
        const fs::path png = out / (source.stem().string() + ".png");
        Converter::Losses svgLosses;
        Converter::Losses pngLosses;
        const auto svgOutcome = performAndWait(JobCase::wpgToSVG{source}, svg, &svgLosses);
        const auto pngOutcome = performAndWait(JobCase::wpgToPNG{source}, png, &pngLosses);
        if (prefix != "\xFFWPC") {
            // wpg2svg reads nothing without the WordPerfect prefix.
            EXPECT_EQ(outcomeText(svgOutcome), "conversionFailed(\"\")");
            EXPECT_EQ(outcomeText(pngOutcome), "conversionFailed(\"\")");
            continue;
        }
        ASSERT_EQ(svgOutcome, nullptr) << outcomeText(svgOutcome);
        ASSERT_EQ(pngOutcome, nullptr) << outcomeText(pngOutcome);
        const std::string markup = readFile(svg);
        // Metafiles are drawn, since no SVG reader shows them.
        EXPECT_EQ(markup.find("image/wmf"), std::string::npos);
        EXPECT_EQ(markup.find("image/bmp"), std::string::npos);
        EXPECT_TRUE(svgLosses.empty()) << svgLosses.joined();
        EXPECT_TRUE(pngLosses.empty()) << pngLosses.joined();
        const auto pixels =
            SVGRasterizer::scaledToPixels(SVGRasterizer::naturalSize(markup.substr(markup.find("<svg"))));
        const QImage image(QString::fromStdString(png.string()));
        EXPECT_EQ(image.size(), QSize(static_cast<int>(pixels.width), static_cast<int>(pixels.height)));
        ++converted;
    }
    EXPECT_GT(converted, 10);
}
