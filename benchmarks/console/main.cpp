// From pressing refresh to the text shown, for logs of several sizes: time, the longest stretch for which the main
// thread served no events, and peak memory; beside the floor, the work on dates and python3's reading of the same JSON.
// Every figure of the window is of a process of its own.

#include "benchmarks/console/Figures.h"
#include "benchmarks/console/Generation.h"
#include "diagnostics/console/BRVConsoleController.h"
#include "diagnostics/log/ZRKLog.h"
#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "platform/ui/Application.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <QElapsedTimer>
#include <QEvent>
#include <QPushButton>
#include <QTimer>
#include <sys/stat.h>

namespace {

using namespace platform::ui;

constexpr double heartbeat = 2; // milliseconds

double megabytesOfStatus(const char* key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key))
            return std::atof(line.c_str() + std::strlen(key)) * 1024 / 1e6;
    }
    return 0;
}

void setTool(const std::string& root, const std::string& command)
{
    const auto path = root + "/usr/bin/log";
    std::ofstream(path) << "#!/bin/sh\n" << command << "\n";
    ::chmod(path.c_str(), 0755);
}

// Opens the console, presses refresh twice and measures each time.
class Measurement : public QObject, public ApplicationDelegate {
public:
    explicit Measurement(std::string json) : _json(std::move(json)) { }

    void awakeFromNib() override { }
    bool applicationDidReopen(bool) override { return false; }
    bool applicationShouldTerminate() override { return true; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void applicationDidFinishLaunching() override
    {
        setTool(std::getenv("BREVANE_ROOT"), "echo '[]'");
        _console->showWindow();
        auto* const window = _console->window()->native().window.get();
        _button = window->findChild<QPushButton*>(QStringLiteral("consoleRefreshButton"));
        _area = &window->findChild<StyledTextView*>(QStringLiteral("consoleTextView"))->area();
        _area->viewport()->installEventFilter(this);
        _beat.setTimerType(Qt::PreciseTimer);
        connect(&_beat, &QTimer::timeout, this, [this] { beat(); });
        _beat.start(static_cast<int>(heartbeat));
        QTimer::singleShot(1000, this, [this] { press(); });
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && _running && _button->isEnabled() && _area->text().get() != _before) {
            _total = _time.nsecsElapsed() / 1e6;
            _running = false;
            QTimer::singleShot(500, this, [this] { report(); });
        }
        return false;
    }

private:
    void press()
    {
        setTool(std::getenv("BREVANE_ROOT"), "exec cat " + _json);
        std::ofstream("/proc/self/clear_refs") << "5\n"; // the peak from now on
        _before = _area->text().get();
        _longest = 0;
        _time.start();
        _last = 0;
        _running = true;
        _button->click();
    }

    void beat()
    {
        const double now = _time.isValid() ? _time.nsecsElapsed() / 1e6 : 0;
        _longest = std::max(_longest, now - _last - heartbeat);
        _last = now;
    }

    void report()
    {
        const char* const turn = _again ? "again" : "first";
        std::printf("%s.total %.1f ms\n%s.stretch %.1f ms\n%s.peak %.1f MB\n", turn, _total, turn, _longest, turn,
                    megabytesOfStatus("VmHWM:"));
        if (_again)
            return terminateApplication();
        _again = true;
        press();
    }

    std::string _json;
    std::shared_ptr<BRVConsoleController> _console = BRVConsoleController::create();
    QPushButton* _button = nullptr;
    StyledTextArea* _area = nullptr;
    const platform::StyledText* _before = nullptr;
    QTimer _beat;
    QElapsedTimer _time;
    double _last = 0;
    double _longest = 0;
    double _total = 0;
    bool _running = false;
    bool _again = false;
};

void runWindow(const char* program, const std::string& json, const std::string& root, const std::string& size)
{
    ChildProcess window(
        {program, "--window", json},
        {{"BREVANE_ROOT", root}, {"HOME", root}, {"QT_QPA_PLATFORM", "offscreen"}, {"XDG_RUNTIME_DIR", root}});
    while (const auto line = window.readLine(600000))
        std::printf("console.%s.%s\n", size.c_str(), line->c_str());
    if (window.wait() != 0)
        std::exit(1);
}

double pythonMilliseconds(const std::string& json)
{
    const auto start = std::chrono::steady_clock::now();
    ChildProcess python({"sh", "-c", "exec python3 -m json.tool " + json + " /dev/null"});
    python.wait();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void measure(const char* program, std::size_t records, const std::string& size)
{
    const TemporaryDirectory root;
    root.write("usr/bin/log", "");
    const auto json = root.file("records.json");
    generateRecords(records, json);
    struct stat status{};
    ::stat(json.c_str(), &status);
    std::printf("console.%s.json %.1f MB\n", size.c_str(), static_cast<double>(status.st_size) / 1e6);
    setTool(root.path(), "exec cat " + json);
    std::printf("console.%s.floor %.1f ms\n", size.c_str(), floorMilliseconds(root.file("usr/bin/log")));
    std::printf("console.%s.dates %.1f ms\n", size.c_str(), dateMilliseconds(json));
    std::fflush(stdout);
    runWindow(program, json, root.path(), size);
    std::printf("console.%s.python %.1f ms\n", size.c_str(), pythonMilliseconds(json));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string_view(argv[1]) == "--window") {
        ZRKLogInit("com.zerkolin.brevane", "application");
        const std::string json = argv[2];
        return applicationMain(argc, argv, [json] { return std::make_shared<Measurement>(json); });
    }
    measure(argv[0], 10'000, "10k");
    measure(argv[0], 100'000, "100k");
    measure(argv[0], 1'000'000, "1M");
}
