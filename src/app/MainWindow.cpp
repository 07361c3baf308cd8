#include "MainWindow.h"

#include "AppDelegate.h"
#include "StatusDelegate.h"
#include "settings/Settings.h"

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
#include <QSettings>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace fs = std::filesystem;

namespace {

constexpr int outputPathRole = Qt::UserRole + 1;
constexpr int stateRole = Qt::UserRole + 3;
constexpr int lossyRole = Qt::UserRole + 4; // done, but the output could not carry everything
enum State { converting, done, failed, skipped, waiting };
const QString columnsKey = QStringLiteral("MainWindow/listColumns");

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
    dropArea->setStyleSheet(
        QStringLiteral("QLabel#dropArea { border: 2px dashed palette(mid); border-radius: 8px; "
                       "color: palette(dark); padding: 12px; }"));
    layout->addWidget(dropArea);

    list = new QTreeWidget(central);
    list->setObjectName(QStringLiteral("conversionList"));
    list->setHeaderLabels({tr("File"), tr("Kind"), tr("Output"), tr("Status")});
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setTextElideMode(Qt::ElideMiddle); // a long name keeps its start and its extension
    list->setMouseTracking(true);
    auto *status = new StatusDelegate(list);
    list->setItemDelegateForColumn(statusColumn, status);
    connect(status, &StatusDelegate::showClicked, this,
            [this](const QModelIndex &index) { showAgain(list->topLevelItem(index.row())); });
    QHeaderView *header = list->header();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(true);
    list->setColumnWidth(inputColumn, 220);
    list->setColumnWidth(kindColumn, 240);
    list->setColumnWidth(outputColumn, 170);
    // The widths a person chose come back next time.
    QSettings &stored = delegate.settingsStore().defaults();
    header->restoreState(stored.value(columnsKey).toByteArray());
    for (const int column : {inputColumn, kindColumn, outputColumn})
        chosenWidths[column] = header->sectionSize(column);
    connect(header, &QHeaderView::sectionResized, this, [this, &stored](int column, int, int size) {
        if (fitting)
            return;
        if (column < statusColumn)
            chosenWidths[column] = size;
        stored.setValue(columnsKey, list->header()->saveState());
    });
    list->viewport()->installEventFilter(this);
    connect(list, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item) { showAgain(item); });
    layout->addWidget(list, 1);
    totalsLabel = new QLabel(central);
    totalsLabel->setObjectName(QStringLiteral("totals"));
    layout->addWidget(totalsLabel);
    setCentralWidget(central);

    buildMenu();
    connect(&delegate, &AppDelegate::conversionStarted, this, &MainWindow::addConversion);
    connect(&delegate, &AppDelegate::conversionFinished, this, &MainWindow::finishConversion);
    connect(&delegate, &AppDelegate::conversionWaiting, this, &MainWindow::waitForPassword);
    connect(&delegate, &AppDelegate::fileSkipped, this, &MainWindow::skipFile);
}

