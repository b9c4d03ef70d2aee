#pragma once

#include <map>
#include <optional>
#include <signal.h>
#include <string>
#include <sys/types.h>
#include <vector>

// A program started by a test. It is killed when the object goes, and when the thread that started it ends in any way.
class ChildProcess {
public:
    using Arguments = std::vector<std::string>;
    using Environment = std::map<std::string, std::string>; // set on top of the test's own

    // The first argument is the program, looked up in PATH. Throws when it can't be started.
    explicit ChildProcess(const Arguments& arguments, const Environment& environment = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return _pid; }
    bool isRunning();

    void signal(int number) const;
    // kill -9, and waits.
    void kill();
    // Waits for the end: the exit status, or the negative number of the signal that ended it.
    int wait();

    // The next line of its standard output without the line end; nothing at the end or after the time.
    std::optional<std::string> readLine(int milliseconds = 10000);
    // Everything that it still writes to its standard output.
    std::string readAll();
    // Writes to its standard input.
    void write(const std::string& text) const;
    void closeInput();

private:
    bool fillBuffer(int milliseconds);

    pid_t _pid = -1;
    int _input = -1;
    int _output = -1;
    std::optional<int> _status;
    std::string _buffer;
};
