#pragma once

#include "Targets.h"

#include <QSettings>
#include <QString>

#include <map>
#include <memory>

// The user's preferences: the four conversion choices, read anew at every
// call with their fallbacks, and the notice flag. The class has no setters:
// writers use `defaults()` directly with the keys below.
class Settings {
public:
    static inline const QString documentTargetKey = QStringLiteral("documentTarget");
    static inline const QString graphicTargetKey = QStringLiteral("graphicTarget");
    static inline const QString wordPerfectTargetKey = QStringLiteral("wordPerfectTarget");
    static inline const QString rtfCharsetKey = QStringLiteral("rtfCharset");
    static inline const QString hideLibreOfficeNoticeKey = QStringLiteral("hideLibreOfficeNotice");

    // ~/.config/Quillmorph/Quillmorph.conf (or under $XDG_CONFIG_HOME).
    static Settings &shared();

    // A store at another place, for tests.
    explicit Settings(std::unique_ptr<QSettings> store);

    DocTarget documentTarget() const;
    GraphicTarget graphicTarget() const;
    WPTarget wordPerfectTarget() const;
    RTFCharset rtfCharset() const;

    QSettings &defaults() const { return *store; }

    // A value for this process only (the companion's --document-target and
    // kin); the stored preferences are left as they are.
    void overrideForThisRun(const QString &key, const QString &raw) { overrides[key] = raw; }

private:
    template <typename Choice> Choice read(const QString &key) const;

    std::unique_ptr<QSettings> store;
    std::map<QString, QString> overrides;
};
