#include "platform/ui/OpenPanel.h"

#include "platform/linux/ui/windows/WindowNative.h"

#include <QApplication>
#include <QFileDialog>

namespace platform::ui {

void OpenPanel::beginSheet(const std::shared_ptr<Window>& window,
                           std::function<void(std::optional<std::string>)> completion) const
{
    auto* const dialog = new QFileDialog(window->native().window.get());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAttribute(Qt::WA_QuitOnClose, false);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setFileMode(_kind == Kind::Folder ? QFileDialog::Directory : QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ShowDirsOnly, _kind == Kind::Folder);
    const auto folder = QString::fromStdString(_directory);
    dialog->setDirectory(QFileInfo(folder).isDir() ? folder : QDir::homePath());
    // Later, so that the completion finds the window free for another sheet.
    QObject::connect(dialog, &QDialog::finished, qApp, [dialog, completion = std::move(completion)](int result) {
        std::optional<std::string> path;
        if (result == QDialog::Accepted && !dialog->selectedFiles().isEmpty())
            path = dialog->selectedFiles().first().toStdString();
        QMetaObject::invokeMethod(qApp, [completion, path] { completion(path); }, Qt::QueuedConnection);
    });
    dialog->open();
}

} // namespace platform::ui
