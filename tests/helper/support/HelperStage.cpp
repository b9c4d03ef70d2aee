#include "tests/helper/support/HelperStage.h"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"

#include <chrono>
#include <stdexcept>
#include <thread>

HelperStage::HelperStage(PolkitAuthority::Answer answer)
    : _authority(std::make_unique<PolkitAuthority>()),
      _client(std::make_unique<ZRKXPCClient>(BRVSchedulerServiceName))
{
    answerEverything(answer);
}

void HelperStage::answerEverything(PolkitAuthority::Answer answer)
{
    for (const auto* right : {BRVRightModifySettings1, BRVRightModifySettings2, BRVRightUninstall})
        _authority->setAnswer(right, answer);
}

void HelperStage::launch(const ChildProcess::Arguments& command, const ChildProcess::Environment& environment)
{
    _program.reset();
    _program = std::make_unique<ChildProcess>(command, environment);
}

void HelperStage::start(const ChildProcess::Arguments& command, const ChildProcess::Environment& environment)
{
    launch(command, environment);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!_client->sendSynchronousXPCMessage({{"message", BRVMessageGetAutoUpdates}})) {
        if (!_program->isRunning() || std::chrono::steady_clock::now() > end)
            throw std::runtime_error("the helper does not serve");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}
