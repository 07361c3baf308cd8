#include "SVGRasterizer.h"

#include "RsvgRenderer.h"
#include "richtext/Numbers.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QThreadPool>

#include <cmath>
#include <cstdlib>

std::set<std::shared_ptr<SVGRasterizer>> SVGRasterizer::active;

namespace {

SVGRasterizer::Drawer &drawer()
{
    static SVGRasterizer::Drawer current = RsvgRenderer::renderPNG;
    return current;
}

// A bitmap past these bounds could not be allocated sensibly; refuse it
// before trying.
constexpr double maxSide = 32767;
constexpr double maxPixels = 268435456.0; // 2^28

bool isUTF8(const std::string &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return !decoder.hasError();
}

// The whole text as a number, or nothing.
std::optional<double> wholeNumber(const std::string &text)
{
    return richtext::Numbers::whole(text);
}

std::vector<std::string> splitAtSpacesAndCommas(const std::string &text)
{
    std::vector<std::string> pieces;
    std::string piece;
    for (const char c : text) {
        if (c == ' ' || c == ',') {
            if (!piece.empty())
                pieces.push_back(piece);
            piece.clear();
        } else {
            piece += c;
        }
    }
    if (!piece.empty())
        pieces.push_back(piece);
    return pieces;
}

// Unicode space separators and the tab; line breaks stay.
QString trimSpaces(const QString &text)
{
    const auto isSpace = [](QChar c) { return c == u'\t' || c.category() == QChar::Separator_Space; };
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isSpace(text[start]))
        ++start;
    while (end > start && isSpace(text[end - 1]))
        --end;
    return text.mid(start, end - start);
}

} // namespace

std::shared_ptr<SVGRasterizer> SVGRasterizer::create()
{
    return std::shared_ptr<SVGRasterizer>(new SVGRasterizer());
}

std::optional<std::string> SVGRasterizer::attribute(const std::string &name, const std::string &text)
{
    // Unicode-aware \b and \s, as the ICU engine the rules were written for.
    const QRegularExpression pattern(QStringLiteral("\\b") + QString::fromStdString(name) +
                                         QStringLiteral("\\s*=\\s*\"([^\"]*)\""),
                                     QRegularExpression::UseUnicodePropertiesOption);
    if (!pattern.isValid())
        return std::nullopt;
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    if (!match.hasMatch() || match.lastCapturedIndex() < 1)
        return std::nullopt;
    return match.captured(1).toStdString();
}

std::optional<double> SVGRasterizer::lengthInPoints(const std::optional<std::string> &value)
{
    if (!value)
        return std::nullopt;
    const QString trimmed = trimSpaces(QString::fromStdString(*value));
    qsizetype run = 0;
    while (run < trimmed.size() && QStringLiteral("0123456789.eE+-").contains(trimmed[run]))
        ++run;
    const auto number = wholeNumber(trimmed.left(run).toStdString());
    if (!number)
        return std::nullopt;
    return trimmed.endsWith(QStringLiteral("in")) ? *number * 72 : *number;
}

SVGRasterizer::Size SVGRasterizer::naturalSize(const std::string &markup)
{
    if (const auto viewBox = attribute("viewBox", markup)) {
        std::vector<double> numbers;
        for (const auto &piece : splitAtSpacesAndCommas(*viewBox)) {
            if (const auto number = wholeNumber(piece))
                numbers.push_back(*number);
        }
        if (numbers.size() == 4 && numbers[2] > 0 && numbers[3] > 0)
            return {numbers[2], numbers[3]};
    }
    if (const auto width = lengthInPoints(attribute("width", markup))) {
        const auto height = lengthInPoints(attribute("height", markup));
        if (height && *width > 0 && *height > 0)
            return {*width, *height};
    }
    return {612, 792};
}

SVGRasterizer::Size SVGRasterizer::scaledToPixels(Size natural)
{
    double scale = 2000 / std::max(natural.width, natural.height);
    scale = scale < 2 ? 2 : std::min(scale, 40.0);
    return {std::round(natural.width * scale), std::round(natural.height * scale)};
}

void SVGRasterizer::setDrawer(Drawer replacement)
{
    drawer() = replacement ? std::move(replacement) : Drawer(RsvgRenderer::renderPNG);
}

void SVGRasterizer::renderPNG(const std::string &svg, Completion done)
{
    const auto reject = [&done](const char *why) { done(std::make_exception_ptr(Failure(why))); };
    if (!isUTF8(svg))
        return reject("not valid SVG");
    const auto start = svg.find("<svg");
    if (start == std::string::npos)
        return reject("not valid SVG");
    std::string markup = svg.substr(start);
    pixelSize = scaledToPixels(naturalSize(markup));
    const double w = pixelSize.width;
    const double h = pixelSize.height;
    if (!std::isfinite(w) || !std::isfinite(h) || w > maxSide || h > maxSide || w * h > maxPixels)
        return reject("image too large");
    if (w < 1 || h < 1)
        return reject("snapshot failed"); // nothing to draw on

    completion = std::move(done);
    auto self = shared_from_this();
    active.insert(self);
    QThreadPool::globalInstance()->start([self, markup = std::move(markup), w, h] {
        Result result = std::exception_ptr();
        try {
            result = drawer()(markup, static_cast<int>(w), static_cast<int>(h));
        } catch (...) {
            result = std::make_exception_ptr(Failure("snapshot failed"));
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [self, result] { self->finish(result); }, Qt::QueuedConnection);
    });
}

void SVGRasterizer::finish(Result result)
{
    if (auto stored = std::exchange(completion, nullptr))
        stored(std::move(result));
    active.erase(shared_from_this()); // may release this object: nothing after it
}
