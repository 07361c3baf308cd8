#pragma once

#include "workflow/Prompter.h"

// Answers the workflow's questions with real widgets: QMessageBox for alerts
// (a masked field for passwords, a check box for suppression) and a
// non-blocking QFileDialog for the open panel.
class WidgetPrompter : public Prompter {
public:
    Answer run(const Alert &alert) override;
    void chooseFiles(std::function<void(std::vector<std::filesystem::path>)> completion) override;
};
