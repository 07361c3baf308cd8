#pragma once

#include <QHash>
#include <QMainWindow>

class AppDelegate;
class QTreeWidget;
class QTreeWidgetItem;

// The one permanent window: the menus, a drop area, and the list of this
// session's conversions. Closing it quits (once conversions are done).
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppDelegate &delegate);

    QTreeWidget *conversionList() const { return list; }

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildMenu();
    void addConversion(quint64 id, const QString &input, const QString &output, const QString &family);
    void finishConversion(quint64 id, bool succeeded, const QString &reason);
    void showAgain(QTreeWidgetItem *item);
    void showAbout();

    AppDelegate &delegate;
    QTreeWidget *list = nullptr;
    QHash<quint64, QTreeWidgetItem *> rows;
};
