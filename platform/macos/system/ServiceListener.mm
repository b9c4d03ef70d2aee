#include "platform/ServiceListener.h"

#include "platform/FileDescriptor.h"
#include "platform/macos/service/ReplyBudget.h"
#include "platform/macos/system/XPCDictionary.h"

#include <array>
#include <atomic>
#include <bsm/libbsm.h>
#include <chrono>
#include <CoreFoundation/CoreFoundation.h>
#include <csignal>
#include <cstdlib>
#include <dispatch/dispatch.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <libproc.h>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

// How long a listener that stops waits for a peer that does not take the replies already made.
constexpr std::chrono::milliseconds farewellLimit{1000};
// More entries than that make a message too long to be looked through.
constexpr std::size_t maximumEntries = 256;

// The sender of a message as the kernel has stamped it, where the system hands that out; nothing can change it, not
// even a process that becomes another program.
std::optional<audit_token_t> auditToken(xpc_object_t message)
{
    using Get = void (*)(xpc_object_t, audit_token_t*);
    static const auto get = reinterpret_cast<Get>(::dlsym(RTLD_DEFAULT, "xpc_dictionary_get_audit_token"));
    if (!get)
        return std::nullopt;
    audit_token_t token{};
    get(message, &token);
    return token;
}

// A number may be another process's by now; a token is never.
int pathOf(const std::optional<audit_token_t>& token, pid_t process, std::span<char> path)
{
    const auto size = static_cast<std::uint32_t>(path.size());
    if (@available(macOS 11.0, *)) {
        if (token) {
            audit_token_t asked = *token;
            return ::proc_pidpath_audittoken(&asked, path.data(), size);
        }
    }
    return ::proc_pidpath(process, path.data(), size);
}

