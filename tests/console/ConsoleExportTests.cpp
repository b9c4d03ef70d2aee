#include "diagnostics/console/RichText.h"
#include "platform/linux/ui/dialogs/SavePanelDialog.h"
#include "platform/ui/TextAppearance.h"
#include "tests/console/ConsoleFixture.h"
#include "tests/platform/ScriptedFiles.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ui/User.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

using namespace platform;
using platform::ui::SavePanelDialog;

namespace {

// The console with one line, and the panel that the export button opens.
struct Exporting : ConsoleFixture {
    Exporting()
    {
        setToolOutput("[" + record("com.zerkolin.brevane", "Error", "caf\u00e9 {x}") + "]");
        show();
    }

    SavePanelDialog& openPanel()
    {
        user::click(*exportButton());
        SavePanelDialog* found = nullptr;
        REQUIRE(user::runEventsUntil(
            [&found] {
                for (auto* const widget : QApplication::topLevelWidgets()) {
                    auto* const panel = qobject_cast<SavePanelDialog*>(widget);
                    if (panel && panel->isVisible())
                        found = panel;
                }
                return found != nullptr;
            },
            5000));
        return *found;
    }

    static QLineEdit& field(SavePanelDialog& panel, const char* name)
    {
        auto* const edit = panel.findChild<QLineEdit*>(QLatin1String(name));
        REQUIRE(edit);
        return *edit;
    }

    // Types the name, replaces what is there if asked, and waits for the outcome.
    void save(const std::string& name, const char* tags = "")
    {
        auto& panel = openPanel();
        field(panel, "fileNameEdit").setText(QString::fromStdString(folder.file(name)));
        field(panel, "tagNamesField").setText(QLatin1String(tags));
        QTest::keyClick(&panel, Qt::Key_Return);
    }

    std::vector<scripted::files::File> writtenFiles()
    {
        CHECK(user::runEventsUntil([] { return !scripted::files::written().empty(); }, 5000));
        return scripted::files::written();
    }

    TemporaryDirectory folder;
};

} // namespace

TEST_CASE("the panel is a sheet of the console and proposes the name of the log")
{
    Exporting fixture;
    auto& panel = fixture.openPanel();
    CHECK(panel.windowModality() == Qt::WindowModal);
    CHECK(panel.parentWidget()->objectName() == "consoleWindow");
    CHECK(Exporting::field(panel, "fileNameEdit").text() == "Brevane Log.rtf");
    CHECK(panel.nameFilters().size() == 2);
    CHECK(panel.labelText(QFileDialog::LookIn) == "Save in:");
    panel.reject();
    user::runEvents();
}

TEST_CASE("a panel that is cancelled writes nothing")
{
    Exporting fixture;
    fixture.openPanel().reject();
    user::runEventsUntil([] { return false; }, 100);
    CHECK(scripted::files::written().empty());
}

TEST_CASE("a name with the extension txt gets plain UTF-8")
{
    Exporting fixture;
    fixture.save("log.txt");
    const auto files = fixture.writtenFiles();
    REQUIRE(files.size() == 1);
    CHECK(files[0].path == fixture.folder.file("log.txt"));
    CHECK(files[0].bytes == fixture.string());
    CHECK(files[0].tagNames.empty());
}

TEST_CASE("the system asks before it ends the application while a file is being saved, and not anymore then")
{
    Exporting fixture;
    const int before = scripted::system::suddenTerminationDisabled();
    fixture.save("log.txt");
    const auto files = fixture.writtenFiles();
    REQUIRE(files.size() == 1);
    CHECK(files[0].isGuarded);
    CHECK(user::runEventsUntil([before] { return scripted::system::suddenTerminationDisabled() == before; }, 5000));
    CHECK(before == 0);
}

