#include "TestSupport.h"
#include "engine/ConversionError.h"
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
std::shared_ptr<Outcome> render(const std::string &svg, bool *answeredAtOnce = nullptr, Size *pixels = nullptr)
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
    } catch (const ConversionError &error) {
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
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.markup);
        const Size natural = SVGRasterizer::naturalSize(row.markup);
        EXPECT_DOUBLE_EQ(natural.width, row.natural.width);
        EXPECT_DOUBLE_EQ(natural.height, row.natural.height);
        EXPECT_EQ(SVGRasterizer::scaledToPixels(natural), row.pixels);
    }
}

TEST(SVGSizing, LengthsAndAttributes)
{
    EXPECT_EQ(SVGRasterizer::lengthInPoints(std::nullopt), std::nullopt);
    EXPECT_EQ(SVGRasterizer::lengthInPoints("2in"), 144);
    EXPECT_EQ(SVGRasterizer::lengthInPoints("\u00A0\t12px\u2003"), 12) << "Unicode spaces and tabs are trimmed";
    EXPECT_EQ(SVGRasterizer::lengthInPoints("12\n"), 12) << "a line break stays: the unit test sees 12\\n";
    EXPECT_EQ(SVGRasterizer::lengthInPoints("3 in"), 216);
    EXPECT_EQ(SVGRasterizer::attribute("width", R"(<svg data-width="7" width="9">)"), "7")
        << "\\b matches after a hyphen";
    EXPECT_EQ(SVGRasterizer::attribute("height", R"(<svg height = "" >)"), "");
    EXPECT_EQ(SVGRasterizer::attribute("Width", R"(<svg width="9">)"), std::nullopt) << "case-sensitive";
}

TEST(SVGRasterizerTest, RefusesBadInputBeforeReturning)
{
    struct Row {
        std::string svg;
        const char *failure;
    };
    const Row rows[] = {
        {std::string("<svg width=\"10\">\xff\xfe</svg>"), "conversionFailed(\"not valid SVG\")"},
        {"<SVG viewBox=\"0 0 10 10\"></SVG>", "conversionFailed(\"not valid SVG\")"},
        {"", "conversionFailed(\"not valid SVG\")"},
        {"<svg viewBox=\"0 0 100000 100000\"/>", "conversionFailed(\"image too large\")"},
        {"<svg viewBox=\"0 0 20000 10\"/>", "conversionFailed(\"image too large\")"},
        {"<svg viewBox=\"0 0 1e400 10\"/>", "conversionFailed(\"image too large\")"},
        {"<svg width=\"1e400\" height=\"5\"/>", "conversionFailed(\"image too large\")"},
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
    const auto outcome = render(R"(<?xml version="1.0"?><!DOCTYPE svg><svg xmlns="http://www.w3.org/2000/svg" )"
                                R"(viewBox="0 0 100 50"><rect x="50" y="0" width="50" height="50" fill="#f00"/></svg>)",
                                &atOnce, &pixels);
    EXPECT_FALSE(atOnce) << "the drawing happens after renderPNG returned";
    EXPECT_EQ(pixels, (Size {2000, 1000}));
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
    EXPECT_EQ(failureOf(outcome->result), "conversionFailed(\"snapshot failed\")");
}
