#include "platform/linux/system/backups/BackupLauncher.h"

#include "platform/linux/system/backups/BackupRecord.h"
#include "platform/linux/system/bus/SystemBus.h"
#include "platform/linux/system/processes/Launch.h"
#include "platform/ProgramPath.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr std::uint64_t answerLimit = 10'000'000; // microseconds
constexpr std::uint64_t lowWeight = 10;           // others have 100

// Beside this program in an installation; elsewhere in a build, which names it.
std::string runnerPath()
{
    const char* const named = std::getenv("BREVANE_BACKUP_PROGRAM");
    const bool mayBeNamed = usesSandboxStore() && named && *named;
    return mayBeNamed ? named : programFolder() + "/com.zerkolin.brevane.backupd";
}

std::vector<std::string> commandFor(const std::string& identifier)
{
    return {runnerPath(), "--root", systemRoot().empty() ? "/" : systemRoot(), "--identifier", identifier};
}

bool hasServiceManager()
{
    return !usesSandboxStore() && sd_booted() > 0;
}

int appendCommand(sd_bus_message* message, const std::vector<std::string>& command)
{
    int result = sd_bus_message_open_container(message, 'r', "sv");
    result = result < 0 ? result : sd_bus_message_append(message, "s", "ExecStart");
    result = result < 0 ? result : sd_bus_message_open_container(message, 'v', "a(sasb)");
    result = result < 0 ? result : sd_bus_message_open_container(message, 'a', "(sasb)");
    result = result < 0 ? result : sd_bus_message_open_container(message, 'r', "sasb");
    result = result < 0 ? result : sd_bus_message_append(message, "s", command.front().c_str());
    result = result < 0 ? result : sd_bus_message_open_container(message, 'a', "s");
    for (const auto& argument : command)
        result = result < 0 ? result : sd_bus_message_append(message, "s", argument.c_str());
    result = result < 0 ? result : sd_bus_message_close_container(message);
    result = result < 0 ? result : sd_bus_message_append(message, "b", 0);
    for (int level = 0; level < 4; ++level)
        result = result < 0 ? result : sd_bus_message_close_container(message);
    return result;
}

int composeStart(sd_bus* bus, sd_bus_message** made, const std::vector<std::string>& command,
                 const StandardStreams& streams)
{
    int result = sd_bus_message_new_method_call(bus, made, "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                                "org.freedesktop.systemd1.Manager", "StartTransientUnit");
    result = result < 0 ? result : sd_bus_message_append(*made, "ss", BackupUnit, "fail");
    result = result < 0 ? result : sd_bus_message_open_container(*made, 'a', "(sv)");
    result = result < 0 ? result
                        : sd_bus_message_append(*made, "(sv)(sv)(sv)(sv)(sv)", "Description", "s", "Backup by Brevane",
                                                "Type", "s", "exec", "CollectMode", "s", "inactive-or-failed",
                                                "CPUWeight", "t", lowWeight, "IOWeight", "t", lowWeight);
    result = result < 0 ? result
                        : sd_bus_message_append(*made, "(sv)(sv)", "StandardInputFileDescriptor", "h", streams.input,
                                                "StandardOutputFileDescriptor", "h", streams.output);
    result = result < 0 ? result : appendCommand(*made, command);
    result = result < 0 ? result : sd_bus_message_close_container(*made);
    return result < 0 ? result : sd_bus_message_append(*made, "a(sa(sv))", 0);
}

Result<void> startUnit(const std::vector<std::string>& command, const StandardStreams& streams)
{
    const auto bus = SystemBus::current();
    int failure = EHOSTUNREACH;
    const auto compose = [&](sd_bus* on, sd_bus_message** made) { return composeStart(on, made, command, streams); };
    const auto complete = [&](const SystemBus::Answer& answer) -> SystemBus::Task {
        const std::string_view error = answer.error ? answer.error : "";
        failure = answer.reply ? 0 : error == "org.freedesktop.systemd1.UnitExists" ? EBUSY : EIO;
        return nullptr;
    };
    if (const auto call = bus ? bus->beginCall(&failure, compose, complete, answerLimit) : nullptr)
        bus->wait(*call);
    if (failure != 0)
        return std::unexpected(Error{POSIXErrorDomain, failure, {}, nullptr});
    return {};
}

// A file without a name that holds the job, to be read from its beginning.
FileDescriptor jobToRead(const BackupJob& job)
{
    const auto bytes = encodedBackupJob(job);
    FileDescriptor file(::memfd_create("backup job", MFD_CLOEXEC));
    for (std::size_t written = 0; file && written < bytes.size();) {
        const auto count = ::write(file.get(), bytes.data() + written, bytes.size() - written);
        if (count <= 0)
            file.reset();
        else
            written += static_cast<std::size_t>(count);
    }
    if (file)
        ::lseek(file.get(), 0, SEEK_SET);
    return file;
}

} // namespace

Result<LaunchedBackup> launchBackup(const BackupJob& job)
{
    const auto command = commandFor(job.identifier);
    const auto input = jobToRead(job);
    int ends[2] = {-1, -1};
    if (!input || ::pipe2(ends, O_CLOEXEC) != 0)
        return std::unexpected(Error{POSIXErrorDomain, errno, {}, nullptr});
    LaunchedBackup launched{{}, FileDescriptor(ends[0])};
    const FileDescriptor output(ends[1]);
    ::fcntl(launched.told.get(), F_SETFL, O_NONBLOCK);
    const StandardStreams streams{input.get(), output.get()};
    if (hasServiceManager()) {
        if (const auto started = startUnit(command, streams); !started)
            return std::unexpected(started.error());
        return launched;
    }
    const auto child = spawn(command, streams);
    if (!child)
        return std::unexpected(Error{POSIXErrorDomain, child.error(), {}, nullptr});
    launched.child = *child;
    return launched;
}

} // namespace platform
