#include "MainWindow.h"

#include "AppDelegate.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace fs = std::filesystem;

namespace {

enum Column { inputColumn, versionColumn, outputColumn, statusColumn };
constexpr int outputPathRole = Qt::UserRole + 1;

QString nameOf(const QString &path)
{
    return QFileInfo(path).fileName();
}

} // namespace

MainWindow::MainWindow(AppDelegate &delegate) : delegate(delegate)
{
    setWindowTitle(QStringLiteral("Quillmorph"));
    setAcceptDrops(true);
    resize(720, 420);

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    auto *dropArea = new QLabel(tr("Drop WordPerfect documents and graphics, or office documents, here.\n"
                                   "Each is converted beside the original."),
                                central);
    dropArea->setObjectName(QStringLiteral("dropArea"));
    dropArea->setAlignment(Qt::AlignCenter);
    dropArea->setMinimumHeight(110);
    dropArea->setStyleSheet(QStringLiteral("QLabel#dropArea { border: 2px dashed palette(mid); border-radius: 8px; "
                                           "color: palette(dark); padding: 12px; }"));
    layout->addWidget(dropArea);

    list = new QTreeWidget(central);
    list->setObjectName(QStringLiteral("conversionList"));
    list->setHeaderLabels({tr("File"), tr("Version"), tr("Output"), tr("Status")});
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->header()->setStretchLastSection(true);
    list->setColumnWidth(inputColumn, 200);
    list->setColumnWidth(versionColumn, 150);
    list->setColumnWidth(outputColumn, 170);
    connect(list, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item) { showAgain(item); });
    layout->addWidget(list, 1);
    setCentralWidget(central);

    buildMenu();
    connect(&delegate, &AppDelegate::conversionStarted, this, &MainWindow::addConversion);
    connect(&delegate, &AppDelegate::conversionFinished, this, &MainWindow::finishConversion);
}

void MainWindow::buildMenu()
{
    const QString name = QString::fromStdString(delegate.appName);
    QMenu *appMenu = menuBar()->addMenu(name);
    appMenu->addAction(tr("About %1").arg(name), this, &MainWindow::showAbout);
    appMenu->addSeparator();
    QAction *settingsAction = appMenu->addAction(QStringLiteral("Settings\u2026"), &delegate, &AppDelegate::showSettings);
    settingsAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    appMenu->addSeparator();
    QAction *quitAction = appMenu->addAction(tr("Quit %1").arg(name), &delegate, &AppDelegate::quit);
    quitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu *fileMenu = menuBar()->addMenu(tr("File"));
    QAction *openAction = fileMenu->addAction(QStringLiteral("Open\u2026"), &delegate, &AppDelegate::chooseAndConvert);
    openAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    fileMenu->addSeparator();
    // Closing the main window is quitting; the other windows close themselves.
    QAction *closeAction = fileMenu->addAction(tr("Close"), this, &QWidget::close);
    closeAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));

    QMenu *helpMenu = menuBar()->addMenu(tr("Help"));
    QAction *helpAction = helpMenu->addAction(tr("%1 Help").arg(name), &delegate, &AppDelegate::showHelp);
    helpAction->setShortcut(QKeySequence(Qt::Key_F1));
}

void MainWindow::showAbout()
{
    QMessageBox::about(this, tr("About Quillmorph"),
                       tr("<b>Quillmorph</b> %1<p>Rescues WordPerfect documents and graphics, and writes "
                          "WordPerfect 6 and 5.1 from today's office formats.</p>")
                           .arg(QStringLiteral(QUILLMORPH_VERSION)));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    delegate.quit();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    std::vector<fs::path> paths;
    for (const QUrl &url : event->mimeData()->urls()) {
        if (url.isLocalFile())
            paths.emplace_back(url.toLocalFile().toStdString());
    }
    if (paths.empty())
        return;
    event->acceptProposedAction();
    delegate.applicationOpen(paths);
}

void MainWindow::addConversion(quint64 id, const QString &input, const QString &output, const QString &family)
{
    auto *item = new QTreeWidgetItem(list);
    item->setText(inputColumn, nameOf(input));
    item->setToolTip(inputColumn, input);
    item->setText(versionColumn, family);
    item->setText(outputColumn, nameOf(output));
    item->setToolTip(outputColumn, output);
    item->setData(outputColumn, outputPathRole, output);
    item->setText(statusColumn, QStringLiteral("Converting\u2026"));
    rows.insert(id, item);
    list->scrollToItem(item);
}

void MainWindow::finishConversion(quint64 id, bool succeeded, const QString &reason)
{
    QTreeWidgetItem *item = rows.value(id);
    if (!item)
        return;
    if (!succeeded) {
        item->setText(statusColumn, tr("Failed \u2014 %1").arg(reason));
        item->setToolTip(statusColumn, reason);
        return;
    }
    item->setText(statusColumn, QString());
    auto *show = new QPushButton(tr("Done \u2014 Show"), list);
    show->setFlat(true);
    show->setToolTip(tr("Show the converted file in the file manager"));
    connect(show, &QPushButton::clicked, this, [this, item] { showAgain(item); });
    list->setItemWidget(item, statusColumn, show);
}

void MainWindow::showAgain(QTreeWidgetItem *item)
{
    if (!list->itemWidget(item, statusColumn))
        return; // only finished conversions have a file to show
    delegate.revealAgain(fs::path(item->data(outputColumn, outputPathRole).toString().toStdString()));
}
