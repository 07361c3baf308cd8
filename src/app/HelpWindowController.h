#pragma once

#include <QObject>

#include <filesystem>
#include <memory>
#include <optional>

class QTextBrowser;
class QWidget;
class Settings;

// The help window: Help.html from the resources in a resizable window whose
// place and size are kept across runs. Made once; closing only hides it.
class HelpWindowController : public QObject {
    Q_OBJECT
public:
    explicit HelpWindowController(Settings &settings);
    ~HelpWindowController() override;

    QWidget *window() const { return windowWidget.get(); }
    QTextBrowser *webView = nullptr;

    // Shows the window where it was last left and makes it active.
    void showWindow();

    // The installed resources' Help.html, else Resources/Help.html beside the program.
    static std::optional<std::filesystem::path> helpURL();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void loadHelp();

    Settings &settings;
    std::unique_ptr<QWidget> windowWidget;
};
