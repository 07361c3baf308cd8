#include "SettingsWindowController.h"

#include "settings/Settings.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWidget>

namespace {

template <typename Choice> void select(QComboBox *popUp, Choice current)
{
    const auto cases = allCases<Choice>();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (cases[i] == current)
            popUp->setCurrentIndex(static_cast<int>(i));
    }
}

template <typename Choice> void store(Settings &settings, const QString &key, const QComboBox *popUp)
{
    const auto cases = allCases<Choice>();
    const int index = popUp->currentIndex();
    if (index < 0 || index >= static_cast<int>(cases.size()))
        return;
    const std::string_view raw = rawValue(cases[static_cast<std::size_t>(index)]);
    settings.defaults().setValue(key, QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size())));
    settings.defaults().sync(); // a companion started next reads it at once
}

QLabel *rowLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

} // namespace

SettingsWindowController::SettingsWindowController(Settings &settings)
    : settings(settings), windowWidget(std::make_unique<QWidget>())
{
    windowWidget->setWindowTitle(QStringLiteral("Settings"));
    windowWidget->setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    windowWidget->setFixedSize(480, 230);
    docPopUp = new QComboBox(windowWidget.get());
    graphicPopUp = new QComboBox(windowWidget.get());
    wpPopUp = new QComboBox(windowWidget.get());
    charsetPopUp = new QComboBox(windowWidget.get());
    auto *close = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), windowWidget.get());
    connect(close, &QShortcut::activated, windowWidget.get(), &QWidget::close);
    buildContent();
}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::buildContent()
{
    QWidget *content = windowWidget.get();
    auto *heading =
        new QLabel(QStringLiteral("Choose what each kind of dropped file is converted to:"), content);
    heading->setWordWrap(true);
    QFont font = heading->font();
    font.setPointSize(12);
    heading->setFont(font);
    heading->setForegroundRole(QPalette::PlaceholderText);

    docPopUp->addItems(
        {QStringLiteral("OpenDocument (.odt)"), QStringLiteral("Rich Text \u2014 classic (.rtf)")});
    graphicPopUp->addItems({QStringLiteral("PNG image (.png)"), QStringLiteral("SVG image (.svg)")});
    wpPopUp->addItems({QStringLiteral("WordPerfect 6+ (.wp6)"), QStringLiteral("WordPerfect 5.1 (.wp5)")});
    charsetPopUp->addItems({QStringLiteral("Windows, DOS & modern apps (ANSI)"),
                            QStringLiteral("WordPerfect for Mac (Mac Roman)")});

    select(docPopUp, settings.documentTarget());
    select(graphicPopUp, settings.graphicTarget());
    select(wpPopUp, settings.wordPerfectTarget());
    select(charsetPopUp, settings.rtfCharset());

    connect(docPopUp, &QComboBox::activated, this, &SettingsWindowController::docChanged);
    connect(graphicPopUp, &QComboBox::activated, this, &SettingsWindowController::graphicChanged);
    connect(wpPopUp, &QComboBox::activated, this, &SettingsWindowController::wpChanged);
    connect(charsetPopUp, &QComboBox::activated, this, &SettingsWindowController::charsetChanged);

    auto *grid = new QGridLayout;
    grid->setVerticalSpacing(12);
    grid->setHorizontalSpacing(10);
    grid->addWidget(rowLabel(QStringLiteral("WordPerfect documents \u2192"), content), 0, 0);
    grid->addWidget(docPopUp, 0, 1);
    grid->addWidget(rowLabel(QStringLiteral("WordPerfect graphics \u2192"), content), 1, 0);
    grid->addWidget(graphicPopUp, 1, 1);
    grid->addWidget(rowLabel(QStringLiteral("ODT, Word, RTF, HTML \u2192"), content), 2, 0);
    grid->addWidget(wpPopUp, 2, 1);
    grid->addWidget(rowLabel(QStringLiteral("Classic RTF character set:"), content), 3, 0);
    grid->addWidget(charsetPopUp, 3, 1);
    grid->setColumnStretch(2, 1);

    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(20, 18, 20, 18);
    layout->setSpacing(18);
    layout->addWidget(heading);
    layout->addLayout(grid);
    layout->addStretch(1);
}

void SettingsWindowController::showCentred()
{
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        QRect frame = windowWidget->frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        windowWidget->move(frame.topLeft());
    }
    windowWidget->show();
    windowWidget->raise();
    windowWidget->activateWindow();
}

void SettingsWindowController::docChanged()
{
    store<DocTarget>(settings, Settings::documentTargetKey, docPopUp);
}

void SettingsWindowController::graphicChanged()
{
    store<GraphicTarget>(settings, Settings::graphicTargetKey, graphicPopUp);
}

void SettingsWindowController::wpChanged()
{
    store<WPTarget>(settings, Settings::wordPerfectTargetKey, wpPopUp);
}

void SettingsWindowController::charsetChanged()
{
    store<RTFCharset>(settings, Settings::rtfCharsetKey, charsetPopUp);
}
