#include "TestSupport.h"
#include "render/SVGRasterizer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <QThread>

using Size = SVGRasterizer::Size;
using namespace testing_support;

namespace {

struct Outcome {
    int calls = 0;
    bool onMainThread = false;
    SVGRasterizer::Result result;
};

// Starts a rasterizer and notes whether it answered before renderPNG returned.
std::shared_ptr<Outcome> render(const std::string &svg, bool *answeredAtOnce = nullptr,
                                Size *pixels = nullptr)
{
    auto outcome = std::make_shared<Outcome>();
    auto rasterizer = SVGRasterizer::create();
    rasterizer->renderPNG(svg, [outcome](SVGRasterizer::Result result) {
        ++outcome->calls;
        outcome->onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        outcome->result = std::move(result);
    });
    if (answeredAtOnce)
        *answeredAtOnce = outcome->calls > 0;
    if (pixels)
        *pixels = rasterizer->pixelSize;
    return outcome;
}

std::string failureOf(const SVGRasterizer::Result &result)
{
    try {
        if (const auto *error = std::get_if<std::exception_ptr>(&result))
            std::rethrow_exception(*error);
    } catch (const SVGRasterizer::Failure &error) {
        return error.what();
    }
    return "no failure";
}

QImage pngOf(const std::shared_ptr<Outcome> &outcome)
{
    EXPECT_TRUE(waitUntil([&] { return outcome->calls > 0; }));
    const auto *png = std::get_if<std::string>(&outcome->result);
    if (!png) {
        ADD_FAILURE() << failureOf(outcome->result);
        return {};
    }
    return QImage::fromData(QByteArray::fromStdString(*png), "PNG");
}

} // namespace

TEST(SVGSizing, NaturalSizeAndBitmapFollowTheRules)
{
    struct Row {
        const char *markup;
        Size natural;
        Size pixels;
    };
    const Row rows[] = {
        {R"(<svg width="8.5in" height="11in">)", {612, 792}, {1545, 2000}},
        {R"(<svg>)", {612, 792}, {1545, 2000}},
        {R"(<svg viewBox="0 0 100 50" width="10cm">)", {100, 50}, {2000, 1000}},
        {R"(<svg viewBox="0,0,10,10">)", {10, 10}, {400, 400}},
        {R"(<svg viewBox="0, 0, 100, 50">)", {100, 50}, {2000, 1000}},
        {R"(<svg viewBox="0 0 4000 3000">)", {4000, 3000}, {8000, 6000}},
        {R"(<svg viewBox="0 0 100" width="30" height="60">)", {30, 60}, {1000, 2000}},
        {R"(<svg viewBox="0 0 0 50" width="30" height="60">)", {30, 60}, {1000, 2000}},
        {"<svg viewBox=\"0 0\t100 50\" width=\"30\" height=\"60\">", {30, 60}, {1000, 2000}},
        {"<svg viewBox=\"0 0\n100 50\">", {612, 792}, {1545, 2000}},
        // A piece that opens with white space is no number; the tab does not separate.
        {"<svg viewBox=\"0 0 \t100 50\" width=\"30\" height=\"60\">", {30, 60}, {1000, 2000}},
        // Decimals read the same whatever the locale spells them with.
        {R"(<svg viewBox="0 0 637.02 276.75">)", {637.02, 276.75}, {2000, 869}},
        {R"(<svg width="10.5in" height="7.25">)", {756, 7.25}, {2000, 19}},
        {R"(<svg width="210mm" height="297mm">)", {210, 297}, {1414, 2000}},
        {R"(<svg width="100%" height="50%">)", {100, 50}, {2000, 1000}},
        {R"(<svg width='300' height='300'>)", {612, 792}, {1545, 2000}},
        {R"(<svg height="100"><path stroke-width="2"/></svg>)", {2, 100}, {40, 2000}},
        {R"(<svg width=" 1e2 " height="1.5e1pt">)", {100, 15}, {2000, 300}},
        {R"(<svg width="1e" height="5">)", {612, 792}, {1545, 2000}},
        {R"(<svg width="1.2.3" height="5">)", {612, 792}, {1545, 2000}},
        {R"(<svg width="--1" height="5">)", {612, 792}, {1545, 2000}},
        {R"(<svg width="-5" height="5">)", {612, 792}, {1545, 2000}},
        {R"(<svg viewBox="0 0 x 100 20">)", {100, 20}, {2000, 400}},
        {R"(<svg viewBox="0 0 x 50 100 20" width="5" height="10">)", {5, 10}, {200, 400}},
        // Unicode spaces and tabs around a length are trimmed; a space may stand before the unit.
        {"<svg width=\"\u00A0\t12px\u2003\" height=\"5\">", {12, 5}, {480, 200}},
        {R"(<svg width="3 in" height="5">)", {216, 5}, {2000, 46}},
        // Attribute names are matched as words, case and all, and "=" may stand apart.
        {R"(<svg data-width="7" width="9" height="5">)", {7, 5}, {280, 200}},
        {R"(<svg Width="9" height="5">)", {612, 792}, {1545, 2000}},
        {R"(<svg width = "9" height= "5">)", {9, 5}, {360, 200}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.markup);
        const Size natural = SVGRasterizer::naturalSize(row.markup);
        EXPECT_DOUBLE_EQ(natural.width, row.natural.width);
        EXPECT_DOUBLE_EQ(natural.height, row.natural.height);
        EXPECT_EQ(SVGRasterizer::scaledToPixels(natural), row.pixels);
    }
}

