#include "platform/ui/SavePanel.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/WindowNative.h"

namespace platform::ui {

namespace {

SavePanel::Choice choiceOf(NSSavePanel* panel)
{
    SavePanel::Choice choice{foundation::string(panel.URL.path), {}};
    for (NSString* const name in panel.tagNames)
        choice.tagNames.push_back(foundation::string(name));
    return choice;
}

} // namespace

void SavePanel::beginSheet(const std::shared_ptr<Window>& window,
                           std::function<void(std::optional<Choice>)> completion) const
{
    NSMutableArray* const types = [NSMutableArray array];
    for (const std::string& type : _allowedFileTypes)
        [types addObject:foundation::string(type)];
    NSSavePanel* const panel = [NSSavePanel savePanel];
    panel.allowedFileTypes = types;
    panel.nameFieldStringValue = foundation::string(_name);
    panel.showsTagField = YES;
    [panel beginSheetModalForWindow:window->native().window
                  completionHandler:^(NSModalResponse response) {
                      if (completion)
                          completion(response == NSModalResponseOK ? std::optional(choiceOf(panel)) : std::nullopt);
                  }];
}

} // namespace platform::ui
