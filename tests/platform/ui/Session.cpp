#include "platform/linux/system/queues/MainQueue.h"
#include "platform/linux/ui/application/ApplicationInstance.h"
#include "platform/linux/ui/controls/Title.h"
#include "platform/linux/ui/dialogs/AlertBox.h"
#include "platform/linux/ui/menus/MenuItemNative.h"
#include "tests/platform/ui/AlertWatcher.h"

#include <algorithm>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTest>
#include <stdexcept>

using namespace platform::ui;

namespace user {

struct Session::Native {
    Native(int& argc, char** argv) : application(argc, argv)
    {
        application.installEventFilter(&alerts);
        QObject::connect(&mainQueue, &QSocketNotifier::activated, &application, [] { platform::serveMainQueue(); });
        QObject::connect(&application, &ApplicationInstance::terminated, &application, [this] { terminated = true; });
    }

    ApplicationInstance application;
    AlertWatcher alerts;
    QSocketNotifier mainQueue{platform::mainQueueDescriptor(), QSocketNotifier::Read};
    bool terminated = false;
};

namespace {

Session::Native* current = nullptr;

} // namespace

Session::Session(int& argc, char** argv) : _native(std::make_unique<Native>(argc, argv))
{
    current = _native.get();
}

Session::~Session()
{
    current = nullptr;
}

void click(MenuItem& item)
{
    auto& action = *item.native().action;
    if (!action.isVisible())
        throw std::logic_error("\"" + item.identifier() + "\" is hidden");
    auto* const active = QApplication::activeWindow();
    // Opening the menu lets the item's validator speak.
    for (auto* const object : action.associatedObjects()) {
        if (auto* const menu = qobject_cast<QMenu*>(object)) {
            menu->popup({});
            const bool enabled = action.isEnabled();
            menu->hide();
            if (active)
                active->activateWindow(); // as a desktop does
            if (!enabled)
                throw std::logic_error("\"" + item.identifier() + "\" is disabled");
        }
    }
    action.trigger();
}

std::optional<ShownAlert> currentAlert()
{
    const auto* const box = AlertWatcher::front();
    return box ? std::optional(AlertWatcher::describe(*box)) : std::nullopt;
}

namespace {

AlertBox& alertOnScreen()
{
    auto* const box = AlertWatcher::front();
    if (!box)
        throw std::logic_error("No alert is on screen");
    return *box;
}

} // namespace

void answer(int buttonIndex)
{
    AlertWatcher::answer(alertOnScreen(), buttonIndex);
    runEvents();
}

void cancelAlert()
{
    QTest::keyClick(&alertOnScreen(), Qt::Key_Escape);
    runEvents();
}

void answerNextAlert(int buttonIndex)
{
    current->alerts.prepared.push_back({buttonIndex, false});
}

void tickAndAnswerNextAlert(int buttonIndex)
{
    current->alerts.prepared.push_back({buttonIndex, true});
}

void answerEveryAlert(std::function<int(const ShownAlert&)> choose)
{
    current->alerts.choose = std::move(choose);
}

std::size_t preparedAnswers()
{
    return current->alerts.prepared.size();
}

std::vector<ShownAlert> takeAnsweredAlerts()
{
    return std::exchange(current->alerts.answered, {});
}

void launch(const std::shared_ptr<ApplicationDelegate>& delegate)
{
    current->terminated = false;
    current->application.setDelegate(delegate);
    delegate->awakeFromNib();
    delegate->applicationDidFinishLaunching();
}

namespace {

QWidget& windowOnScreen(std::string_view identifier)
{
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->objectName().toStdString() == identifier)
            return *widget;
    }
    throw std::logic_error("No such window is on screen: " + std::string(identifier));
}

} // namespace

std::vector<std::string> windows()
{
    std::vector<std::string> names;
    for (const auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible())
            names.push_back(widget->objectName().toStdString());
    }
    std::ranges::sort(names);
    return names;
}

std::string activeWindow()
{
    runEvents(); // it becomes so with an event
    const auto* const window = QApplication::activeWindow();
    return window ? window->objectName().toStdString() : "";
}

bool isMinimised(std::string_view window)
{
    return windowOnScreen(window).isMinimized();
}

std::vector<std::string> textsIn(std::string_view window)
{
    auto labels = windowOnScreen(window).findChildren<QLabel*>();
    std::ranges::stable_sort(labels, {}, [](const QLabel* label) { return label->y(); });
    std::vector<std::string> texts;
    for (const auto* const label : labels) {
        if (label->isVisible() && !label->text().isEmpty())
            texts.push_back(label->text().toStdString());
    }
    return texts;
}

std::string titleOf(std::string_view window)
{
    return windowOnScreen(window).windowTitle().toStdString();
}

void pressButton(std::string_view window, std::string_view title)
{
    for (auto* const button : windowOnScreen(window).findChildren<QPushButton*>()) {
        if (platform::ui::plainTitle(button->text()) == title) {
            QTest::mouseClick(button, Qt::LeftButton);
            runEvents();
            return;
        }
    }
    throw std::logic_error("There is no button " + std::string(title));
}

void pressKeys(std::string_view window, std::string_view keys)
{
    auto& widget = windowOnScreen(window);
    widget.activateWindow();
    QTest::keySequence(&widget, QKeySequence(QString::fromUtf8(keys.data(), static_cast<qsizetype>(keys.size()))));
    runEvents();
}

void closeWindow(std::string_view identifier)
{
    auto& window = windowOnScreen(identifier);
    // The toolkit tells of the last window only while the application's own loop runs.
    QMetaObject::invokeMethod(
        &window,
        [&window] {
            window.close();
            QCoreApplication::exit();
        },
        Qt::QueuedConnection);
    QCoreApplication::exec();
}

bool didTerminate()
{
    runEvents();
    return current->terminated;
}

} // namespace user
