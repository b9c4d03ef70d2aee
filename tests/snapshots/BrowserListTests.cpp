#include "platform/ByteCountFormat.h"
#include "platform/DateFormat.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedWorkspace.h"
#include "tests/platform/ui/User.h"
#include "tests/snapshots/support/BrowserTest.h"

#include <cerrno>
#include <chrono>
#include <doctest/doctest.h>
#include <QApplication>
#include <QScrollBar>

using namespace platform::ui;
using namespace scripted;
using Names = std::vector<std::string>;

namespace {

void addVolume(const char* path = "/volume")
{
    volumes::add({.path = path});
}

snapshots::Snapshots refused(int code)
{
    return {.answers = {}, .sizes = {}, .refusal = code};
}

// The text with which the error is logged.
std::vector<std::string> loggedTexts()
{
    std::vector<std::string> texts;
    for (const auto& [type, text] : Logging::unified())
        texts.push_back(text);
    return texts;
}

} // namespace

TEST_CASE("a snapshot is shown with its date, name and size, and with -- for a size that is not known")
{
    BrowserTest test;
    addVolume();
    auto listed = snapshotsNamed({"first", "second"});
    listed.sizes[257] = 1'234'567;
    snapshots::set("/volume", listed);
    test.open();
    auto dates = platform::DateFormat::withStyles(platform::DateStyle::Short, platform::DateStyle::Short);
    platform::ByteCountFormat sizes;
    const auto rows = test.rows();
    REQUIRE(rows.size() == 2);
    CHECK(rows[0] == BrowserTest::Row{dates.stringFromDate(1'795'244'595), "first", "--"});
    CHECK(rows[1]
          == BrowserTest::Row{dates.stringFromDate(1'795'244'655), "second", sizes.stringFromByteCount(1'234'567)});
    CHECK(snapshots::askedSizes() == std::vector<std::uint64_t>{256, 257});
}

TEST_CASE("a size beyond the range of signed numbers is shown")
{
    BrowserTest test;
    addVolume();
    auto listed = snapshotsNamed({"huge"});
    listed.sizes[256] = UINT64_MAX;
    snapshots::set("/volume", listed);
    test.open();
    CHECK(test.rows()[0][2] == platform::ByteCountFormat().stringFromByteCount(UINT64_MAX));
}

TEST_CASE("without its identifier a snapshot's size is not asked for")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume",
                   {.answers = {answerOf({{.name = "name", .creationTime = 5}})}, .sizes = {}, .refusal = 0});
    test.open();
    CHECK(test.names() == Names{"name"});
    CHECK(test.rows()[0][2] == "--");
    CHECK(snapshots::askedSizes().empty());
}

TEST_CASE("records without a name or a date are left out")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume",
                   {.answers = {answerOf({{.objectIdentifier = 1, .creationTime = 5},
                                          {.name = "dateless", .objectIdentifier = 2},
                                          {.name = "whole", .objectIdentifier = 3, .creationTime = 5}})},
                    .sizes = {},
                    .refusal = 0});
    test.open();
    CHECK(test.names() == Names{"whole"});
}

TEST_CASE("the list keeps the order of the file system over several answers")
{
    BrowserTest test;
    addVolume();
    const auto record = [](const char* name, std::int64_t time) {
        return RecordBuilder{.name = name, .objectIdentifier = 1, .creationTime = time};
    };
    snapshots::set("/volume",
                   {.answers = {answerOf({record("z", 30), record("a", 10)}), answerOf({record("m", 20)})},
                    .sizes = {},
                    .refusal = 0});
    test.open();
    CHECK(test.names() == Names{"z", "a", "m"});
}

TEST_CASE("when the reading fails midway, what was read until then is shown and nothing is reported")
{
    BrowserTest test;
    addVolume();
    auto listed = snapshotsNamed({"first"});
    listed.answers.push_back({.count = -1, .bytes = {}});
    listed.answers.push_back(answerOf({{.name = "never", .objectIdentifier = 1, .creationTime = 5}}));
    snapshots::set("/volume", listed);
    test.open();
    CHECK(test.names() == Names{"first"});
    CHECK_FALSE(test.showsRefusal());
    CHECK(Logging::unified().empty());
}

TEST_CASE("a volume without snapshots says so")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", {});
    test.open();
    CHECK(test.rows().empty());
    CHECK(test.placeholder() == "There are no local snapshots on this volume.");
}

TEST_CASE("refused access shows the explanation and its button until access is granted")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", refused(EPERM));
    test.open();
    CHECK(test.showsRefusal());
    CHECK(test.rows().empty());
    CHECK(test.placeholder().empty());
    CHECK(loggedTexts() == Names{"Failed to list snapshots for volume '/volume': Operation not permitted."});
    snapshots::set("/volume", snapshotsNamed({"seen"}));
    test.choose(0);
    CHECK_FALSE(test.showsRefusal());
    CHECK(test.names() == Names{"seen"});
}

