#include "tests/update-integration/UpdateMachine.h"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/AtomicFile.h"
#include "platform/Folder.h"
#include "platform/PropertyListCoding.h"
#include "platform/RunningBackup.h"
#include "tests/support/BusOwner.h"
#include "tests/support/FileContent.h"

#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <utility>

namespace files = std::filesystem;
using platform::Dictionary;

namespace {

constexpr const char* python = "/usr/bin/python3";
constexpr const char* testFolder = BREVANE_SOURCE "/tests/update-integration/";

void writeFile(const std::string& path, const std::string& content)
{
    files::create_directories(files::path(path).parent_path());
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    if (!(stream << content).flush())
        throw std::runtime_error("cannot write " + path);
}

void writePropertyList(const std::string& path, const Dictionary& content)
{
    auto bytes = platform::binaryPropertyList(content);
    if (!bytes)
        throw std::runtime_error("no property list");
    writeFile(path, std::string(bytes->begin(), bytes->end()));
}

// The helper without what only a debugger needs.
const std::string& helperContent()
{
    static const auto content = contentOfFile(BREVANE_STRIPPED_HELPER);
    return content;
}

constexpr const char* helperName = "com.zerkolin.brevane.scheduler";
constexpr const char* daemonLink = "Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist";

} // namespace

UpdateMachine::UpdateMachine(Transport transport)
    : _rootVariable("BREVANE_ROOT", root()),
      _home("HOME", file("home")),
      _noProxy("no_proxy", "127.0.0.1"),
      _stage(PolkitAuthority::Answer::Authorized),
      _keyPath(file("key.pem"))
{
    files::create_directories(file("served"));
    startServer(transport);
    publish({"key", _keyPath});
    layOut("1.0");
    writeConfiguration();
}

UpdateMachine::~UpdateMachine()
{
    killHelper();
}

std::vector<pid_t> UpdateMachine::processes() const
{
    std::vector<pid_t> found;
    const std::string argument = std::string(1, '\0') + root() + std::string(1, '\0');
    for (const auto& entry : files::directory_iterator("/proc")) {
        const auto name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        const auto command = platform::readFile(entry.path().string() + "/cmdline").value_or(platform::Data());
        if (std::string(command.begin(), command.end()).contains("--root" + argument))
            found.push_back(static_cast<pid_t>(std::stol(name)));
    }
    return found;
}

// One of them may start another one.
void UpdateMachine::killHelper()
{
    if (_stage.hasProgram())
        helper().kill();
    for (auto left = processes(); !left.empty(); left = processes()) {
        for (const auto process : left)
            ::kill(process, SIGKILL);
    }
}

void UpdateMachine::startServer(Transport transport)
{
    ChildProcess::Arguments arguments{python, "-B", std::string(testFolder) + "server.py", file("served")};
    if (transport != Transport::Plain) {
        outputOf({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days",
                  "2", "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", file("tls.key"),
                  "-out", file("tls.pem")});
        arguments.insert(arguments.end(), {file("tls.pem"), file("tls.key")});
    }
    if (transport == Transport::Trusted)
        _authorities = file("tls.pem");
    _server = std::make_unique<ChildProcess>(arguments);
    auto port = _server->readLine();
    if (!port)
        throw std::runtime_error("the server did not start");
    _url = (transport == Transport::Plain ? "http" : "https") + ("://127.0.0.1:" + *port + "/");
}

std::map<std::string, std::string> UpdateMachine::contentOf(const std::string& version) const
{
    return {
        {helperName, helperContent() + "version " + version},
        {"com.zerkolin.brevane.post-update", "version " + version},
        {"bin/brevane", "#!/bin/sh\necho " + version + " >\"$BREVANE_ROOT/../started\"\n"},
        {"bin/log", "version " + version},
        {"share/text", "the text of version " + version},
        {"share/only-in-" + version + "/file", version},
        {"LaunchDaemons/com.zerkolin.brevane.scheduler.plist", "version " + version},
    };
}