TEST(SVGRasterizerTest, RefusesBadInputBeforeReturning)
{
    struct Row {
        std::string svg;
        const char *failure;
    };
    const Row rows[] = {
        {std::string("<svg width=\"10\">\xff\xfe</svg>"), "not valid SVG"},
        {"<SVG viewBox=\"0 0 10 10\"></SVG>", "not valid SVG"},
        {"", "not valid SVG"},
        {"<svg viewBox=\"0 0 100000 100000\"/>", "image too large"},
        {"<svg viewBox=\"0 0 20000 10\"/>", "image too large"},
        {"<svg viewBox=\"0 0 1e400 10\"/>", "image too large"},
        {"<svg width=\"1e400\" height=\"5\"/>", "image too large"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.svg);
        bool atOnce = false;
        const auto outcome = render(row.svg, &atOnce);
        EXPECT_TRUE(atOnce);
        EXPECT_EQ(outcome->calls, 1);
        EXPECT_EQ(failureOf(outcome->result), row.failure);
    }
    EXPECT_EQ(SVGRasterizer::activeCount(), 0u);
}

TEST(SVGRasterizerTest, DrawsFittedOnWhiteAndReportsOnceOnTheMainThread)
{
    bool atOnce = true;
    Size pixels;
    const auto outcome =
        render(R"(<?xml version="1.0"?><!DOCTYPE svg><svg xmlns="http://www.w3.org/2000/svg" )"
               R"(viewBox="0 0 100 50"><rect x="50" y="0" width="50" height="50" fill="#f00"/></svg>)",
               &atOnce, &pixels);
    EXPECT_FALSE(atOnce) << "the drawing happens after renderPNG returned";
    EXPECT_EQ(pixels, (Size{2000, 1000}));
    EXPECT_EQ(SVGRasterizer::activeCount(), 1u) << "the rasterizer keeps itself alive while it works";
    const QImage image = pngOf(outcome);
    waitUntil([] { return false; }, 0.1);
    EXPECT_EQ(outcome->calls, 1);
    EXPECT_TRUE(outcome->onMainThread);
    EXPECT_EQ(SVGRasterizer::activeCount(), 0u);
    ASSERT_EQ(image.size(), QSize(2000, 1000));
    EXPECT_EQ(image.pixelColor(500, 500), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(1500, 500), QColor(Qt::red));
}

TEST(SVGRasterizerTest, WithoutAViewBoxTheDrawingIsUnscaledAtTheTopLeft)
{
    // 100×50 points scale to a 2000×1000 bitmap, but a page shows an <svg>
    // without a viewBox at its own size.
    const QImage image = pngOf(render(R"(<svg xmlns="http://www.w3.org/2000/svg" width="100" height="50">)"
                                      R"(<rect width="100" height="50" fill="#00f"/></svg>)"));
    ASSERT_EQ(image.size(), QSize(2000, 1000));
    EXPECT_EQ(image.pixelColor(50, 25), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(1000, 500), QColor(Qt::white));
}

TEST(SVGRasterizerTest, MarkupLibrsvgCannotReadFailsAsASnapshot)
{
    const auto outcome = render("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 10 10\"><rect");
    ASSERT_TRUE(waitUntil([&] { return outcome->calls > 0; }));
    EXPECT_EQ(failureOf(outcome->result), "snapshot failed");
}

namespace {

// A 2×2 bitmap (black, white / white, #c82800) in a moved and scaled group,
// and a 2×1 one (blue, transparent) stretched: both enlarged about 40 times.
const std::string blackWhite = "iVBORw0KGgoAAAANSUhEUgAAAAIAAAACCAIAAAD91JpzAAAAF0lEQVR4nGNgYGD4//8/w////"
                               "09oMAAALIwG6xrpyGoAAAAASUVORK5CYII=";
const std::string blueClear =
    "iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAYAAAD0In+KAAAAEUlEQVR4nGNgYPj/n4HhPwMADPwC/i9P4yYAAAAASUVORK5CYII=";

std::string twoBitmaps(const std::string &groupTransform)
{
    return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" viewBox="0 0 4 2">)"
           R"(<g transform=")" +
           groupTransform +
           R"("><image x="0" y="0" width="2" height="2" )"
           R"(xlink:href="data:image/png;base64,)" +
           blackWhite +
           R"("/></g>)"
           R"(<image x="2.2" y="0.2" width="1.6" height="1" preserveAspectRatio="none" )"
           R"(href="data:image/png;base64,)" +
           blueClear + R"("/></svg>)";
}