TEST_CASE("any other failure leaves the table empty and does not speak of access")
{
    BrowserTest test;
    addVolume();
    for (const int code : {ENOENT, EACCES, EIO}) {
        CAPTURE(code);
        snapshots::set("/volume", refused(code));
        test.open();
        CHECK_FALSE(test.showsRefusal());
        CHECK(test.rows().empty());
        CHECK(test.placeholder() == "The snapshots of this volume could not be listed.");
        test.controller->reloadSnapshots();
    }
    const auto texts = loggedTexts();
    REQUIRE_FALSE(texts.empty());
    CHECK(texts[0] == "Failed to list snapshots for volume '/volume': No such file or directory.");
    CHECK(Logging::unified()[0].first == 16);
}

TEST_CASE("the explanation goes with the volume that refuses it")
{
    BrowserTest test;
    addVolume("/closed");
    addVolume("/open");
    snapshots::set("/closed", refused(EPERM));
    snapshots::set("/open", snapshotsNamed({"a"}));
    test.open();
    CHECK(test.showsRefusal());
    test.choose(1);
    CHECK_FALSE(test.showsRefusal());
    test.choose(0);
    CHECK(test.showsRefusal());
    volumes::unmount("/closed");
    CHECK_FALSE(test.showsRefusal());
    volumes::unmount("/open");
    CHECK_FALSE(test.showsRefusal());
}

TEST_CASE("the error is made, and logged, only for who asks for it")
{
    BrowserTest test;
    addVolume();
    test.open();
    snapshots::set("/volume", refused(EPERM));
    const auto logged = Logging::unified().size();
    CHECK_FALSE(test.controller->snapshotsAtURL("/volume", nullptr));
    CHECK(Logging::unified().size() == logged);
    std::optional<platform::Error> error;
    CHECK_FALSE(test.controller->snapshotsAtURL("/volume", &error));
    REQUIRE(error);
    CHECK(error->domain == "NSPOSIXErrorDomain");
    CHECK(error->code == 1);
    CHECK(*error->userInfo.stringForKey("NSLocalizedDescription")
          == "Failed to list snapshots for volume '/volume': Operation not permitted.");
    CHECK(Logging::unified().size() == logged + 1);
}

