#include "diagnostics/log/ZRKLog.h"
#include "platform/SystemInformation.h"
#include "shell/BREditorController.h"
#include "shell/selfcheck/SelfCheck.h"
#include "version/ZRKSystemVersionManager.h"

#include <cstdio>
#include <string_view>

namespace {

constexpr const char* usage =
    "usage: brevane [--show WINDOW]\n"
    "       brevane --version|--help|--self-check\n"
    "Decides when automatic backups are made, and tells why when they are not.\n"
    "  --show WINDOW   opens \"activity\" or \"log\" beside the main window, also of a Brevane\n"
    "                  that is open already\n"
    "  --self-check    tries, without the background scheduler, whether the windows and what they\n"
    "                  stand on work here; exits with 1 at the first fault\n"
    "  --version       prints the version\n"
    "  --help          prints this\n";

} // namespace

int main(int argc, char** argv)
{
    const std::string_view only = argc == 2 ? argv[1] : "";
    if (only == "--version") {
        std::printf("Brevane %s\n", platform::bundleVersion().c_str());
        return 0;
    }
    if (only == "--help") {
        std::fputs(usage, stdout);
        return 0;
    }
    if (argc > 1 && std::string_view(argv[1]) == "--self-check")
        return selfcheck::main(argc, argv);
    ZRKLogInit("com.zerkolin.brevane", "application");
    if (ZRKSystemVersionManager::sharedManager().runningAtLeast(2))
        platform::ui::setAutomaticWindowTabbing(false);
    return platform::ui::applicationMain(argc, argv, [] { return BREditorController::create(); });
}