// As the install rules do it: the product, links into it, and the list.
static void layOutBelow(const std::string& root, const std::string& version,
                        const std::map<std::string, std::string>& contents)
{
    const auto product = root + "/Library/Brevane/";
    platform::Array names;
    for (const auto& [name, content] : contents) {
        writeFile(product + name, content);
        const bool isProgram = !name.starts_with("share") && !name.ends_with(".plist");
        files::permissions(product + name, files::perms(isProgram ? 0755 : 0644));
        names.emplace_back(name);
    }
    files::create_symlink("text", product + "share/link");
    names.emplace_back("share/link");
    const std::pair<std::string, std::string> links[] = {
        {daemonLink, "../Brevane/LaunchDaemons/com.zerkolin.brevane.scheduler.plist"},
        {"usr/bin/log", "../../Library/Brevane/bin/log"},
    };
    Dictionary targets;
    for (const auto& [link, target] : links) {
        files::create_directories(files::path(root + "/" + link).parent_path());
        files::remove(root + "/" + link);
        files::create_symlink(target, root + "/" + link);
        targets.set(link, target);
    }
    writePropertyList(product + "installation.plist",
                      {{"Version", version},
                       {"HumanVersion", "Version " + version},
                       {"Files", names},
                       {"Links", targets},
                       {"Folders", platform::Array{"Library/LaunchDaemons", "usr", "usr/bin"}}});
}

void UpdateMachine::layOut(const std::string& version)
{
    files::remove_all(product());
    layOutBelow(root(), version, contentOf(version));
}

std::string UpdateMachine::layoutOf(const std::string& version)
{
    auto layout = file("layout-" + version);
    if (!files::exists(layout))
        layOutBelow(layout, version, contentOf(version));
    return layout;
}

std::string UpdateMachine::wholeVersion() const
{
    auto bytes = platform::readFile(product() + "/installation.plist");
    auto manifest = bytes ? platform::propertyListWithData(*bytes) : platform::Result<platform::PropertyList>();
    const auto* version =
        manifest && manifest->dictionary() ? manifest->dictionary()->stringForKey("Version") : nullptr;
    if (!version)
        return {};
    std::size_t count = 2; // the list and the link
    for (const auto& [name, content] : contentOf(*version)) {
        if (contentOfFile(product() + "/" + name) != content)
            return {};
        ++count;
    }
    for (const auto& entry : files::recursive_directory_iterator(product()))
        count -= !entry.is_directory() || entry.is_symlink();
    bool isWhole = count == 0 && contentOfFile(product() + "/share/link") == "the text of version " + *version
        && contentOfFile(root() + "/usr/bin/log") == "version " + *version
        && contentOfFile(root() + "/" + daemonLink) == "version " + *version;
    return isWhole ? *version : std::string();
}

void UpdateMachine::publish(const std::vector<std::string>& command) const
{
    std::string line;
    for (const auto& word : command)
        line += word + "\t";
    line.back() = '\n';
    _server->write(line);
    if (auto answer = _server->readLine(60000); answer != "done")
        throw std::runtime_error("the server could not do it: " + answer.value_or("no answer"));
}

void UpdateMachine::makePackage(const std::string& key, const std::string& version, const std::string& kind)
{
    publish({"odd-package", key, layoutOf(version), version, kind, served("Brevane.pkg")});
}

void UpdateMachine::offer(const std::string& version)
{
    auto package = served("Brevane.pkg");
    publish({"package", _keyPath, layoutOf(version), version, "Version " + version, package});
    publish({"feed", package, version, "Version " + version, served("update.plist")});
}

void UpdateMachine::serveFeed(Dictionary feed) const
{
    writePropertyList(served("update.plist"), feed);
}

void UpdateMachine::serve(const std::string& name, const std::string& content) const
{
    writeFile(served(name), content);
}

void UpdateMachine::answer(const std::string& name, const std::string& what) const
{
    writeFile(served(name + ".answer"), what);
}

void UpdateMachine::serveAgain(const std::string& name) const
{
    files::remove(served(name + ".answer"));
}

std::size_t UpdateMachine::requestCount() const
{
    return contentOfFile(served("requests")).size();
}

