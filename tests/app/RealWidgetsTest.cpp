#include "TestSupport.h"
#include "app/WidgetPrompter.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace fs = std::filesystem;
using namespace testing_support;

namespace {

// Acts on the modal alert once it is up, as a user would.
void whenAlertShows(std::function<void(QMessageBox *)> act)
{
    QTimer::singleShot(50, [act] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr) << "no alert is showing";
        act(box);
    });
}

QPushButton *buttonTitled(QMessageBox *box, const QString &title)
{
    for (QAbstractButton *button : box->buttons())
        if (button->text() == title)
            return qobject_cast<QPushButton *>(button);
    return nullptr;
}

Prompter::Alert passwordAlert()
{
    Prompter::Alert alert;
    alert.style = Prompter::Alert::Style::informational;
    alert.message = "Letter.wpd is encrypted.";
    alert.informative = "Please enter the password:";
    alert.buttons = {"OK", "Cancel"};
    alert.passwordField = true;
    return alert;
}

} // namespace

TEST(RealWidgets, PasswordAlertTypesIntoAFocusedMaskedField)
{
    WidgetPrompter prompter;
    whenAlertShows([](QMessageBox *box) {
        EXPECT_EQ(box->text(), "Letter.wpd is encrypted.");
        EXPECT_EQ(box->informativeText(), "Please enter the password:");
        EXPECT_EQ(box->icon(), QMessageBox::Information);
        EXPECT_EQ(box->defaultButton(), buttonTitled(box, "OK"));
        auto *field = box->findChild<QLineEdit *>("passwordField");
        ASSERT_NE(field, nullptr);
        EXPECT_EQ(field->echoMode(), QLineEdit::Password);
        EXPECT_EQ(field->placeholderText(), "Password");
        EXPECT_EQ(field->size(), QSize(240, 24));
        // The window manager activates the alert when it gets to it; a busy machine takes longer.
        EXPECT_TRUE(QTest::qWaitFor([field] { return field->hasFocus(); }, 5000));
        QTest::keyClicks(field, "s3cret");
        QTest::keyClick(field, Qt::Key_Return);
    });
    const auto answer = prompter.run(passwordAlert());
    EXPECT_EQ(answer.button, 0);
    EXPECT_EQ(answer.text, "s3cret");
}

TEST(RealWidgets, EscapeCancelsWhateverWasTyped)
{
    WidgetPrompter prompter;
    whenAlertShows([](QMessageBox *box) {
        QTest::keyClicks(box->findChild<QLineEdit *>("passwordField"), "typed");
        QTest::keyClick(box, Qt::Key_Escape);
    });
    EXPECT_EQ(prompter.run(passwordAlert()).button, 1);
}

TEST(RealWidgets, ButtonsKeepTheirOrderAndTheCheckBoxIsReported)
{
    WidgetPrompter prompter;
    Prompter::Alert alert;
    alert.message = "A file named \u201CLetter.odt\u201D already exists.";
    alert.buttons = {"Keep Both", "Replace", "Cancel"};
    alert.suppressionTitle = "Don\u2019t show this again";
    whenAlertShows([](QMessageBox *box) {
        EXPECT_EQ(box->icon(), QMessageBox::Warning);
        QStringList titles;
        for (QAbstractButton *button : box->buttons())
            titles << button->text();
        EXPECT_EQ(titles, (QStringList{"Keep Both", "Replace", "Cancel"}));
        EXPECT_EQ(box->defaultButton(), buttonTitled(box, "Keep Both"));
        ASSERT_NE(box->checkBox(), nullptr);
        EXPECT_EQ(box->checkBox()->text(), "Don\u2019t show this again");
        box->checkBox()->setChecked(true);
        buttonTitled(box, "Replace")->click();
    });
    const auto answer = prompter.run(alert);
    EXPECT_EQ(answer.button, 1);
    EXPECT_TRUE(answer.suppressed);
}

TEST(RealWidgets, OpenPanelReturnsTheChosenFilesWithoutBlocking)
{
    TempDir dir;
    writeFile(dir / "Letter.wpd", "x");
    WidgetPrompter prompter;
    std::optional<std::vector<fs::path>> chosen;
    prompter.chooseFiles([&](std::vector<fs::path> files) { chosen = files; });
    EXPECT_FALSE(chosen) << "the panel does not block";
    auto *panel = qApp->findChild<QFileDialog *>("openPanel");
    if (!panel)
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *dialog = qobject_cast<QFileDialog *>(widget))
                panel = dialog;
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->windowTitle(), "Choose files to convert:");
    EXPECT_EQ(panel->fileMode(), QFileDialog::ExistingFiles);
    panel->setDirectory(QString::fromStdString(dir.path().string()));
    panel->selectFile(QStringLiteral("Letter.wpd"));
    QMetaObject::invokeMethod(panel, "accept"); // as the Open button does
    ASSERT_TRUE(waitUntil([&] { return chosen.has_value(); }));
    EXPECT_EQ(*chosen, std::vector<fs::path>{dir / "Letter.wpd"});
}

// A file may be called "<b>x</b>.wpd": the alert shows those characters, not bold text.
TEST(RealWidgets, NamesAreShownAsTheyAreNotAsMarkup)
{
    WidgetPrompter prompter;
    std::vector<QString> shown;
    whenAlertShows([&shown](QMessageBox *box) {
        for (QLabel *label : box->findChildren<QLabel *>()) {
            if (!label->text().isEmpty() && label->pixmap().isNull()) {
                EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->text().toStdString();
                shown.push_back(label->text());
            }
        }
        box->reject();
    });
    Prompter::Alert alert;
    alert.message = "I could not read <b>x</b>.wpd.";
    alert.informative = "<i>No such file</i>";
    alert.buttons = {"OK"};
    prompter.run(alert);
    EXPECT_NE(std::find(shown.begin(), shown.end(), "I could not read <b>x</b>.wpd."), shown.end());
    EXPECT_NE(std::find(shown.begin(), shown.end(), "<i>No such file</i>"), shown.end());
}
