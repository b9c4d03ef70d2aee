#include "platform/ui/SavePanel.h"

#include "platform/linux/ui/dialogs/SavePanelDialog.h"
#include "platform/linux/ui/windows/WindowNative.h"

#include <QApplication>

namespace platform::ui {

void SavePanel::beginSheet(const std::shared_ptr<Window>& window,
                           std::function<void(std::optional<Choice>)> completion) const
{
    QStringList types;
    for (const auto& type : _allowedFileTypes)
        types += QString::fromStdString(type);
    auto* const dialog = new SavePanelDialog(types, QString::fromStdString(_name), window->native().window.get());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    // Later, so that the completion finds the window free for another sheet.
    QObject::connect(dialog, &QDialog::finished, qApp, [dialog, completion = std::move(completion)](int result) {
        std::optional<Choice> choice;
        if (result == QDialog::Accepted && !dialog->selectedFiles().isEmpty()) {
            choice.emplace(dialog->selectedFiles().first().toStdString());
            for (const auto& name : dialog->tagNames())
                choice->tagNames.push_back(name.toStdString());
        }
        QMetaObject::invokeMethod(qApp, [completion, choice] { completion(choice); }, Qt::QueuedConnection);
    });
    dialog->open();
}

} // namespace platform::ui