void UpdateMachine::writeConfiguration(Dictionary more) const
{
    auto path = file("updates.plist");
    publish({"configuration", _keyPath, url("update.plist"), path});
    auto bytes = platform::readFile(path);
    auto record = *platform::propertyListWithData(*bytes)->dictionary();
    record.set("Patience", 2);
    record.set("Keeping", 0);
    if (!_authorities.empty())
        record.set("Authorities", _authorities);
    for (const auto& [key, value] : more)
        record.set(key, value);
    writePropertyList(path, record);
}

ChildProcess::Arguments UpdateMachine::command(ChildProcess::Arguments before,
                                               const ChildProcess::Arguments& more) const
{
    before.insert(before.end(), {product() + "/" + helperName, "--root", root(), "--updates", file("updates.plist")});
    before.insert(before.end(), more.begin(), more.end());
    return before;
}

void UpdateMachine::startUnasked()
{
    killHelper();
    _stage.launch(command({}, {}));
    REQUIRE(waitUntil([&] { return helperProcess() == helper().pid(); }));
}

void UpdateMachine::start(ChildProcess::Arguments before, const ChildProcess::Arguments& more)
{
    killHelper();
    _stage.start(command(std::move(before), more));
}

pid_t UpdateMachine::helperProcess() const
{
    return ownerOfBusName(helperName);
}

std::string UpdateMachine::log() const
{
    return contentOfFile(root() + "/Library/Logs/Brevane/scheduler.log")
        + contentOfFile(file("home/Library/Logs/Brevane/scheduler.log"));
}

bool UpdateMachine::waitForHelper(const std::string& version) const
{
    return waitUntil([&] { return log().contains("Running version " + version + "."); });
}

std::unique_ptr<ChildProcess> UpdateMachine::startBackup() const
{
    REQUIRE(platform::createFolder(root() + "/var/run"));
    auto backup = std::make_unique<ChildProcess>(
        ChildProcess::Arguments{"flock", "--no-fork", root() + "/var/run/backupd.lock", "sleep", "600"});
    REQUIRE(waitUntil(platform::isBackupRunning));
    return backup;
}

namespace {

platform::ServiceDictionary requestOf(std::int64_t message, const std::optional<platform::PropertyList>& payload)
{
    platform::ServiceDictionary request{{"message", message}};
    if (payload)
        request.emplace("payload", binaryData(*payload));
    if (!BRVAuthorizationRightsForMessage(message)->empty()) {
        request.emplace("auth", ownToken());
    }
    return request;
}

} // namespace

platform::ServiceReply UpdateMachine::send(std::int64_t message, const std::optional<platform::PropertyList>& payload)
{
    return _stage.client().sendSynchronousXPCMessage(requestOf(message, payload));
}

std::future<platform::ServiceReply> UpdateMachine::sendLater(std::int64_t message)
{
    auto promise = std::make_shared<std::promise<platform::ServiceReply>>();
    _stage.client().sendXPCMessage(requestOf(message, {}), platform::Queue::global(),
                                   [promise](platform::ServiceReply reply) { promise->set_value(std::move(reply)); });
    return promise->get_future();
}

bool UpdateMachine::isStaging() const
{
    return files::exists(root() + "/Library/.com.zerkolin.brevane.update");
}

bool UpdateMachine::waitForTrial() const
{
    return waitUntil([this] { return !isStaging(); });
}

std::string outputOf(const ChildProcess::Arguments& arguments)
{
    ChildProcess process(arguments);
    auto output = process.readAll();
    if (process.wait() != 0)
        throw std::runtime_error(arguments[0] + " failed: " + output);
    return output;
}

bool waitUntil(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

std::map<std::string, std::string> treeBelow(const std::string& folder)
{
    std::map<std::string, std::string> tree;
    for (const auto& entry : files::recursive_directory_iterator(folder)) {
        struct stat status{};
        if (::lstat(entry.path().c_str(), &status) != 0)
            continue;
        auto content = std::to_string(status.st_mode) + " ";
        if (entry.is_symlink())
            content += files::read_symlink(entry.path()).string();
        else if (entry.is_regular_file())
            content += contentOfFile(entry.path());
        tree[entry.path().string().substr(folder.size())] = content;
    }
    return tree;
}
