#pragma once

#include <QHash>
#include <QMainWindow>

class AppDelegate;
class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

// The one permanent window: the menus, a drop area, and the list of this
// session's conversions. Closing it quits (once conversions are done).
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppDelegate &delegate);

    QTreeWidget *conversionList() const { return list; }
    // "12 converted, 1 failed" under the list.
    QLabel *totals() const { return totalsLabel; }

    enum Column { inputColumn, kindColumn, outputColumn, statusColumn };

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildMenu();
    void addConversion(quint64 id, const QString &input, const QString &output, const QString &kind);
    void finishConversion(quint64 id, bool succeeded, const QString &detail);
    void waitForPassword(quint64 id);
    void skipFile(quint64 id, const QString &input, const QString &kind);
    QTreeWidgetItem *rowFor(quint64 id, const QString &input, const QString &kind);
    void setState(QTreeWidgetItem *item, int state, const QString &text);
    void updateTotals();
    void fitColumns();
    void showAgain(QTreeWidgetItem *item);
    void showAbout();

    AppDelegate &delegate;
    QTreeWidget *list = nullptr;
    QLabel *totalsLabel = nullptr;
    bool fitting = false;
    int chosenWidths[3] = {}; // File, Kind, Output as the person set them
    QHash<quint64, QTreeWidgetItem *> rows;
};
