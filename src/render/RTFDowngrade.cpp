#include "RTFDowngrade.h"

#include "richtext/CodePages.h"

#include <QRegularExpression>
#include <QStringDecoder>
#include <QStringEncoder>

#include <array>
#include <optional>

namespace RTFDowngrade {
namespace {

// Patterns keep their ICU meaning: with Unicode properties on, \d is any
// decimal digit as ICU has it, not only 0-9.
QRegularExpression pattern(const char *source)
{
    QRegularExpression expression(QString::fromLatin1(source),
                                  QRegularExpression::UseUnicodePropertiesOption);
    expression.optimize();
    return expression;
}

std::optional<QString> decode(const std::string &bytes)
{
    // A leading BOM stays a character, so bytes we do not change come out as
    // they went in; stateless, so a sequence cut off at the end is an error.
    QStringDecoder utf8(QStringConverter::Utf8,
                        QStringConverter::Flag::ConvertInitialBom | QStringConverter::Flag::Stateless);
    QString text = utf8.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    if (!utf8.hasError())
        return text;
    // Every byte is a Latin-1 character, so this reading cannot fail.
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

std::optional<std::string> encode(const QString &text)
{
    QStringEncoder utf8(QStringConverter::Utf8);
    const QByteArray bytes = utf8.encode(text);
    if (utf8.hasError())
        return std::nullopt;
    return bytes.toStdString();
}

QString macEscape(int windowsByte, int *unmapped)
{
    const auto character = richtext::CodePages::fromWindows1252(static_cast<std::uint8_t>(windowsByte));
    const auto macByte = character ? richtext::CodePages::toMacRoman(*character) : std::nullopt;
    if (!macByte) {
        if (unmapped)
            ++*unmapped;
        return QStringLiteral("\\'3f");
    }
    return QStringLiteral("\\'%1").arg(*macByte, 2, 16, QLatin1Char('0'));
}

QString remapToMacRoman(const QString &text, int *unmapped)
{
    static const QRegularExpression escape = pattern(R"(\\'([0-9a-fA-F]{2}))");
    // All matches are found on the unchanged text. Building the result front
    // to back gives what replacing back to front in place would, in one pass.
    QString result;
    result.reserve(text.size());
    qsizetype copied = 0;
    for (auto matches = escape.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const int value = match.capturedView(1).toInt(nullptr, 16);
        if (value < 0x80)
            continue;
        result += QStringView(text).mid(copied, match.capturedStart() - copied);
        result += macEscape(value, unmapped);
        copied = match.capturedEnd();
    }
    result += QStringView(text).mid(copied);

    result.replace(QStringLiteral("\\ansi\\ansicpg1252"), QStringLiteral("\\mac"));
    result.replace(QStringLiteral("\\ansicpg1252"), QString());
    result.replace(QStringLiteral("\\ansi"), QStringLiteral("\\mac"));
    return result;
}

} // namespace

std::string classic(const std::string &rtf, Charset charset, int *unmapped)
{
    std::optional<QString> text = decode(rtf);
    if (!text)
        return rtf;

    static const std::array<QRegularExpression, 9> removals = {
        pattern(R"(\{\\\*\\[^{}]*\})"),
        pattern(R"(\\cocoartf-?\d+)"),
        pattern(R"(\\cocoatextscaling\d+)"),
        pattern(R"(\\cocoaplatform\d+)"),
        pattern(R"(\\partightenfactor\d+)"),
        pattern(R"(\\pardirnatural)"),
        pattern(R"(\\pardeftab\d+)"),
        pattern(R"(\\deftab\d+)"),
        pattern(R"(\{\\\*\})"),
    };
    for (const QRegularExpression &removal : removals)
        text->remove(removal);

    if (charset == Charset::mac)
        *text = remapToMacRoman(*text, unmapped);

    return encode(*text).value_or(rtf);
}

} // namespace RTFDowngrade
