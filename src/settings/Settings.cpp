#include "Settings.h"

Settings &Settings::shared()
{
    // The native format on Linux is an INI file in the user's config folder.
    static Settings instance(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                                         QStringLiteral("Quillmorph"),
                                                         QStringLiteral("Quillmorph")));
    return instance;
}

Settings::Settings(std::unique_ptr<QSettings> store) : store(std::move(store)) {}

template <typename Choice> Choice Settings::read(const QString &key) const
{
    // Another process (the settings window of a running app) may have written.
    store->sync();
    const auto overridden = overrides.find(key);
    const QByteArray raw =
        (overridden != overrides.end() ? overridden->second : store->value(key).toString()).toUtf8();
    const auto [first, second] = allCases<Choice>();
    return raw == QByteArray(rawValue(second).data(), qsizetype(rawValue(second).size())) ? second : first;
}

DocTarget Settings::documentTarget() const
{
    return read<DocTarget>(documentTargetKey);
}

GraphicTarget Settings::graphicTarget() const
{
    return read<GraphicTarget>(graphicTargetKey);
}

WPTarget Settings::wordPerfectTarget() const
{
    return read<WPTarget>(wordPerfectTargetKey);
}

RTFCharset Settings::rtfCharset() const
{
    return read<RTFCharset>(rtfCharsetKey);
}
