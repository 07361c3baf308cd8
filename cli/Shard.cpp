#include "Shard.h"

#include <QCryptographicHash>

#include <charconv>

namespace fs = std::filesystem;

namespace {

std::optional<std::uint32_t> wholeNumber(std::string_view text)
{
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace

std::optional<Shard> Shard::parse(std::string_view text)
{
    const auto slash = text.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const auto index = wholeNumber(text.substr(0, slash));
    const auto count = wholeNumber(text.substr(slash + 1));
    if (!index || !count || *index < 1 || *index > *count)
        return std::nullopt;
    return Shard{*index, *count};
}

fs::path Shard::keyOf(const fs::path &file, const fs::path &argument)
{
    const fs::path normalFile = file.lexically_normal();
    const fs::path normalArgument = argument.lexically_normal();
    if (normalFile == normalArgument)
        return normalFile.filename();
    const fs::path relative = normalFile.lexically_relative(normalArgument);
    if (relative.empty() || *relative.begin() == "..")
        return normalFile.filename(); // not under the argument: its name decides
    return relative;
}

std::uint32_t Shard::of(const fs::path &key, std::uint32_t count)
{
    const std::string bytes = key.generic_string();
    const QByteArray digest = QCryptographicHash::hash(
        QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())), QCryptographicHash::Sha256);
    std::uint64_t value = 0;
    for (int i = 0; i < 8; ++i)
        value = (value << 8) | static_cast<unsigned char>(digest[i]);
    return static_cast<std::uint32_t>(value % std::max<std::uint32_t>(1, count)) + 1;
}
