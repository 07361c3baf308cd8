#pragma once

#include <QObject>

#include <memory>

class QComboBox;
class QWidget;
class Settings;

// The settings window: one pop-up per conversion choice, each change stored
// at once. Made once and kept; closing only hides it.
class SettingsWindowController : public QObject {
    Q_OBJECT
public:
    explicit SettingsWindowController(Settings &settings);
    ~SettingsWindowController() override;

    QWidget *window() const { return windowWidget.get(); }

    // Centres the window on the screen, shows it and makes it active.
    void showCentred();

    QComboBox *docPopUp = nullptr;
    QComboBox *graphicPopUp = nullptr;
    QComboBox *wpPopUp = nullptr;
    QComboBox *charsetPopUp = nullptr;

private:
    void buildContent();
    void docChanged();
    void graphicChanged();
    void wpChanged();
    void charsetChanged();

    Settings &settings;
    std::unique_ptr<QWidget> windowWidget;
};
