#pragma once

#include "tests/helper/support/HelperStage.h"
#include "tests/helper/support/Replies.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A machine with an installation of the product, small but for the helper, which is the real one; a server of updates;
// and whatever the test lets happen between them.
class UpdateMachine {
public:
    // Without TLS the helper's feed is http; with it https, of a certificate that is trusted only if it is said to be.
    enum class Transport { Plain, Foreign, Trusted };

    explicit UpdateMachine(Transport transport = Transport::Plain);
    ~UpdateMachine();

    std::string root() const { return _folder.file("root"); }
    std::string file(const std::string& name) const { return _folder.file(name); }
    std::string product() const { return root() + "/Library/Brevane"; }
    std::string served(const std::string& name) const { return _folder.file("served/" + name); }
    std::string url(const std::string& name) const { return _url + name; }
    const std::string& keyPath() const { return _keyPath; }

    // Lays a version out below the root, over whatever is there.
    void layOut(const std::string& version);
    // The version whose every file is there as it was laid out or packed; empty when the installation is not whole.
    std::string wholeVersion() const;

    // A layout of the version beside the root, and a good package of it in the served folder, beside a feed.
    std::string layoutOf(const std::string& version);
    void offer(const std::string& version);
    // What the server's publisher does by these words; see server.py.
    void publish(const std::vector<std::string>& command) const;
    // A signed package of the version, of one of the kinds of packages.py, in the served folder.
    void makePackage(const std::string& key, const std::string& version, const std::string& kind);
    void serveFeed(platform::Dictionary feed) const;
    void serve(const std::string& name, const std::string& content) const;
    // What the server does instead of serving the file; see server.py.
    void answer(const std::string& name, const std::string& what) const;
    void serveAgain(const std::string& name) const;
    // How often the server was asked for anything.
    std::size_t requestCount() const;

    void writeConfiguration(platform::Dictionary more = {}) const;

    void start(ChildProcess::Arguments before = {}, const ChildProcess::Arguments& more = {});
    // The same, but nobody sends it a message.
    void startUnasked();
    ChildProcess& helper() { return _stage.program(); }
    PolkitAuthority& authority() { return _stage.authority(); }
    // kill -9 of the helper and of whoever watches an update, as a service manager does it.
    void killHelper();
    // The processes that run a helper with this root, the watch over an update among them.
    std::vector<pid_t> processes() const;
    // The process that has the helper's name; 0 when there is none.
    pid_t helperProcess() const;
    std::string log() const;
    // Waits until this version of the helper has begun.
    bool waitForHelper(const std::string& version) const;
    // What holds the lock of the system's backups.
    std::unique_ptr<ChildProcess> startBackup() const;

    platform::ServiceReply send(std::int64_t message, const std::optional<platform::PropertyList>& payload = {});
    std::future<platform::ServiceReply> sendLater(std::int64_t message);

    bool isStaging() const;
    // Waits until the new version has proved itself, or the old one is back, and nothing is left beside it.
    bool waitForTrial() const;

private:
    std::map<std::string, std::string> contentOf(const std::string& version) const;
    void startServer(Transport transport);
    ChildProcess::Arguments command(ChildProcess::Arguments before, const ChildProcess::Arguments& more) const;

    TemporaryDirectory _folder;
    EnvironmentVariable _rootVariable;
    EnvironmentVariable _home;
    EnvironmentVariable _noProxy;
    HelperStage _stage;
    std::unique_ptr<ChildProcess> _server;
    std::string _url;
    std::string _keyPath;
    std::string _authorities;
};

// Runs a program to its end, which must be a good one; what it printed.
std::string outputOf(const ChildProcess::Arguments& arguments);
bool waitUntil(const std::function<bool()>& condition);

// Every path below a folder with its kind, mode and content.
std::map<std::string, std::string> treeBelow(const std::string& folder);
