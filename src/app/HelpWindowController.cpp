#include "HelpWindowController.h"

#include "support/Log.h"
#include "settings/Settings.h"
#include "tools/ConversionTools.h"

#include <QEvent>
#include <QShortcut>
#include <QTextBrowser>
#include <QTextDocument>
#include <QUrl>
#include <QVariant>
#include <QVBoxLayout>
#include <QWidget>

namespace fs = std::filesystem;

namespace {

const QString frameKey = QStringLiteral("QuillmorphHelpWindow");

// Help.html gives the usual places of the settings file and the log between
// <!--name--> and <!--/name-->; XDG_CONFIG_HOME and XDG_STATE_HOME move them,
// so the page shown names the files this session really uses.
void fillPlace(QString &page, const QString &name, const QString &path)
{
    const QString open = QStringLiteral("<!--%1-->").arg(name);
    const QString close = QStringLiteral("<!--/%1-->").arg(name);
    const qsizetype start = page.indexOf(open);
    if (start < 0)
        return;
    const qsizetype end = page.indexOf(close, start);
    if (end < 0)
        return;
    page.replace(start, end + close.size() - start, path.toHtmlEscaped());
}

class HelpBrowser : public QTextBrowser {
public:
    HelpBrowser(const Settings &settings, QWidget *parent) : QTextBrowser(parent), settings(settings) {}

    QVariant loadResource(int type, const QUrl &name) override
    {
        QVariant resource = QTextBrowser::loadResource(type, name);
        if (type != QTextDocument::HtmlResource || !resource.isValid())
            return resource;
        // The base class hands back the file's bytes; the page is UTF-8.
        QString page = resource.typeId() == QMetaType::QByteArray ? QString::fromUtf8(resource.toByteArray())
                                                                  : resource.toString();
        fillPlace(page, QStringLiteral("settings-file"), settings.defaults().fileName());
        fillPlace(page, QStringLiteral("log-file"), QString::fromStdString(Log::url().string()));
        return page;
    }

private:
    const Settings &settings;
};

} // namespace

HelpWindowController::HelpWindowController(Settings &settings)
    : settings(settings), windowWidget(std::make_unique<QWidget>())
{
    windowWidget->setWindowTitle(QStringLiteral("Quillmorph Help"));
    webView = new HelpBrowser(settings, windowWidget.get());
    webView->setOpenExternalLinks(true);
    auto *layout = new QVBoxLayout(windowWidget.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(webView);
    windowWidget->resize(720, 820);
    const QByteArray saved = settings.defaults().value(frameKey).toByteArray();
    if (!saved.isEmpty())
        windowWidget->restoreGeometry(saved);
    auto *close = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), windowWidget.get());
    connect(close, &QShortcut::activated, windowWidget.get(), &QWidget::close);
    windowWidget->installEventFilter(this);
    loadHelp();
}

HelpWindowController::~HelpWindowController() = default;

std::optional<fs::path> HelpWindowController::helpURL()
{
    std::error_code error;
    if (const auto resources = ConversionTools::resourcesFolder()) {
        if (fs::is_regular_file(*resources / "Help.html", error))
            return *resources / "Help.html";
    }
    const fs::path beside = ConversionTools::programFolder() / "Resources" / "Help.html";
    if (fs::is_regular_file(beside, error))
        return beside;
    return std::nullopt;
}

void HelpWindowController::loadHelp()
{
    const auto page = helpURL();
    if (!page) {
        webView->setHtml(QStringLiteral(
            "<html><body style='font:16px sans-serif;padding:2em'>Help file not found.</body></html>"));
        return;
    }
    // Pictures and style sheets beside the page load by their relative paths.
    webView->setSearchPaths({QString::fromStdString(page->parent_path().string())});
    webView->setSource(QUrl::fromLocalFile(QString::fromStdString(page->string())));
}

void HelpWindowController::showWindow()
{
    windowWidget->show();
    windowWidget->raise();
    windowWidget->activateWindow();
}

bool HelpWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == windowWidget.get() &&
        (event->type() == QEvent::Move || event->type() == QEvent::Resize || event->type() == QEvent::Hide) &&
        windowWidget->isVisible()) {
        settings.defaults().setValue(frameKey, windowWidget->saveGeometry());
    }
    return QObject::eventFilter(watched, event);
}