TEST_CASE("the records of a snapshot have a size only where it is known")
{
    BrowserTest test;
    test.open();
    auto listed = snapshotsNamed({"without", "with"});
    listed.sizes[257] = 42;
    snapshots::set("/volume", listed);
    const auto found = test.controller->snapshotsAtURL("/volume", nullptr);
    REQUIRE(found);
    REQUIRE(found->size() == 2);
    CHECK(*(*found)[0].stringForKey("Name") == "without");
    CHECK((*found)[0].find("Date")->date()->secondsSinceReferenceDate == 1'795'244'595 - 978'307'200.0);
    CHECK_FALSE((*found)[0].contains("Size"));
    CHECK((*found)[1].integerForKey("Size") == 42);
}

TEST_CASE("the button explains how to grant access and opens the settings")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", refused(EPERM));
    test.open();
    user::click(test.control<Button>("fullDiskAccessButton"));
    const auto alert = user::currentAlert();
    REQUIRE(alert);
    CHECK(alert->isSheet);
    CHECK(alert->messageText == "About Full Disk Access.");
    CHECK(alert->informativeText
          == "You can grant access by adding Brevane in System Preferences > Security & Privacy > Privacy > Full Disk "
             "Access.");
    CHECK(alert->buttons == Names{"Open Security & Privacy", "OK"});
    user::answer(0);
    CHECK(workspace::openedFiles() == Names{"/System/Library/PreferencePanes/Security.prefPane"});
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("OK in the explanation's alert opens nothing")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", refused(EPERM));
    test.open();
    user::click(test.control<Button>("fullDiskAccessButton"));
    user::answer(1);
    CHECK(workspace::openedFiles().empty());
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a desktop without such settings says so")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", refused(EPERM));
    workspace::setOpens(false);
    test.open();
    user::click(test.control<Button>("fullDiskAccessButton"));
    user::answer(0);
    REQUIRE(user::currentAlert());
    CHECK(user::currentAlert()->messageText == "The settings could not be opened.");
    CHECK(user::currentAlert()->informativeText == "Ask an administrator of this computer to list the snapshots.");
    user::answer(0);
}

TEST_CASE("a snapshot that another program tells of appears")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", snapshotsNamed({"a"}));
    test.open();
    snapshots::set("/volume", snapshotsNamed({"a", "b"}));
    notifications::arrive("com.zerkolin.brevane.other");
    CHECK(test.names() == Names{"a"});
    notifications::arrive("com.zerkolin.brevane.snapshot");
    CHECK(test.names() == Names{"a", "b"});
    CHECK(notifications::posted().empty());
}

TEST_CASE("asking again brings the same window forward and asks nothing anew")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", snapshotsNamed({"a"}));
    test.open();
    test.open();
    CHECK(volumes::timesRead() == 1);
    CHECK(snapshots::timesOpened() == 1);
    int windows = 0;
    for (const auto* const widget : QApplication::topLevelWidgets())
        windows += widget->objectName() == QStringLiteral("localSnapshotsWindow");
    CHECK(windows == 1);
}

TEST_CASE("the explanation is red, as the system has it")
{
    for (const platform::OperatingSystemVersion version : {platform::OperatingSystemVersion{10, 9, 5}, {14, 0, 0}}) {
        BrowserTest test(version);
        addVolume();
        snapshots::set("/volume", refused(EPERM));
        test.open();
        const auto& label = *test.control<TextField>("fullDiskAccessTextField").native().widget;
        const auto color = label.palette().color(label.foregroundRole());
        CAPTURE(color.name().toStdString());
        CHECK((color == QColor(Qt::red)) == (version.minor == 9));
        CHECK(color.red() > 150);
        CHECK(color.green() < 100);
    }
}

TEST_CASE("the columns are Date, Name and Size in this order")
{
    BrowserTest test;
    test.open();
    CHECK(test.control<TableView>("snapshotsTable").columnIdentifiers() == Names{"Date", "Name", "Size"});
}

TEST_CASE("a cell of another column is left as the table made it")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", snapshotsNamed({"a"}));
    test.open();
    const auto& table = test.control<TableView>("snapshotsTable");
    const auto cell = test.controller->tableView(table, "Other", 0);
    CHECK(cell.identifier == "Other");
    CHECK(cell.stringValue.empty());
    CHECK(test.controller->tableView(table, "Name", 0).identifier == "Name");
}

