#include "platform/linux/ui/AlertBox.h"
#include "platform/linux/ui/ApplicationInstance.h"
#include "platform/linux/ui/WindowNative.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/TextField.h"
#include "shell/layout/ZRKStackView.h"

#include <cstdio>
#include <QDir>
#include <QMenuBar>
#include <QPainter>

using namespace platform::ui;

namespace {

class Photographer {
public:
    explicit Photographer(QDir folder) : _folder(std::move(folder)) { }

    void operator()(QWidget& widget, const QString& name)
    {
        QApplication::processEvents();
        const auto path = _folder.filePath(name + QStringLiteral(".png"));
        if (!widget.grab().save(path))
            failed = true;
        std::printf("%s\n", qPrintable(path));
    }

    bool failed = false;

private:
    QDir _folder;
};

// The main window, with the rows that a choice of settings calls for.
class MainWindowModel {
public:
    explicit MainWindowModel(const char* editor) : _editor(Interface::load(editor))
    {
        _stack->setOrientation(ZRKStackView::Vertical);
    }

    template <class T>
    std::shared_ptr<T> outlet(const char* identifier) const
    {
        return _interface->outlet<T>(identifier);
    }

    QWidget& show(bool backups, bool advanced, int mode)
    {
        outlet<CheckBox>("backupsCheckBox")->setOn(backups);
        outlet<PopUpButton>("operationModePopUp")->setEnabled(backups);
        outlet<PopUpButton>("operationModePopUp")->selectItemAtIndex(mode);
        outlet<Button>("advancedSettingsButton")->setHidden(!backups);
        ZRKStackView::Views rows{outlet<View>("modeStackView")};
        if (backups) {
            rows.push_back(_editor->view());
            rows.push_back(outlet<View>("suspendStackView"));
            rows.push_back(outlet<View>("allowBatteryCheckBox"));
        }
        if (backups && advanced) {
            outlet<Button>("advancedSettingsButton")->setTitle("Hide Advanced Settings");
            for (const auto* const box : {"dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox",
                                          "dontRunWhenNotNetworkWiredCheckBox"})
                rows.push_back(outlet<View>(box));
        }
        rows.push_back(outlet<View>("snapshotsCheckBox"));
        _stack->setViews(rows);
        _interface->window()->layoutIfNeeded();
        _interface->window()->makeKeyAndOrderFront();
        return *_interface->window()->native().window;
    }

    const Interface& editor() const { return *_editor; }
    const Interface& interface() const { return *_interface; }

private:
    std::unique_ptr<Interface> _interface = Interface::load("MainWindow");
    std::unique_ptr<Interface> _editor;
    std::shared_ptr<ZRKStackView> _stack = ZRKStackView::create(_interface->outlet<View>("stackView"));
};

void photographMainWindow(Photographer& photograph, const QString& prefix)
{
    MainWindowModel interval("BRVIntervalViewController");
    interval.editor().outlet<TextField>("intervalField")->setStringValue("90");
    interval.editor().outlet<Stepper>("intervalStepper")->setIntegerValue(90);
    photograph(interval.show(true, false, 1), prefix + QStringLiteral("interval"));
    photograph(interval.show(true, true, 1), prefix + QStringLiteral("interval-advanced"));
    photograph(interval.show(false, true, 1), prefix + QStringLiteral("off"));
    photograph(interval.show(true, false, 1), prefix + QStringLiteral("on-again"));

    MainWindowModel inactive("BRVWhenInactiveViewController");
    auto& window = inactive.show(true, false, 0);
    photograph(window, prefix + QStringLiteral("when-inactive"));
    for (const auto* const action : static_cast<QMainWindow&>(window).menuBar()->actions()) {
        auto* const menu = action->menu();
        menu->popup({});
        photograph(*menu, prefix + menu->objectName());
        menu->hide();
    }
}

void photographAlerts(Photographer& photograph, const QString& prefix)
{
    AlertBox failure({AlertStyle::Critical,
                      "Failed to apply settings.",
                      "The service com.zerkolin.brevane.scheduler is not available.\n\nYou should try installing the "
                      "latest version available from the web site.",
                      {"Go to Web Site", "Ask for Support", "OK"}},
                     nullptr);
    failure.open();
    photograph(failure, prefix + QStringLiteral("alert-critical"));
    AlertBox notice(
        {AlertStyle::Warning, "Settings applied successfully.", "Brevane will now enforce the new scheduling.", {}},
        nullptr);
    notice.open();
    photograph(notice, prefix + QStringLiteral("alert-notice"));
}

QPalette darkPalette()
{
    QPalette dark(QColor(53, 53, 53));
    dark.setColor(QPalette::Base, QColor(25, 25, 25));
    dark.setColor(QPalette::Highlight, QColor(61, 126, 217));
    dark.setColor(QPalette::Disabled, QPalette::Text, QColor(130, 130, 130));
    dark.setColor(QPalette::Disabled, QPalette::WindowText, QColor(130, 130, 130));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(130, 130, 130));
    return dark;
}

} // namespace

int main(int argc, char** argv)
{
    ApplicationInstance application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: brevane_pictures FOLDER\nQT_SCALE_FACTOR=2 for pictures at twice the size.\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.mkpath(QStringLiteral(".")))
        return 1;
    Photographer photograph(folder);
    for (const bool dark : {false, true}) {
        if (dark)
            QApplication::setPalette(darkPalette());
        const auto prefix = dark ? QStringLiteral("dark-") : QStringLiteral("light-");
        photographMainWindow(photograph, prefix);
        photographAlerts(photograph, prefix);
    }
    return photograph.failed ? 1 : 0;
}
