#include "diagnostics/log/ZRKLog.h"
#include "platform/SystemInformation.h"
#include "shell/BREditorController.h"
#include "version/ZRKSystemVersionManager.h"

#include <cstdio>
#include <string_view>

int main(int argc, char** argv)
{
    if (argc == 2 && std::string_view(argv[1]) == "--version") {
        std::printf("Brevane %s\n", platform::bundleVersion().c_str());
        return 0;
    }
    ZRKLogInit("com.zerkolin.brevane", "application");
    if (ZRKSystemVersionManager::sharedManager().runningAtLeast(2))
        platform::ui::setAutomaticWindowTabbing(false);
    return platform::ui::applicationMain(argc, argv, [] { return BREditorController::create(); });
}
