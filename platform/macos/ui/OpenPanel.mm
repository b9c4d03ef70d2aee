#include "platform/ui/OpenPanel.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/WindowNative.h"

namespace platform::ui {

void OpenPanel::beginSheet(const std::shared_ptr<Window>& window,
                           std::function<void(std::optional<std::string>)> completion) const
{
    NSOpenPanel* const panel = [NSOpenPanel openPanel];
    panel.canChooseDirectories = _kind == Kind::Folder;
    panel.canChooseFiles = _kind == Kind::File;
    panel.canCreateDirectories = _kind == Kind::Folder;
    panel.allowsMultipleSelection = NO;
    if (!_directory.empty())
        panel.directoryURL = [NSURL fileURLWithPath:foundation::string(_directory)];
    [panel beginSheetModalForWindow:window->native().window
                  completionHandler:^(NSModalResponse response) {
                      if (completion)
                          completion(response == NSModalResponseOK ? std::optional(foundation::string(panel.URL.path))
                                                                   : std::nullopt);
                  }];
}

} // namespace platform::ui
