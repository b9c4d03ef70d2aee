#include "platform/ui/Alert.h"

#include "platform/linux/ui/dialogs/AlertBox.h"
#include "platform/linux/ui/windows/WindowNative.h"

#include <QApplication>

namespace platform::ui {

struct Alert::Native {
    AlertBox::Content content;
};

Alert::Alert() : _native(std::make_unique<Native>()) { }

Alert::~Alert() = default;
Alert::Alert(Alert&&) noexcept = default;
Alert& Alert::operator=(Alert&&) noexcept = default;

void Alert::setStyle(AlertStyle style)
{
    _native->content.style = style;
}

void Alert::setMessageText(const std::string& text)
{
    _native->content.messageText = text;
}

void Alert::setInformativeText(const std::string& text)
{
    _native->content.informativeText = text;
}

void Alert::addButton(const std::string& title)
{
    _native->content.buttons.push_back(title);
}

void Alert::setAccessoryView(const std::shared_ptr<View>& view)
{
    _native->content.accessoryView = view;
}

int Alert::runModal()
{
    AlertBox box(_native->content, QApplication::activeWindow());
    box.exec();
    return box.answer();
}

void Alert::beginSheet(const std::shared_ptr<Window>& window, std::function<void(int)> completion)
{
    auto* const box = new AlertBox(_native->content, window->native().window.get());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    // Later, so that the completion finds the window free for another sheet.
    QObject::connect(box, &QDialog::finished, qApp, [box, completion = std::move(completion)] {
        if (completion)
            QMetaObject::invokeMethod(
                qApp, [completion, answer = box->answer()] { completion(answer); }, Qt::QueuedConnection);
    });
    box->open();
}

} // namespace platform::ui