TEST_CASE("a name with the extension rtf gets rich text with the font and the colours")
{
    Exporting fixture;
    for (const char* const name : {"log.rtf", "second.RTF"}) {
        scripted::files::reset();
        fixture.save(name);
        const auto files = fixture.writtenFiles();
        REQUIRE(files.size() == 1);
        CHECK(files[0].path == fixture.folder.file(name));
        CHECK(files[0].bytes == richText(*fixture.textView()->textStorage(), ui::userFixedPitchFont()));
        CHECK(files[0].bytes.starts_with("{\\rtf1"));
    }
}

TEST_CASE("a name without one of the extensions gets the chosen one")
{
    Exporting fixture;
    fixture.save("version 1.2");
    CHECK(fixture.writtenFiles().at(0).path == fixture.folder.file("version 1.2.rtf"));
}

TEST_CASE("choosing the other kind of file changes the extension of the name")
{
    Exporting fixture;
    auto& panel = fixture.openPanel();
    panel.selectNameFilter(panel.nameFilters().last());
    Q_EMIT panel.filterSelected(panel.nameFilters().last());
    CHECK(Exporting::field(panel, "fileNameEdit").text() == "Brevane Log.txt");
    panel.reject();
    user::runEvents();
}

TEST_CASE("tags that the user entered are set on the file, and failing at that is no failure")
{
    Exporting fixture;
    fixture.save("log.txt", "backup, Mac ,,");
    CHECK(user::runEventsUntil(
        [] { return !scripted::files::written().empty() && !scripted::files::written()[0].tagNames.empty(); }, 5000));
    CHECK(fixture.writtenFiles().at(0).tagNames == std::vector<std::string>{"backup", "Mac"});
    user::runEvents();
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("what is being saved when the application ends is saved, with its tags")
{
    Exporting fixture;
    scripted::files::setDuration(std::chrono::milliseconds(300));
    fixture.save("log.txt", "backup");
    // The panel's answer comes with the next turn of the main loop; the file comes later.
    user::runEvents();
    CHECK(scripted::files::written().empty());
    const auto text = fixture.string();
    fixture.console.reset();
    REQUIRE(scripted::files::written().size() == 1);
    CHECK(scripted::files::written()[0].bytes == text);
    CHECK(scripted::files::written()[0].tagNames == std::vector<std::string>{"backup"});
}

TEST_CASE("two files that are saved one right after the other are both there, the later one last")
{
    Exporting fixture;
    scripted::files::setDuration(std::chrono::milliseconds(100));
    for (const char* const name : {"one.txt", "two.rtf"}) {
        fixture.save(name);
        user::runEvents();
    }
    fixture.console.reset();
    const auto files = scripted::files::written();
    REQUIRE(files.size() == 2);
    CHECK(files[0].path == fixture.folder.file("one.txt"));
    CHECK(files[1].path == fixture.folder.file("two.rtf"));
}

TEST_CASE("a file that cannot be written is told in a sheet of the console")
{
    Exporting fixture;
    scripted::files::setFailure(Error{
        CocoaErrorDomain,
        513,
        {{LocalizedDescriptionKey, "No."}},
        std::make_shared<Error>(Error{POSIXErrorDomain, 13, {}, nullptr}),
    });
    fixture.save("log.rtf");
    REQUIRE(user::runEventsUntil([] { return user::currentAlert().has_value(); }, 5000));
    const auto alert = *user::currentAlert();
    CHECK(alert.isSheet);
    CHECK(alert.messageText == "No.");
    CHECK(alert.informativeText == "Permission denied");
    for (const auto* const widget : QApplication::topLevelWidgets()) {
        const auto* const box = qobject_cast<const QMessageBox*>(widget);
        CHECK((!box || !box->isVisible() || box->icon() == QMessageBox::Warning));
    }
    CHECK(alert.buttons == std::vector<std::string>{"OK"});
    user::answer(0);
    CHECK(scripted::files::written().empty());
    CHECK(fixture.refreshButton()->isEnabled());
}
