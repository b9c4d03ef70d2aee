// Does what its standard input says, one command a line, and answers each with one line:
//
//   name              the unique name of the shared bus connection
//   own               whether it may serve the helper's name: "yes" or the reason
//   get               asks the helper for the automatic updates: "ok", or the domains and codes of the error chain
//   watch             asks the helper for the status of backups: the same
//   set               changes them, with an authorization if need be: the same
//   silent            the result code for the first right without interaction
//   ask               the result code for the first right with interaction
//   token NAME        the change again, with a token that names NAME: the same as `get`
//   allow 1|0         whether administrators need no password from now on: the same
//   invalidate        destroys the authorization: "ok"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"
#include "platform/ServiceListener.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>

using platform::Authorization;

namespace {

std::string describe(const platform::Error& error)
{
    std::string text;
    for (const platform::Error* at = &error; at; at = at->underlying.get())
        text += (text.empty() ? "" : " ") + at->domain + " " + std::to_string(at->code);
    return text;
}

std::string describe(const BRVHelperMessager::Reply& reply)
{
    return reply ? "ok" : describe(reply.error());
}

std::string connectionName()
{
    const auto authorization = Authorization::create();
    const auto form = (*authorization)->makeExternalForm();
    if (!form)
        return "none";
    const std::string text(form->begin(), form->end());
    return text.substr(0, text.find('\0'));
}

std::string ownName()
{
    const auto listener = platform::ServiceListener::create(BRVSchedulerServiceName, {[](auto, auto) { }, {}, {}});
    return listener ? "yes" : listener.error();
}

std::string copyRight(unsigned flags)
{
    const auto authorization = Authorization::create();
    return std::to_string((*authorization)->copyRight(BRVRightModifySettings1, std::nullopt, flags));
}

std::string sendWithToken(const std::string& name)
{
    platform::Data token(32, 0);
    std::copy(name.begin(), name.end(), token.begin());
    const auto connection = platform::ServiceConnection::create(BRVSchedulerServiceName, platform::Queue::global(),
                                                                platform::ServiceConnection::Privileged);
    connection->resume();
    const auto payload = platform::binaryPropertyList(platform::Dictionary{{"Enabled", true}});
    const platform::ServiceReply reply =
        connection->sendSynchronously({{"message", BRVMessageSetAutoUpdates}, {"payload", *payload}, {"auth", token}});
    if (!reply)
        return "no reply";
    const auto error = reply->find("error");
    if (error == reply->end())
        return "ok";
    const auto unarchived = platform::unarchivedError(std::get<platform::Data>(error->second), true);
    return unarchived ? describe(*unarchived) : "a damaged error";
}

std::string answer(const std::string& command)
{
    if (command == "name")
        return connectionName();
    if (command == "own")
        return ownName();
    if (command == "get")
        return describe(BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageGetAutoUpdates));
    if (command == "watch")
        return describe(BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageGetStatus));
    if (command == "set")
        return describe(BRVHelperMessager::sharedMessager()->sendSynchronousMessage(
            BRVMessageSetAutoUpdates, platform::Dictionary{{"Enabled", true}}));
    if (command == "silent")
        return copyRight(Authorization::ExtendRights);
    if (command == "ask")
        return copyRight(Authorization::ExtendRights | Authorization::InteractionAllowed);
    if (command.starts_with("token "))
        return sendWithToken(command.substr(6));
    if (command.starts_with("allow "))
        return describe(BRVHelperMessager::sharedMessager()->sendSynchronousMessage(
            BRVMessageSetAllowWithoutPassword, platform::Dictionary{{"Allow", command.ends_with("1")}}));
    if (command != "invalidate")
        return "unknown command";
    ZRKAuthorizationManager::sharedManager().invalidate();
    return "ok";
}

} // namespace

int main()
{
    for (std::string command; std::getline(std::cin, command);) {
        std::puts(answer(command).c_str());
        std::fflush(stdout);
    }
    return 0;
}
