#include "TestSupport.h"
#include "tools/ConversionTools.h"

#include <gtest/gtest.h>

#include <QImage>

using namespace testing_support;

// The drawing program the application runs for each picture: PNG on standard output, or one line
// on standard error and nothing else.
TEST(Svg2png, DrawsOnACanvasOfTheAskedSizeOrSaysWhyNot)
{
    TempDir work;
    writeFile(work / "red.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 40 20\">"
                                "<rect width=\"40\" height=\"20\" fill=\"#f00\"/></svg>");
    writeFile(work / "broken.svg", "<svg><unclosed");
    const struct {
        std::vector<std::string> args;
        int width; // 0: no picture
        std::string error;
    } rows[] = {
        {{(work / "red.svg").string(), "80", "40"}, 80, ""},
        {{(work / "broken.svg").string(), "80", "40"}, 0, "svg2png: XML parse error"},
        {{(work / "missing.svg").string(), "80", "40"}, 0, "svg2png: "},
        {{(work / "red.svg").string(), "80", "0"}, 0, "svg2png: not a size in pixels: 0"},
        {{(work / "red.svg").string(), "80"}, 0, "svg2png: usage: svg2png SVG WIDTH HEIGHT"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.args.back());
        const auto output = ConversionTools::run(SVG2PNG_PATH, row.args, "svg2png");
        if (row.width == 0) {
            EXPECT_TRUE(output.stdout.empty());
            EXPECT_EQ(output.stderr.rfind(row.error, 0), 0u) << output.stderr;
            EXPECT_EQ(std::count(output.stderr.begin(), output.stderr.end(), '\n'), 1) << output.stderr;
            continue;
        }
        const QImage image = QImage::fromData(QByteArray::fromStdString(output.stdout), "PNG");
        EXPECT_EQ(image.size(), QSize(row.width, 40));
        EXPECT_EQ(image.pixelColor(40, 20), QColor(Qt::red));
        EXPECT_EQ(output.stderr, "");
    }
}
