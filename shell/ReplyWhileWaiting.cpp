#include "shell/ReplyWhileWaiting.h"

#include "platform/Localization.h"
#include "platform/ui/Waiting.h"

#include <memory>

std::optional<BRVHelperMessager::Reply> replyWhileWaiting(std::int64_t message)
{
    const auto reply = std::make_shared<std::optional<BRVHelperMessager::Reply>>();
    const bool isThere =
        platform::ui::waitFor(platform::localizedString("Waiting for the background scheduler…"), [reply, message] {
            *reply = BRVHelperMessager::sharedMessager()->sendSynchronousMessage(message);
        });
    return isThere ? std::move(*reply) : std::nullopt;
}
