#include "tests/platform/ui/User.h"

#include <cstdlib>

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>
#include <memory>
#include <string_view>

namespace {

int argumentCount = 0;
char** arguments = nullptr;

// Makes the toolkit's application before the first case of the suite "windows". The others count threads and
// descriptors, fork, and block signals: they run without one.
class Toolkit : public doctest::IReporter {
public:
    explicit Toolkit(const doctest::ContextOptions& /*options*/) { }

    void test_case_start(const doctest::TestCaseData& data) override
    {
        if (!_session && std::string_view(data.m_test_suite) == "windows")
            _session = std::make_unique<user::Session>(argumentCount, arguments);
    }
    void test_run_end(const doctest::TestRunStats& /*stats*/) override { _session.reset(); }

    void report_query(const doctest::QueryData& /*data*/) override { }
    void test_run_start() override { }
    void test_case_reenter(const doctest::TestCaseData& /*data*/) override { }
    void test_case_end(const doctest::CurrentTestCaseStats& /*stats*/) override { }
    void test_case_exception(const doctest::TestCaseException& /*exception*/) override { }
    void subcase_start(const doctest::SubcaseSignature& /*signature*/) override { }
    void subcase_end() override { }
    void log_assert(const doctest::AssertData& /*data*/) override { }
    void log_message(const doctest::MessageData& /*data*/) override { }
    void test_case_skipped(const doctest::TestCaseData& /*data*/) override { }

private:
    std::unique_ptr<user::Session> _session;
};

REGISTER_LISTENER("toolkit", 1, Toolkit);

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    argumentCount = argc;
    arguments = argv;
    return doctest::Context(argc, argv).run();
}