TEST_CASE("the keyboard walks the list from its first to its last row and keeps its place over a reload")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", snapshotsNamed({"a", "b", "c"}));
    test.open();
    auto& table = test.control<TableView>("snapshotsTable");
    auto& widget = *table.native().as<DataTable>();
    user::press(table, user::Key::End);
    CHECK(widget.currentIndex().row() == 2);
    user::press(table, user::Key::Up);
    CHECK(widget.currentIndex().row() == 1);
    notifications::arrive("com.zerkolin.brevane.snapshot");
    CHECK(widget.currentIndex().row() == 1);
    user::press(table, user::Key::Home);
    CHECK(widget.currentIndex().row() == 0);
    snapshots::set("/volume", {});
    notifications::arrive("com.zerkolin.brevane.snapshot");
    CHECK_FALSE(widget.currentIndex().isValid());
    user::press(table, user::Key::End);
}

TEST_CASE("the selection follows the snapshot wherever it stands, and goes with it")
{
    BrowserTest test;
    addVolume();
    snapshots::set("/volume", snapshotsNamed({"a", "b", "c"}));
    test.open();
    auto& table = test.control<TableView>("snapshotsTable");
    const auto reloadWith = [&](const std::vector<std::string>& names) {
        std::vector<RecordBuilder> records;
        for (const auto& name : names) // of each name the same date every time
            records.push_back({.name = name, .objectIdentifier = 256, .creationTime = 1'795'244'595 + name[0] * 60});
        snapshots::set("/volume", {.answers = {answerOf(records)}, .sizes = {}, .refusal = 0});
        notifications::arrive("com.zerkolin.brevane.snapshot");
    };
    reloadWith({"a", "b", "c"});
    table.selectRow(1);
    reloadWith({"b", "c", "d"});
    CHECK(table.selectedRow() == 0);
    reloadWith({"a", "b"});
    CHECK(table.selectedRow() == 1);
    reloadWith({"a", "c", "d"});
    CHECK(table.selectedRow() == -1);
    reloadWith({"a", "b", "c"});
    CHECK(table.selectedRow() == -1); // nobody has selected it again
}

TEST_CASE("another volume's list begins at its top with nothing selected, the same one's stays where it was")
{
    BrowserTest test;
    addVolume();
    volumes::Volume other{.path = "/other"};
    volumes::add(other);
    std::vector<std::string> many;
    for (int i = 0; i < 500; ++i)
        many.push_back("snapshot " + std::to_string(i));
    snapshots::set("/volume", snapshotsNamed(many));
    snapshots::set("/other", snapshotsNamed(many));
    test.open();
    auto& table = test.control<TableView>("snapshotsTable");
    auto& bar = *table.native().as<DataTable>()->verticalScrollBar();
    bar.setValue(300);
    notifications::arrive("com.zerkolin.brevane.snapshot");
    CHECK(bar.value() == 300);
    table.selectRow(305);
    notifications::arrive("com.zerkolin.brevane.snapshot");
    CHECK(table.selectedRow() == 305);
    CHECK(bar.value() == 300);
    test.choose(1);
    CHECK(bar.value() == 0);
    CHECK(table.selectedRow() == -1); // though snapshots of the same names and dates are there
    test.choose(0);
    CHECK(bar.value() == 0);
    CHECK(table.selectedRow() == -1);
}

TEST_CASE("of five thousand snapshots only those in sight are asked for their texts")
{
    BrowserTest test;
    addVolume();
    std::vector<std::string> many;
    for (int i = 0; i < 5000; ++i)
        many.push_back("snapshot " + std::to_string(i));
    snapshots::set("/volume", snapshotsNamed(many));
    test.open();
    auto& widget = *test.control<TableView>("snapshotsTable").native().as<DataTable>();
    CHECK(widget.rows().rowCount() == 5000);
    std::size_t asked = 0;
    widget.rows().textOfCell = [&, text = widget.rows().textOfCell](const QString& column, int row) {
        ++asked;
        return text(column, row);
    };
    widget.reload(5000);
    widget.grab();
    CHECK(asked > 0);
    CHECK(asked < 600);
    CHECK(test.names().back() == "snapshot 4999");
}
