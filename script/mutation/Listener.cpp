// Appended to the source that holds a test program's main: notes which test runs, and how each ended.
#include <cstdio>
#include <cstdlib>

namespace {

struct MutantListener : doctest::IReporter {
    explicit MutantListener(const doctest::ContextOptions&) { }

    void test_case_start(const doctest::TestCaseData& test) override
    {
        running = &test;
        failed = false;
        if (mutant::state().record)
            mutant::state().record->row = ++row;
    }

    void test_case_end(const doctest::CurrentTestCaseStats& result) override
    {
        failed = failed || !result.testCaseSuccess;
        const char* path = std::getenv("BREVANE_MUTANT_TESTS");
        std::FILE* file = path ? std::fopen(path, "a") : nullptr;
        if (file) {
            std::fprintf(file, "%d\t%d\t%.6f\t%s\t%s\n", row, failed ? 1 : 0, result.seconds, running->m_file.c_str(),
                         running->m_name);
            std::fclose(file);
        }
        if (mutant::state().record)
            mutant::state().record->row = 0;
    }

    void report_query(const doctest::QueryData&) override { }
    void test_run_start() override { }
    void test_run_end(const doctest::TestRunStats&) override { }
    void test_case_reenter(const doctest::TestCaseData&) override { }
    void test_case_exception(const doctest::TestCaseException&) override { failed = true; }
    void subcase_start(const doctest::SubcaseSignature&) override { }
    void subcase_end() override { }
    void log_assert(const doctest::AssertData&) override { }
    void log_message(const doctest::MessageData&) override { }
    void test_case_skipped(const doctest::TestCaseData&) override { }

    const doctest::TestCaseData* running = nullptr;
    int row = 0;
    bool failed = false;
};

} // namespace

REGISTER_LISTENER("mutants", 1, MutantListener);
