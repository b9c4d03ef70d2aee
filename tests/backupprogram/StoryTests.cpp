#include "backupprogram/BRVBackupProgramController.h"
#include "diagnostics/log/ZRKLog.h"
#include "tests/helper/support/HelperStage.h"
#include "tests/platform/ui/User.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <string>
#include <unistd.h>

TEST_SUITE_BEGIN("windows");

namespace {

constexpr const char* borg = "/usr/bin/borg";
constexpr int limit = 60000; // milliseconds

template <class Widget>
Widget& widget(const char* name)
{
    for (auto* const window : QApplication::topLevelWidgets()) {
        auto* const found = window->objectName() == QStringLiteral("backupProgramWindow")
            ? window->findChild<Widget*>(QLatin1String(name))
            : nullptr;
        if (found)
            return *found;
    }
    throw std::logic_error(std::string("There is no ") + name);
}

bool waitFor(const std::function<bool()>& condition)
{
    return user::runEventsUntil(condition, limit);
}

void enter(const char* field, const std::string& text)
{
    auto& line = widget<QLineEdit>(field);
    line.setFocus();
    line.selectAll();
    QTest::keyClicks(&line, QString::fromStdString(text));
}

void press(const char* button)
{
    REQUIRE(waitFor([&] { return widget<QPushButton>(button).isEnabled(); }));
    QTest::mouseClick(&widget<QPushButton>(button), Qt::LeftButton);
}

void addFolder(const std::string& path)
{
    press("addFolderButton");
    QFileDialog* dialog = nullptr;
    REQUIRE(waitFor([&] {
        for (auto* const each : QApplication::topLevelWidgets()) {
            if (auto* const found = qobject_cast<QFileDialog*>(each); found && found->isVisible())
                dialog = found;
        }
        return dialog != nullptr;
    }));
    dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(path));
    QTest::keyClick(dialog, Qt::Key_Return);
    REQUIRE(waitFor([] { return widget<QPushButton>("removeFolderButton").isEnabled(); }));
}

std::string result()
{
    const auto& label = widget<QLabel>("testResultLabel");
    return label.isVisible() ? label.text().toStdString() : "";
}

} // namespace

TEST_CASE("a person chooses Borg, is told of a mistake, tries it, and has the file in a real archive")
{
    if (::access(borg, X_OK) != 0) {
        MESSAGE("SKIPPED: borg is not installed");
        return;
    }
    const TemporaryDirectory root;
    const EnvironmentVariable rootVariable("BREVANE_ROOT", root.path());
    const EnvironmentVariable home("HOME", root.file("home"));
    ZRKLogInit("com.zerkolin.brevane", "application");
    root.write("data/letter", "to be kept");
    HelperStage stage(PolkitAuthority::Answer::KeptGrant);
    stage.start({BREVANE_SCHEDULER_HELPER, "--root", root.path()}, {{"BREVANE_ROOT", "/nonexistent"}});

    const auto controller = BRVBackupProgramController::create();
    controller->showWindow();
    auto& programs = widget<QComboBox>("programPopUp");
    REQUIRE(waitFor([&] { return programs.count() >= 9; }));
    const int index = programs.findText(QStringLiteral("Borg"));
    REQUIRE(index > 0);
    programs.setCurrentIndex(index);
    Q_EMIT programs.activated(index);
    addFolder(root.file("data"));
    enter("destinationField", "/etc/backups");
    press("chooseProgramButton");
    REQUIRE(waitFor([] { return widget<QLabel>("programFaultLabel").isVisible(); }));
    CHECK(widget<QLabel>("programFaultLabel").text().startsWith(QStringLiteral("Backups cannot go to a folder")));

    enter("destinationField", root.file("disk/backups"));
    press("chooseProgramButton");
    press("testProgramButton");
    REQUIRE(waitFor([] { return result().starts_with("The test "); }));
    CHECK(result() == "The test succeeded: a backup was made.");
    const ChildProcess::Environment environment{{"BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK", "yes"},
                                                {"BORG_BASE_DIR", root.file("borg")}};
    const auto archive = ChildProcess({borg, "list", "--short", root.file("disk/backups")}, environment).readAll();
    REQUIRE(archive.ends_with('\n'));
    CHECK(ChildProcess({borg, "extract", "--stdout",
                        root.file("disk/backups") + "::" + archive.substr(0, archive.size() - 1),
                        root.file("data/letter").substr(1)},
                       environment)
              .readAll()
          == "to be kept");

    // The folder is gone: the next test says that it failed.
    REQUIRE(::rename(root.file("disk").c_str(), root.file("elsewhere").c_str()) == 0);
    root.write("disk", "no folder");
    press("testProgramButton");
    REQUIRE(waitFor([] { return result().starts_with("The test failed."); }));
}