void MainWindow::buildMenu()
{
    const QString name = QString::fromStdString(delegate.appName);
    QMenu *appMenu = menuBar()->addMenu(name);
    appMenu->addAction(tr("About %1").arg(name), this, &MainWindow::showAbout);
    appMenu->addSeparator();
    QAction *settingsAction =
        appMenu->addAction(QStringLiteral("Settings\u2026"), &delegate, &AppDelegate::showSettings);
    settingsAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    appMenu->addSeparator();
    QAction *quitAction = appMenu->addAction(tr("Quit %1").arg(name), &delegate, &AppDelegate::quit);
    quitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu *fileMenu = menuBar()->addMenu(tr("File"));
    QAction *openAction =
        fileMenu->addAction(QStringLiteral("Open\u2026"), &delegate, &AppDelegate::chooseAndConvert);
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

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == list->viewport() && event->type() == QEvent::Resize)
        fitColumns();
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::fitColumns()
{
    // In a narrow window the status must stay in view: the other columns give up width in
    // proportion, down to a floor, without forgetting the widths the person chose.
    constexpr int statusRoom = 200;
    constexpr int floor = 70;
    const int available = list->viewport()->width() - statusRoom;
    int wanted = 0;
    for (const int column : {inputColumn, kindColumn, outputColumn})
        wanted += chosenWidths[column];
    fitting = true;
    for (const int column : {inputColumn, kindColumn, outputColumn}) {
        const int width = chosenWidths[column];
        list->setColumnWidth(column, wanted <= available || wanted == 0
                                         ? width
                                         : std::max(floor, width * std::max(available, 0) / wanted));
    }
    fitting = false;
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

QTreeWidgetItem *MainWindow::rowFor(quint64 id, const QString &input, const QString &kind)
{
    QTreeWidgetItem *item = rows.value(id);
    if (!item) {
        item = new QTreeWidgetItem(list);
        rows.insert(id, item);
        list->scrollToItem(item);
    }
    item->setText(inputColumn, nameOf(input));
    item->setToolTip(inputColumn, input);
    item->setText(kindColumn, kind);
    item->setToolTip(kindColumn, kind);
    return item;
}

void MainWindow::setState(QTreeWidgetItem *item, int state, const QString &text)
{
    item->setData(statusColumn, stateRole, state);
    item->setData(statusColumn, StatusDelegate::showableRole, state == done);
    item->setText(statusColumn, text);
    item->setToolTip(statusColumn, text);
    if (state == failed || state == skipped) {
        // Nothing was written: no output to name.
        item->setText(outputColumn, QString());
        item->setToolTip(outputColumn, QString());
        item->setData(outputColumn, outputPathRole, QVariant());
    }
    updateTotals();
}

void MainWindow::addConversion(quint64 id, const QString &input, const QString &output, const QString &kind)
{
    QTreeWidgetItem *item = rowFor(id, input, kind);
    item->setText(outputColumn, nameOf(output));
    item->setToolTip(outputColumn, output);
    item->setData(outputColumn, outputPathRole, output);
    item->setData(statusColumn, lossyRole, false);
    setState(item, converting, QStringLiteral("Converting\u2026"));
}

void MainWindow::finishConversion(quint64 id, bool succeeded, const QString &detail)
{
    QTreeWidgetItem *item = rows.value(id);
    if (!item)
        return;
    if (!succeeded)
        setState(item, failed, QStringLiteral("Failed \u2014 ") + detail);
    else if (detail.isEmpty())
        setState(item, done, tr("Done"));
    else {
        item->setData(statusColumn, lossyRole, true);
        setState(item, done, tr("Done, with losses: %1").arg(detail));
    }
}

void MainWindow::waitForPassword(quint64 id)
{
    if (QTreeWidgetItem *item = rows.value(id))
        setState(item, waiting, tr("Waiting for the password"));
}

void MainWindow::skipFile(quint64 id, const QString &input, const QString &kind)
{
    setState(rowFor(id, input, kind), skipped, tr("Skipped"));
}

void MainWindow::updateTotals()
{
    int counts[5] = {};
    int lossy = 0;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *item = list->topLevelItem(i);
        const int state = item->data(statusColumn, stateRole).toInt();
        ++counts[state];
        lossy += state == done && item->data(statusColumn, lossyRole).toBool();
    }
    QString converted = tr("%1 converted").arg(counts[done]);
    if (lossy > 0)
        converted += tr(" (%1 with losses)").arg(lossy);
    QStringList parts{converted, tr("%1 failed").arg(counts[failed])};
    if (counts[skipped] > 0)
        parts << tr("%1 skipped").arg(counts[skipped]);
    if (counts[converting] + counts[waiting] > 0)
        parts << tr("%1 under way").arg(counts[converting] + counts[waiting]);
    totalsLabel->setText(parts.join(QStringLiteral(", ")));
}

void MainWindow::showAgain(QTreeWidgetItem *item)
{
    if (!item || item->data(statusColumn, stateRole).toInt() != done)
        return; // only finished conversions have a file to show
    delegate.revealAgain(fs::path(item->data(outputColumn, outputPathRole).toString().toStdString()));
}