std::vector<int> channelAlong(const QImage &image, QPoint from, QPoint step, int count, int channel)
{
    std::vector<int> values;
    for (QPoint at = from; count-- > 0; at += step) {
        const QColor c = image.pixelColor(at);
        values.push_back(channel == 0 ? c.red() : channel == 1 ? c.green() : c.blue());
    }
    return values;
}

} // namespace

TEST(SVGRasterizerTest, EnlargedBitmapsMatchAWebPagePixelForPixel)
{
    const QImage image = pngOf(render(twoBitmaps("translate(0.3 0.1) scale(0.9)")));
    ASSERT_EQ(image.size(), QSize(160, 80));
    // Every other pixel of Chromium 156's screenshot of the same page.
    const std::vector<int> acrossRed{255, 255, 255, 255, 255, 255, 47,  47,  47,  47,  47,  47,  47,  47,
                                     47,  47,  60,  72,  72,  84,  97,  109, 121, 133, 146, 158, 170, 170,
                                     183, 195, 207, 220, 232, 244, 244, 244, 244, 244, 244, 244};
    const std::vector<int> acrossGreen{255, 255, 255, 255, 255, 255, 47,  47,  47,  47,  47,  47,  47,  47,
                                       47,  47,  58,  68,  68,  79,  89,  99,  110, 120, 131, 141, 152, 152,
                                       162, 172, 183, 193, 204, 214, 214, 214, 214, 214, 214, 214};
    const std::vector<int> down{255, 255, 63,  63,  63,  63,  63,  63,  63,  63,  63,  63,  74,  85,
                                85,  97,  108, 119, 130, 141, 152, 163, 174, 174, 185, 196, 207, 219,
                                230, 241, 241, 241, 241, 241, 241, 241, 241, 241, 255, 255};
    const std::vector<int> blueFading{255, 255, 0,   0,   0,   0,   0,   0,   0,   0,   0,   16,  32,
                                      48,  64,  80,  96,  112, 128, 144, 160, 176, 192, 208, 224, 240,
                                      255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
    EXPECT_EQ(channelAlong(image, {0, 30}, {2, 0}, 40, 0), acrossRed);
    EXPECT_EQ(channelAlong(image, {0, 30}, {2, 0}, 40, 1), acrossGreen);
    EXPECT_EQ(channelAlong(image, {40, 0}, {0, 2}, 40, 0), down);
    EXPECT_EQ(channelAlong(image, {84, 20}, {2, 0}, 38, 0), blueFading);
    EXPECT_EQ(channelAlong(image, {84, 20}, {2, 0}, 38, 2), std::vector<int>(38, 255));
}

TEST(SVGRasterizerTest, BitmapsOutOfTheUsualAreStillDrawn)
{
    const auto inkedAt = [](const QImage &image, QPoint at) {
        return image.pixelColor(at).value() < 64 || image.pixelColor(at).red() < 64;
    };
    // Turned, mirrored or shrunk bitmaps are left to librsvg's own sampling.
    for (const char *transform : {"rotate(90 1 1)", "translate(2 0) scale(-1 1)", "scale(0.01)"}) {
        const QImage image = pngOf(render(twoBitmaps(transform)));
        ASSERT_EQ(image.size(), QSize(160, 80)) << transform;
        EXPECT_TRUE(inkedAt(image, {100, 30})) << transform << ": the other bitmap is drawn";
        if (std::string(transform) != "scale(0.01)") {
            EXPECT_TRUE(inkedAt(image, {60, 20})) << transform << ": the bitmap itself is drawn";
        }
    }

    // Bitmaps that cannot be read, or are not bitmaps, leave the rest of the drawing alone.
    for (const std::string &href : std::vector<std::string>{
             "data:image/png;base64,AAAA", "data:image/png,%89PNG", "data:image/svg+xml;base64,PHN2Zy8+",
             "picture.png", "", "data:image/png;base64," + blackWhite.substr(0, 40)}) {
        const QImage image =
            pngOf(render(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 4 2">)"
                         R"(<rect width="1" height="1"/><image width="3" height="2" href=")" +
                         href + R"("/></svg>)"));
        ASSERT_EQ(image.size(), QSize(160, 80)) << href;
        EXPECT_TRUE(inkedAt(image, {20, 20})) << href;
    }
}
