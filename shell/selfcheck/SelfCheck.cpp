#include "shell/selfcheck/SelfCheck.h"

#include "platform/Process.h"
#include "platform/RunningProgram.h"
#include "platform/ui/BareApplication.h"

#include <array>
#include <cstdio>

namespace selfcheck {

namespace {

constexpr std::array languages = {"en", "de", "es", "fr", "it", "ja", "zh-Hans"};

// What it prints is printed here. Its exit status.
int runIn(const std::string& language)
{
    const auto started = platform::Process::start(platform::executablePath(), {"--self-check", language});
    if (!started) {
        std::printf("%-8s could not be started: error %d\n", language.c_str(), started.error());
        return 1;
    }
    platform::Process& process = **started;
    std::array<char, 4096> buffer{};
    while (const auto count = process.read(buffer))
        std::fwrite(buffer.data(), 1, count, stdout);
    const int status = process.waitUntilExit();
    if (status != 0 && status != 1)
        std::printf("%-8s ended with %d\n", language.c_str(), status);
    return status;
}

int runInAll()
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    for (const std::string language : languages) {
        if (runIn(language) != 0) {
            std::puts("A check failed.");
            return 1;
        }
    }
    std::puts("All checks succeeded.");
    return 0;
}

} // namespace

bool runChecks(const std::string& language, const std::vector<Check>& checks)
{
    for (const auto& [subject, run] : checks) {
        const auto finding = run();
        std::printf("%-8s %-40s %s %s\n", language.c_str(), subject.c_str(), finding ? "ok   " : "FAULT",
                    (finding ? *finding : finding.error()).c_str());
        if (!finding)
            return false;
    }
    return true;
}

int main(int argc, char** argv)
{
    if (argc < 3)
        return runInAll();
    const std::string language = argv[2];
    platform::useLanguage(language);
    return platform::ui::runWithControls(argc, argv, [&language] {
        return runChecks(language, facilityChecks()) && runChecks(language, interfaceChecks()) ? 0 : 1;
    });
}

} // namespace selfcheck