std::string programOf(const std::optional<audit_token_t>& token, pid_t process)
{
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    const int length = pathOf(token, process, path);
    return {path.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
}

ServicePeer peerOf(xpc_connection_t connection, xpc_object_t message, const std::string& name)
{
    const auto token = auditToken(message);
    const pid_t process = token ? ::audit_token_to_pid(*token) : xpc_connection_get_pid(connection);
    const uid_t user = token ? ::audit_token_to_euid(*token) : xpc_connection_get_euid(connection);
    return {name, user, static_cast<std::uint32_t>(process), programOf(token, process)};
}

// What the listener's own handlers and the replies that are owed share; outlives the listener while a reply is owed.
// But for the connections' sends, everything is for the main queue, which run() serves.
class Service : public std::enable_shared_from_this<Service> {
public:
    using Request = ServiceListener::Request;
    using Reply = ServiceListener::Reply;

    Service(ServiceListener::Handlers handlers, std::vector<ServiceKey> form)
        : _handlers(std::move(handlers)),
          _form(std::move(form))
    {
    }

    void accept(xpc_connection_t connection);
    void close();
    bool isOpen() const { return _isOpen; }
    // Waits until what was sent is with the peers, for no longer than the limit.
    void flush();

private:
    struct Peer {
        xpc_connection_t connection;
        std::uint32_t user;
        bool isIdentified = false;
    };

    void handle(const std::string& name, xpc_object_t event);
    void receive(const std::string& name, Peer& peer, xpc_object_t message);
    void leave(const std::string& name);
    std::optional<Request> read(const std::string& name, xpc_object_t message) const;
    Reply replyTo(const std::string& name, const Peer& peer, xpc_object_t message);
    void send(const std::string& name, std::uint32_t user, xpc_connection_t connection, xpc_object_t reply);

    const ServiceListener::Handlers _handlers;
    const std::vector<ServiceKey> _form;
    std::atomic<bool> _isOpen = true;
    std::map<std::string, Peer> _peers;
    std::uint64_t _connectionCount = 0;
    ReplyBudget _budget;
};

void onMain(std::function<void()> task)
{
    dispatch_async(dispatch_get_main_queue(), ^{ task(); });
}

void Service::accept(xpc_connection_t connection)
{
    const auto name = ":" + std::to_string(++_connectionCount);
    const std::uint32_t user = xpc_connection_get_euid(connection);
    const bool isWelcome = _isOpen && _budget.connect(user);
    xpc_connection_set_target_queue(connection, dispatch_get_main_queue());
    if (isWelcome)
        _peers.emplace(name, Peer{connection, user});
    const auto service = weak_from_this();
    xpc_connection_set_event_handler(connection, ^(xpc_object_t event) {
        if (const auto found = service.lock())
            found->handle(name, event);
    });
    xpc_connection_resume(connection);
    if (!isWelcome)
        xpc_connection_cancel(connection);
}

void Service::handle(const std::string& name, xpc_object_t event)
{
    const auto found = _peers.find(name);
    if (found == _peers.end())
        return;
    if (xpc_get_type(event) == XPC_TYPE_DICTIONARY)
        receive(name, found->second, event);
    else if (event == XPC_ERROR_CONNECTION_INVALID)
        leave(name);
}

void Service::leave(const std::string& name)
{
    const auto peer = _peers.extract(name);
    if (peer.empty())
        return;
    _budget.disconnect(peer.mapped().user);
    if (peer.mapped().isIdentified && _isOpen)
        _handlers.left(name);
}

void Service::receive(const std::string& name, Peer& peer, xpc_object_t message)
{
    if (!_isOpen)
        return;
    auto request = read(name, message);
    if (!request) {
        xpc_connection_cancel(peer.connection);
        return;
    }
    _handlers.received(std::move(*request), replyTo(name, peer, message));
    if (!std::exchange(peer.isIdentified, true))
        _handlers.identified(peerOf(peer.connection, message, name));
}

// With a form nothing else is looked at, and nothing is copied that is longer than it may be.
std::optional<Service::Request> Service::read(const std::string& name, xpc_object_t message) const
{
    if (xpc_dictionary_get_count(message) > maximumEntries)
        return std::nullopt;
    Request request;
    request.sender = name;
    if (_form.empty()) {
        request.message = serviceDictionary(message);
        return request;
    }
    for (const auto& key : _form) {
        const xpc_object_t value = xpc_dictionary_get_value(message, key.name.c_str());
        if (!value)
            continue;
        if (xpc_get_type(value) == XPC_TYPE_INT64) {
            request.message.emplace(key.name, xpc_int64_get_value(value));
        } else if (xpc_get_type(value) == XPC_TYPE_DATA && xpc_data_get_length(value) > key.maximumSize) {
            request.tooLong.push_back(key.name);
        } else if (xpc_get_type(value) == XPC_TYPE_DATA) {
            const auto* const bytes = static_cast<const std::uint8_t*>(xpc_data_get_bytes_ptr(value));
            request.message.emplace(key.name, Data(bytes, bytes + xpc_data_get_length(value)));
        }
    }
    return request;
}

// A reply that is dropped unused ends the wait of its sender as an interruption does.
Service::Reply Service::replyTo(const std::string& name, const Peer& peer, xpc_object_t message)
{
    const xpc_object_t reply = xpc_dictionary_create_reply(message);
    if (!reply)
        return nullptr;
    return [service = weak_from_this(), name, user = peer.user, connection = peer.connection,
            reply](const ServiceDictionary& dictionary) {
        setEntries(reply, dictionary);
        const auto found = service.lock();
        if (found && found->isOpen())
            onMain([found, name, user, connection, reply] { found->send(name, user, connection, reply); });
        else
            xpc_connection_send_message(connection, reply);
    };
}

// Whoever reads too little of what is sent is cut off with all that it is owed.
void Service::send(const std::string& name, std::uint32_t user, xpc_connection_t connection, xpc_object_t reply)
{
    const auto found = _peers.find(name);
    if (found == _peers.end())
        return;
    std::size_t size = 0;
    for (const char* const key : {"payload", "error"}) {
        if (const xpc_object_t value = xpc_dictionary_get_value(reply, key))
            size += xpc_data_get_length(value);
    }
    if (!_budget.charge(user, size)) {
        xpc_connection_cancel(connection);
        return;
    }
    xpc_connection_send_message(connection, reply);
    const auto service = weak_from_this();
    xpc_connection_send_barrier(connection, ^{
        onMain([service, user, size] {
            if (const auto self = service.lock())
                self->_budget.taken(user, size);
        });
    });
}

void Service::close()
{
    _isOpen = false;
}

// On the main thread, whose queue the barriers need.
void Service::flush()
{
    const auto waiting = std::make_shared<std::size_t>(_peers.size());
    for (const auto& [name, peer] : _peers)
        xpc_connection_send_barrier(peer.connection, ^{ onMain([waiting] { --*waiting; }); });
    const auto end = std::chrono::steady_clock::now() + farewellLimit;
    while (*waiting > 0 && std::chrono::steady_clock::now() < end)
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true);
}

class XPCServiceListener final : public ServiceListener {
public:
    // Whatever is written to `stopping` ends run(), and can be read from `stopped`.
    XPCServiceListener(const std::string& name, Handlers handlers, std::vector<ServiceKey> form, FileDescriptor stopped,
                       FileDescriptor stopping);
    ~XPCServiceListener() override;

    void stopOnTermination() override;
    bool wasTerminated() const override { return *_wasTerminated; }
    bool run() override;
    void flush() override { _service->flush(); }
    void stop() override;
    void async(std::function<void()> task) override;
    void copyRight(const RightQuestion& question, std::function<void(Authorization::Status)> answer) override;

private:
    void end(bool isStopped);

