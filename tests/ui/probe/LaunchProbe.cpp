#include "platform/ui/Application.h"

#include <cstdlib>
#include <memory>
#include <string_view>
#include <unistd.h>

using namespace platform::ui;

namespace {

class LaunchedDelegate : public ApplicationDelegate {
public:
    explicit LaunchedDelegate(bool hangs) : _hangs(hangs) { }

    void awakeFromNib() override { }
    void applicationDidFinishLaunching() override
    {
        if (!_hangs)
            _exit(42);
    }
    bool applicationShouldTerminate() override { return true; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    bool applicationDidReopen(bool) override { return false; }

private:
    bool _hangs;
};

} // namespace

// An application: "once" ends it with 42 when it is launched, "hang" never.
int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const bool hangs = argc > 1 && std::string_view(argv[1]) == "hang";
    return applicationMain(argc, argv, [hangs] { return std::make_shared<LaunchedDelegate>(hangs); });
}
