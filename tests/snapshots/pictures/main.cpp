// Saves what the local snapshots window looks like, for people to judge: listing, empty, refused, without volumes;
// light and dark.

#include "platform/linux/ui/DataTable.h"
#include "tests/platform/ui/User.h"
#include "tests/snapshots/support/BrowserTest.h"

#include <cerrno>
#include <cstdio>
#include <QApplication>
#include <QDir>

namespace {

void photograph(const QDir& folder, const QString& name)
{
    user::runEvents();
    for (auto* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QStringLiteral("localSnapshotsWindow"))
            window->grab().save(folder.filePath(name + QStringLiteral(".png")));
    }
}

scripted::snapshots::Snapshots listing()
{
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
        names.push_back(".brevane-snapshots/2026-11-21-" + std::to_string(100000 + i * 17));
    names[3] =
        "home/somebody/a folder with a rather long name/and another folder in it/before the upgrade of everything";
    auto snapshots = snapshotsNamed(names);
    for (std::uint64_t i = 0; i < 40; i += 2)
        snapshots.sizes[256 + i] = (i + 1) * (i + 1) * 7'654'321;
    return snapshots;
}

void photographAll(const QDir& folder, const QString& prefix)
{
    const auto show = [&](const char* name, const scripted::snapshots::Snapshots* snapshots) {
        BrowserTest test;
        if (snapshots) {
            scripted::volumes::add({.path = "/", .name = "Linux"});
            scripted::volumes::add({.path = "/media/disk", .name = "Backup Disk", .icon = "drive-removable-media-usb"});
            scripted::snapshots::set("/", *snapshots);
        }
        test.open();
        if (snapshots && !snapshots->answers.empty())
            user::press(test.control<platform::ui::TableView>("snapshotsTable"), user::Key::Home);
        photograph(folder, prefix + QString::fromLatin1(name));
    };
    const auto listed = listing();
    const scripted::snapshots::Snapshots empty;
    const scripted::snapshots::Snapshots refused{.answers = {}, .sizes = {}, .refusal = EPERM};
    show("list", &listed);
    show("empty", &empty);
    show("refused", &refused);
    show("no-volume", nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const user::Session session(argc, argv);
    const QDir folder(argc == 2 ? QString::fromLocal8Bit(argv[1]) : QString());
    if (argc != 2 || !folder.mkpath(QStringLiteral("."))) {
        std::fputs("usage: brevane_snapshots_pictures FOLDER\n", stderr);
        return 2;
    }
    photographAll(folder, QStringLiteral("light-"));
    QPalette dark(QColor(53, 53, 53));
    dark.setColor(QPalette::Base, QColor(25, 25, 25));
    dark.setColor(QPalette::Highlight, QColor(61, 126, 217));
    QApplication::setPalette(dark);
    photographAll(folder, QStringLiteral("dark-"));
    return 0;
}
