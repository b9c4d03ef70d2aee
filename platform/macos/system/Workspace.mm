#include "platform/Workspace.h"

#include "platform/macos/system/Foundation.h"

#import <AppKit/AppKit.h>
#include <csignal>

namespace platform {

namespace {

class RunningProgram final : public LaunchedProgram {
public:
    explicit RunningProgram(NSRunningApplication* program) : _program(program) { }

    bool sendSignal(int number) override
    {
        const pid_t process = _program.processIdentifier;
        return !_program.terminated && process > 0 && ::kill(process, number) == 0;
    }

private:
    NSRunningApplication* _program;
};

} // namespace

bool openURL(const std::string& url)
{
    @autoreleasepool {
        NSURL* const target = [NSURL URLWithString:foundation::string(url)];
        return target && [NSWorkspace.sharedWorkspace openURL:target];
    }
}

bool openFile(const std::string& path)
{
    @autoreleasepool {
        return [NSWorkspace.sharedWorkspace openURL:[NSURL fileURLWithPath:foundation::string(path)]];
    }
}

// What replaces this call does not say in time which process it was, and is not on the older systems.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
Result<std::shared_ptr<LaunchedProgram>> launchProgram(const std::string& path)
{
    @autoreleasepool {
        NSError* failure = nil;
        NSRunningApplication* const program =
            [NSWorkspace.sharedWorkspace launchApplicationAtURL:[NSURL fileURLWithPath:foundation::string(path)]
                                                        options:NSWorkspaceLaunchAsync
                                                  configuration:@{ }
                                                          error:&failure];
        if (!program)
            return std::unexpected(foundation::error(failure));
        return std::make_shared<RunningProgram>(program);
    }
}

#pragma clang diagnostic pop

} // namespace platform