    const std::shared_ptr<Service> _service;
    const std::shared_ptr<std::atomic<bool>> _wasTerminated = std::make_shared<std::atomic<bool>>(false);
    const xpc_connection_t _listener;
    const FileDescriptor _stopped;
    const FileDescriptor _stopping;
    std::vector<dispatch_source_t> _sources;
    std::optional<bool> _end; // how run() is to end
};

XPCServiceListener::XPCServiceListener(const std::string& name, Handlers handlers, std::vector<ServiceKey> form,
                                       FileDescriptor stopped, FileDescriptor stopping)
    : _service(std::make_shared<Service>(std::move(handlers), std::move(form))),
      _listener(xpc_connection_create_mach_service(name.c_str(), dispatch_get_main_queue(),
                                                   XPC_CONNECTION_MACH_SERVICE_LISTENER)),
      _stopped(std::move(stopped)),
      _stopping(std::move(stopping))
{
    const dispatch_source_t source =
        dispatch_source_create(DISPATCH_SOURCE_TYPE_READ, uintptr_t(_stopped.get()), 0, dispatch_get_main_queue());
    dispatch_source_set_event_handler(source, ^{ end(true); });
    dispatch_resume(source);
    _sources.push_back(source);
    xpc_connection_set_event_handler(_listener, ^(xpc_object_t event) {
        if (xpc_get_type(event) == XPC_TYPE_CONNECTION)
            _service->accept(static_cast<xpc_connection_t>(event));
        else if (xpc_get_type(event) == XPC_TYPE_ERROR)
            end(false);
    });
    xpc_connection_resume(_listener);
}

// Nothing on the main queue runs while this does, nor, since nobody serves it after run(), later.
XPCServiceListener::~XPCServiceListener()
{
    _service->close();
    for (const auto& source : _sources)
        dispatch_source_cancel(source);
    xpc_connection_cancel(_listener);
}

void XPCServiceListener::stopOnTermination()
{
    for (const int number : {SIGTERM, SIGINT}) {
        const dispatch_source_t source =
            dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, uintptr_t(number), 0, dispatch_get_main_queue());
        dispatch_source_set_event_handler(source, ^{
            *_wasTerminated = true;
            end(true);
        });
        dispatch_resume(source);
        _sources.push_back(source);
    }
}

void XPCServiceListener::end(bool isStopped)
{
    if (!_end)
        _end = isStopped;
    CFRunLoopStop(CFRunLoopGetMain());
}

// The run loop serves the main queue, and whatever of the system's sources the process has. It would end at once
// without any.
bool XPCServiceListener::run()
{
    CFRunLoopSourceContext context{};
    const CFRunLoopSourceRef keeper = CFRunLoopSourceCreate(nullptr, 0, &context);
    CFRunLoopAddSource(CFRunLoopGetMain(), keeper, kCFRunLoopDefaultMode);
    while (!_end)
        CFRunLoopRun();
    CFRunLoopRemoveSource(CFRunLoopGetMain(), keeper, kCFRunLoopDefaultMode);
    CFRelease(keeper);
    _service->close();
    _service->flush();
    return *_end;
}

void XPCServiceListener::stop()
{
    constexpr char mark = 1;
    (void)!::write(_stopping.get(), &mark, 1);
}

void XPCServiceListener::async(std::function<void()> task)
{
    onMain([service = std::weak_ptr(_service), task = std::move(task)] {
        if (const auto found = service.lock(); found && found->isOpen())
            task();
    });
}

// The authority may take its time.
void XPCServiceListener::copyRight(const RightQuestion& question, std::function<void(Authorization::Status)> answer)
{
    const auto service = std::weak_ptr(_service);
    const RightQuestion asked = question;
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), ^{
        const auto authorization = Authorization::createFromExternalForm(asked.form, asked.peer);
        const auto status = authorization
            ? (*authorization)->copyRight(asked.right, std::nullopt, Authorization::Defaults)
            : authorization.error();
        onMain([service, status, answer] {
            if (const auto found = service.lock(); found && found->isOpen())
                answer(status);
        });
    });
}

} // namespace

// Only the process that the service manager has started has the name; a second one would learn of it too late.
std::expected<std::unique_ptr<ServiceListener>, std::string>
ServiceListener::create(const std::string& serviceName, Handlers handlers, std::vector<ServiceKey> form)
{
    if (@available(macOS 10.10, *)) {
        const char* const service = std::getenv("XPC_SERVICE_NAME");
        if (!service || service != serviceName)
            return std::unexpected("The service '" + serviceName + "' is started by launchd alone.");
    }
    int ends[2];
    if (::pipe(ends) != 0)
        return std::unexpected("No pipe can be made.");
    FileDescriptor stopped(ends[0]);
    FileDescriptor stopping(ends[1]);
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    return std::make_unique<XPCServiceListener>(serviceName, std::move(handlers), std::move(form), std::move(stopped),
                                                std::move(stopping));
}

} // namespace platform
