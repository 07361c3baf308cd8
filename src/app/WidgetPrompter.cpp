#include "WidgetPrompter.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace fs = std::filesystem;

namespace {

QString qt(const std::string &text)
{
    return QString::fromStdString(text);
}

// QMessageBox has no accessory view: the field goes into its grid, above the buttons.
QLineEdit *addPasswordField(QMessageBox &box)
{
    auto *field = new QLineEdit(&box);
    field->setObjectName(QStringLiteral("passwordField"));
    field->setEchoMode(QLineEdit::Password);
    field->setPlaceholderText(QStringLiteral("Password"));
    field->setFixedSize(240, 24);
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    auto *buttons = box.findChild<QDialogButtonBox *>();
    if (grid && buttons) {
        int row, column, rowSpan, columnSpan;
        grid->getItemPosition(grid->indexOf(buttons), &row, &column, &rowSpan, &columnSpan);
        grid->removeWidget(buttons);
        grid->addWidget(field, row, 2, 1, 1, Qt::AlignLeft);
        grid->addWidget(buttons, row + 1, column, rowSpan, columnSpan);
    }
    return field;
}

} // namespace

Prompter::Answer WidgetPrompter::run(const Alert &alert)
{
    QMessageBox box;
    box.setWindowTitle(QStringLiteral("Quillmorph"));
    box.setIcon(alert.style == Alert::Style::warning ? QMessageBox::Warning : QMessageBox::Information);
    // File names are shown as they are: "<b>x</b>.wpd" is no markup.
    box.setTextFormat(Qt::PlainText);
    box.setText(qt(alert.message));
    box.setInformativeText(qt(alert.informative));
    if (auto *informative = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_informativelabel")))
        informative->setTextFormat(Qt::PlainText);
    std::vector<QAbstractButton *> buttons;
    for (const auto &title : alert.buttons) {
        // One role for all keeps the buttons in the order they were given.
        QPushButton *button = box.addButton(qt(title), QMessageBox::ActionRole);
        buttons.push_back(button);
        if (title == "Cancel")
            box.setEscapeButton(button);
    }
    if (!buttons.empty()) {
        box.setDefaultButton(static_cast<QPushButton *>(buttons.front()));
        if (buttons.size() == 1)
            box.setEscapeButton(buttons.front());
    }
    QCheckBox *suppression = nullptr;
    if (!alert.suppressionTitle.empty()) {
        suppression = new QCheckBox(qt(alert.suppressionTitle), &box);
        box.setCheckBox(suppression);
    }
    QLineEdit *field = alert.passwordField ? addPasswordField(box) : nullptr;
    if (field)
        QTimer::singleShot(0, field, [field] { field->setFocus(); });

    box.exec();

    Answer answer;
    const auto chosen = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    answer.button = chosen == buttons.end() ? -1 : static_cast<int>(chosen - buttons.begin());
    answer.suppressed = suppression && suppression->isChecked();
    if (field)
        answer.text = field->text().toStdString();
    return answer;
}

void WidgetPrompter::chooseFiles(std::function<void(std::vector<fs::path>)> completion)
{
    auto *panel = new QFileDialog(nullptr, QStringLiteral("Choose files to convert:"));
    panel->setObjectName(QStringLiteral("openPanel"));
    panel->setFileMode(QFileDialog::ExistingFiles);
    panel->setLabelText(QFileDialog::LookIn, QStringLiteral("Choose files to convert:"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(panel, &QFileDialog::finished, panel, [panel, completion](int result) {
        std::vector<fs::path> chosen;
        if (result == QDialog::Accepted) {
            for (const QString &file : panel->selectedFiles())
                chosen.emplace_back(file.toStdString());
        }
        completion(chosen);
    });
    panel->open();
}
