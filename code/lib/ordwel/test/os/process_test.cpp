// SPDX-License-Identifier: MIT
#include <ordwel/process.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/process_recorder.h"
#include "support/test_support.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <csignal>
#include <dirent.h>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using namespace ordwel;
using std::chrono::milliseconds;

// The helper program built beside this test.
std::string child_program()
{
#if defined(_WIN32)
    char l_path[MAX_PATH];
    DWORD const l_size = GetModuleFileNameA(nullptr, l_path, MAX_PATH);
    std::string l_self(l_path, l_size);
    return l_self.substr(0, l_self.find_last_of("\\/") + 1) + "ordwel_process_child.exe";
#else
    char l_path[4096];
    ssize_t const l_size = readlink("/proc/self/exe", l_path, sizeof(l_path) - 1);
    std::string const l_self(l_path, l_size > 0 ? static_cast<std::size_t>(l_size) : 0u);
    return l_self.substr(0, l_self.rfind('/') + 1) + "ordwel_process_child";
#endif
}

using ordwel_test::recorder;

using env_map = std::map<std::string, std::string>;

struct run_result {
    std::string output;
    int status;
};

// Runs the helper with captured output to its end.
run_result run_child(std::vector<std::string> const &a_args, env_map const &a_env = {}, std::string const &a_stdin = {},
                     std::string const &a_directory = {})
{
    recorder l_recorder;
    process l_child("t", child_program(), a_args, a_env, a_directory, a_stdin, process_capture, &l_recorder);
    EXPECT_TRUE(l_recorder.wait_finished());
    return {l_recorder.output(), l_child.get_status()};
}

TEST(process_command_line, quotes_the_program_and_leaves_arguments_alone)
{
    struct row {
        std::string program;
        std::vector<std::string> args;
        std::string line;
    };
    std::vector<row> const l_rows = {
        {"c:\\a b\\x.exe", {}, "\"c:\\\\a b\\\\x.exe\" "},
        {"/bin/prog", {"-a", "-b"}, "\"/bin/prog\" -a -b "},
        {"p", {"two words", ""}, "\"p\" two words  "},
        {"", {}, "\"\" "},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(command_line_with_args(l_row.program, l_row.args), l_row.line) << l_row.program;
    }
}

TEST(process_command_line, reads_back_by_the_windows_runtime_rules)
{
    struct row {
        std::string line;
        std::vector<std::string> args;
    };
    std::vector<row> const l_rows = {
        {"\"c:\\\\a b\\\\x.exe\" -a -b ", {"c:\\\\a b\\\\x.exe", "-a", "-b"}},
        {"\"p\" two words  ", {"p", "two", "words"}},
        {"prog a\tb", {"prog", "a", "b"}},
        {"\"p\" \"a b\" c", {"p", "a b", "c"}},
        {"\"p\" a\\\\\\\"b", {"p", "a\\\"b"}},   // 3 backslashes and a quote: one backslash, a quote
        {"\"p\" a\\\\\"b c\"", {"p", "a\\b c"}}, // 2 backslashes and a quote: one backslash, a group
        {"\"p\" a\\b\\\\c", {"p", "a\\b\\\\c"}}, // backslashes before no quote stay as they are
        {"\"p\" \"a\"\"b\"", {"p", "a\"b"}},     // "" inside a group is a quote
        {"\"p\" \"\"", {"p", ""}},               // an empty group is an empty argument
        {"\"p\" \"open end", {"p", "open end"}},
        {"\"p\\\" x", {"p\\", "x"}}, // the program knows no escapes
        {"\"a b\"c d", {"a bc", "d"}},
        {"", {}},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(argv_with_command_line(l_row.line), l_row.args) << l_row.line;
    }
}

TEST(process_environment, block_is_sorted_and_skips_empty_keys_and_values)
{
    std::string l_block = "stale";
    ASSERT_TRUE(environment_block_with_map({{"B", "2"}, {"A", "1"}, {"", "x"}, {"C", ""}}, l_block));
    EXPECT_EQ(l_block, std::string("A=1\0B=2\0\0", 9));

    ASSERT_TRUE(environment_block_with_map({}, l_block));
    EXPECT_EQ(l_block, "");
    ASSERT_TRUE(environment_block_with_map({{"A", ""}, {"", "b"}}, l_block));
    EXPECT_EQ(l_block, "");
}

TEST(process_environment, entry_limit_is_4095_characters_and_block_limit_32768_bytes)
{
    std::string l_block;
    // "K=" and a value: 4,095 characters pass, 4,096 do not.
    EXPECT_TRUE(environment_block_with_map({{"K", std::string(4093, 'v')}}, l_block));
    EXPECT_EQ(l_block.size(), 4097u);
    EXPECT_FALSE(environment_block_with_map({{"K", std::string(4094, 'v')}}, l_block));

    // Eight entries of 4,095 characters and their NULs are 32,768 bytes: one byte too many with
    // the closing NUL. Seven fit.
    env_map l_env;
    for (char l_key = 'A'; l_key < 'H'; ++l_key) {
        l_env[std::string(1, l_key)] = std::string(4093, 'v');
    }
    EXPECT_TRUE(environment_block_with_map(l_env, l_block));
    EXPECT_EQ(l_block.size(), 7u * 4096u + 1u);
    l_env["H"] = std::string(4093, 'v');
    EXPECT_THROW(environment_block_with_map(l_env, l_block), es::call);
}

TEST(process, captures_both_output_streams_and_splits_arguments_at_blanks)
{
    run_result const l_result = run_child({"out", "hello", "err", "-oops", "args", "a b", "c"});
    EXPECT_EQ(l_result.output, "hello-oops[a][b][c]");
    EXPECT_EQ(l_result.status, 0);
}

TEST(process, output_arrives_in_pieces_of_at_most_4096_bytes)
{
    recorder l_recorder;
    process l_child("big", child_program(), {"big", "100000"}, {}, "", "", process_capture, &l_recorder);
    ASSERT_TRUE(l_recorder.wait_finished());
    EXPECT_EQ(l_recorder.output(), std::string(100000, 'x'));
    std::vector<unsigned> const l_pieces = l_recorder.pieces();
    EXPECT_GE(l_pieces.size(), 25u);
    for (unsigned l_piece : l_pieces) {
        EXPECT_LE(l_piece, 4096u);
        EXPECT_GT(l_piece, 0u);
    }
    EXPECT_EQ(l_child.get_status(), 0);
}

TEST(process, feeds_standard_input_and_closes_it)
{
    // The child writes as it reads, so its output pipe fills while input still waits: the
    // monitor must take output while the input goes in. Every byte comes back, in order.
    std::string const l_input = ordwel_test::large_input();
    run_result const l_result = run_child({"echo"}, {}, l_input);
    EXPECT_TRUE(l_result.output == l_input) << "the output differs from the input";
    EXPECT_EQ(l_result.status, 0);
    // An empty input is closed at once: the child sees its end and goes on.
    EXPECT_EQ(run_child({"count"}).output, "0 bytes");
}

TEST(process, a_child_that_reads_nothing_does_not_hang_the_monitor)
{
    run_result const l_result = run_child({"exit", "4"}, {}, std::string(300000, 'z'));
    EXPECT_EQ(l_result.status, 4);
}

TEST(process, environment_map_replaces_or_keeps_the_parents)
{
#if defined(_WIN32)
    _putenv("ORDWEL_PARENT_MARK=here");
#else
    setenv("ORDWEL_PARENT_MARK", "here", 1);
#endif
    std::string const l_own = run_child({"env"}, {{"A", "1"}, {"EMPTY", ""}}).output;
    EXPECT_EQ(l_own.rfind("A=1\n", 0), 0u) << l_own;
    EXPECT_EQ(l_own.find("ORDWEL_PARENT_MARK"), std::string::npos) << l_own;
#if !defined(_WIN32)
    // Wine adds a few variables of its own to every child; elsewhere the map is all there is.
    EXPECT_EQ(l_own, "A=1\n");
#endif
    // All entries skipped: the parent's environment.
    std::string const l_inherited = run_child({"env"}, {{"EMPTY", ""}}).output;
    EXPECT_NE(l_inherited.find("ORDWEL_PARENT_MARK=here\n"), std::string::npos) << l_inherited;
}

TEST(process, an_environment_entry_too_long_leaves_no_child)
{
    recorder l_recorder;
    process l_child("long", child_program(), {"exit", "1"}, {{"K", std::string(4094, 'v')}}, "", "", process_capture,
                    &l_recorder);
    EXPECT_EQ(l_child.get_pid(), 0);
    EXPECT_EQ(l_child.get_status(), -1);
    EXPECT_EQ(l_child.get_uptime(), 0.0);
    EXPECT_FALSE(l_recorder.wait_finished(milliseconds(100)));
    l_child.terminate(true);
    l_child.pause();
    l_child.resume();
}

TEST(process, runs_in_the_working_directory)
{
#if defined(_WIN32)
    char l_temp[MAX_PATH];
    GetTempPathA(MAX_PATH, l_temp);
    std::string l_directory = l_temp;
    if (l_directory.size() > 3 && (l_directory.back() == '\\' || l_directory.back() == '/')) {
        l_directory.pop_back();
    }
#else
    std::string const l_directory = "/";
#endif
    EXPECT_EQ(run_child({"cwd"}, {}, "", l_directory).output, l_directory);
}

TEST(process, a_missing_program_raises_with_the_platform_code)
{
    std::string const l_error = ordwel_test::raised_text<es::call>(
        [] { process l_child("none", child_program() + "-missing", {}, {}, "", "", 0, nullptr); });
    EXPECT_EQ(l_error.rfind("failed to create child process (error code ", 0), 0u) << l_error;
}

TEST(process, results_before_and_after_the_end)
{
    recorder l_recorder;
    process l_child("times", child_program(), {"sleep", "200", "exit", "5"}, {}, "", "", 0, &l_recorder);
    EXPECT_EQ(l_child.get_id(), "times");
    EXPECT_NE(l_child.get_pid(), 0);
    EXPECT_EQ(l_child.get_status(), -1);
    EXPECT_EQ(l_child.get_real_time(), 0.0);
    ASSERT_TRUE(l_recorder.wait_finished());
    EXPECT_EQ(l_recorder.status_seen(), 5);
    EXPECT_EQ(l_child.get_status(), 5);
    double const l_real = l_child.get_real_time();
    EXPECT_GE(l_real, 0.15);
    EXPECT_GE(l_child.get_user_time(), 0.0);
    EXPECT_GE(l_child.get_system_time(), 0.0);
    // The uptime grows on after the end, the real time stands.
    double const l_uptime = l_child.get_uptime();
    EXPECT_GE(l_uptime, l_real);
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_GT(l_child.get_uptime(), l_uptime);
    EXPECT_EQ(l_child.get_real_time(), l_real);
    // Once ended, terminate touches nothing.
    l_child.terminate(true);
    EXPECT_EQ(l_child.get_status(), 5);
    EXPECT_EQ(l_recorder.finished_count(), 1);
}

TEST(process, terminate_with_cancel_records_nothing_and_reports_nothing)
{
    recorder l_recorder;
    process l_child("kill", child_program(), {"out", "up", "sleep", "30000"}, {}, "", "", process_capture, &l_recorder);
    ASSERT_TRUE(l_recorder.wait_output("up"));
    l_child.terminate(true);
    EXPECT_FALSE(l_recorder.wait_finished(milliseconds(300)));
    EXPECT_EQ(l_child.get_status(), -1);
    EXPECT_EQ(l_child.get_real_time(), 0.0);
    // A second terminate does no harm.
    l_child.terminate(true);
}

TEST(process, terminate_without_cancel_reports_without_an_exit_code)
{
    recorder l_recorder;
    process l_child("kill", child_program(), {"sleep", "30000"}, {}, "", "", 0, &l_recorder);
    l_child.terminate(false);
    ASSERT_TRUE(l_recorder.wait_finished());
    EXPECT_EQ(l_child.get_status(), -1);
    EXPECT_GT(l_child.get_real_time(), 0.0);
    EXPECT_EQ(l_child.get_user_time(), 0.0);
    l_child.terminate(false);
    EXPECT_EQ(l_recorder.finished_count(), 1);
}

TEST(process, pause_holds_the_child_until_every_pause_is_resumed)
{
    recorder l_recorder;
    process l_child("pause", child_program(), {"cat", "out", "done"}, {}, "", "", process_capture, &l_recorder);
    l_child.pause();
    l_child.pause();
    EXPECT_FALSE(l_recorder.wait_finished(milliseconds(200)));
    l_child.resume();
    EXPECT_FALSE(l_recorder.wait_finished(milliseconds(200)));
    l_child.resume();
    ASSERT_TRUE(l_recorder.wait_finished());
    EXPECT_EQ(l_recorder.output(), "done");
    EXPECT_EQ(l_child.get_status(), 0);
}

TEST(process, terminate_resumes_and_kills_a_paused_child)
{
    recorder l_recorder;
    process l_child("paused", child_program(), {"sleep", "30000"}, {}, "", "", 0, &l_recorder);
    l_child.pause();
    l_child.terminate(false);
    ASSERT_TRUE(l_recorder.wait_finished());
}

TEST(process, destroying_the_object_leaves_the_child_and_the_monitor_quiet)
{
    recorder l_recorder;
    {
        process l_child("gone", child_program(), {"sleep", "100", "out", "late"}, {}, "", "", process_capture,
                        &l_recorder);
    }
    // The child runs on and writes, but the status object, which the owner may have freed, hears
    // nothing of it: neither output nor the end.
    EXPECT_FALSE(l_recorder.wait_output("late", milliseconds(500)));
    EXPECT_FALSE(l_recorder.wait_finished(milliseconds(200)));
}

// A status object that ends the process from its own callback, on the monitor thread.
class self_deleting : public process::status {
public:
    void finished(process *a_process) override
    {
        delete a_process;
        std::lock_guard<std::mutex> l_lock(m_lock);
        m_done = true;
        m_changed.notify_all();
    }
    bool wait()
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        return m_changed.wait_for(l_lock, milliseconds(20000), [this] { return m_done; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_done = false;
};

TEST(process, finished_may_destroy_its_process)
{
    self_deleting l_status;
    new process("self", child_program(), {"exit", "0"}, {}, "", "", 0, &l_status);
    EXPECT_TRUE(l_status.wait());
}

// Children at once, more than the monitor threads kept parked between children, twice over: every
// child is reported once, with its own exit code and output, and the second round finds the
// threads of the first one parked or gone.
TEST(process, many_children_at_once_each_report_once)
{
    constexpr int k_children = 24;
    for (int l_round = 0; l_round < 2; ++l_round) {
        SCOPED_TRACE(l_round);
        std::vector<std::unique_ptr<recorder>> l_recorders;
        std::vector<std::unique_ptr<process>> l_children;
        for (int l_index = 0; l_index < k_children; ++l_index) {
            l_recorders.push_back(std::make_unique<recorder>());
            std::string const l_mark = "c" + std::to_string(l_index);
            bool const l_capture = l_index % 2 == 0;
            std::vector<std::string> l_args = {"sleep", "50", "exit", std::to_string(l_index % 7)};
            if (l_capture) {
                l_args.insert(l_args.begin() + 2, {"out", l_mark});
            }
            l_children.push_back(std::make_unique<process>(l_mark, child_program(), l_args, env_map{}, "",
                                                           l_index % 4 == 0 ? "input" : "",
                                                           l_capture ? process_capture : 0u, l_recorders.back().get()));
        }
        for (int l_index = 0; l_index < k_children; ++l_index) {
            SCOPED_TRACE(l_index);
            ASSERT_TRUE(l_recorders[l_index]->wait_finished());
            EXPECT_EQ(l_recorders[l_index]->status_seen(), l_index % 7);
            EXPECT_EQ(l_children[l_index]->get_status(), l_index % 7);
            EXPECT_EQ(l_recorders[l_index]->output(), l_index % 2 == 0 ? "c" + std::to_string(l_index) : "");
        }
        std::this_thread::sleep_for(milliseconds(50));
        for (auto const &l_recorder : l_recorders) {
            EXPECT_EQ(l_recorder->finished_count(), 1);
        }
    }
}

#if defined(__linux__)
// The threads of this process.
int thread_count()
{
    int l_count = 0;
    if (DIR *const l_tasks = opendir("/proc/self/task")) {
        while (dirent const *const l_entry = readdir(l_tasks)) {
            l_count += l_entry->d_name[0] != '.' ? 1 : 0;
        }
        closedir(l_tasks);
    }
    return l_count;
}
#endif

// Children without captured pipes hold no thread while they run, where the platform lets the
// monitors wait for many children at once: a few threads wait for all of them.
TEST(process, running_children_hold_no_threads_of_their_own)
{
#if defined(__linux__)
    constexpr int k_children = 16;
    int const l_before = thread_count();
    std::vector<std::unique_ptr<recorder>> l_recorders;
    std::vector<std::unique_ptr<process>> l_children;
    for (int l_index = 0; l_index < k_children; ++l_index) {
        l_recorders.push_back(std::make_unique<recorder>());
        l_children.push_back(std::make_unique<process>("s", child_program(), std::vector<std::string>{"sleep", "300"},
                                                       env_map{}, "", "", 0u, l_recorders.back().get()));
    }
    EXPECT_LE(thread_count(), l_before + 2);
    for (auto const &l_recorder : l_recorders) {
        EXPECT_TRUE(l_recorder->wait_finished());
    }
#else
    GTEST_SKIP() << "counts threads in /proc, which only Linux has";
#endif
}

// A status object that starts a second child from finished, on the monitor thread, and waits
// there for that child's end: the second child needs a monitor of its own.
class starts_another : public process::status {
public:
    void finished(process *a_process) override
    {
        m_first_status = a_process->get_status();
        process l_second("second", child_program(), {"exit", "9"}, {}, "", "", 0, &m_second);
        m_second_finished = m_second.wait_finished();
        m_second_status = l_second.get_status();
        std::lock_guard<std::mutex> l_lock(m_lock);
        m_done = true;
        m_changed.notify_all();
    }
    bool wait()
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        return m_changed.wait_for(l_lock, milliseconds(30000), [this] { return m_done; });
    }

    recorder m_second;
    int m_first_status = -2;
    bool m_second_finished = false;
    int m_second_status = -2;

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_done = false;
};

TEST(process, finished_may_start_another_child_and_wait_for_its_end)
{
    starts_another l_status;
    process l_first("first", child_program(), {"exit", "8"}, {}, "", "", 0, &l_status);
    ASSERT_TRUE(l_status.wait());
    EXPECT_EQ(l_status.m_first_status, 8);
    EXPECT_TRUE(l_status.m_second_finished);
    EXPECT_EQ(l_status.m_second_status, 9);
}

// A process made by fork has none of its parent's threads, the parked monitors among them: it
// must watch its own children with threads of its own, and the parent goes on with its.
TEST(process, a_forked_process_watches_children_of_its_own)
{
#if defined(_WIN32)
    GTEST_SKIP() << "Windows has no fork";
#else
    // A monitor is parked in the parent before the fork.
    ASSERT_EQ(run_child({"exit", "3"}).status, 3);
    pid_t const l_fork = fork();
    if (l_fork == 0) {
        int l_code = 1;
        auto *const l_recorder = new recorder;
        // Left undestroyed: a destructor could hang on a monitor that never came.
        auto *const l_child =
            new process("f", child_program(), {"out", "forked", "exit", "6"}, {}, "", "", process_capture, l_recorder);
        if (l_recorder->wait_finished(milliseconds(10000)) && l_child->get_status() == 6 &&
            l_recorder->output() == "forked") {
            l_code = 0;
        }
        _exit(l_code);
    }
    ASSERT_GT(l_fork, 0);
    int l_status = 0;
    for (int l_try = 0; l_try < 3000 && waitpid(l_fork, &l_status, WNOHANG) == 0; ++l_try) {
        std::this_thread::sleep_for(milliseconds(10));
    }
    if (waitpid(l_fork, &l_status, WNOHANG) == 0) {
        kill(l_fork, SIGKILL);
        waitpid(l_fork, &l_status, 0);
        FAIL() << "the forked process hung";
    }
    EXPECT_TRUE(WIFEXITED(l_status) && WEXITSTATUS(l_status) == 0) << "the forked process's child was not reported";
    EXPECT_EQ(run_child({"out", "after", "exit", "4"}).output, "after");
#endif
}

TEST(process, capture_without_status_object_drains_and_drops)
{
    process l_child("quiet", child_program(), {"big", "200000", "exit", "2"}, {}, "", "", process_capture, nullptr);
    for (int l_try = 0; l_try < 2000 && l_child.get_status() == -1; ++l_try) {
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_EQ(l_child.get_status(), 2);
}

// Whether a process is gone (or a zombie nobody has reaped yet), and a way to end it.
#if defined(_WIN32)
bool is_dead(long a_pid)
{
    HANDLE const l_process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(a_pid));
    if (l_process == nullptr) {
        return true;
    }
    bool const l_dead = WaitForSingleObject(l_process, 0) == WAIT_OBJECT_0;
    CloseHandle(l_process);
    return l_dead;
}

void kill_process(long a_pid)
{
    HANDLE const l_process = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(a_pid));
    if (l_process != nullptr) {
        TerminateProcess(l_process, 1);
        CloseHandle(l_process);
    }
}
#else
bool is_dead(long a_pid)
{
    std::ifstream l_stat("/proc/" + std::to_string(a_pid) + "/stat");
    std::string l_text;
    if (!std::getline(l_stat, l_text)) {
        return true;
    }
    std::size_t const l_close = l_text.rfind(')');
    return l_close != std::string::npos && l_text.compare(l_close + 2, 1, "Z") == 0;
}

void kill_process(long a_pid)
{
    kill(static_cast<pid_t>(a_pid), SIGKILL);
}
#endif

TEST(process, terminate_process_tree_reaches_children_but_not_grandchildren)
{
    recorder l_recorder;
    process l_child("tree", child_program(), {"spawn", "spawn", "sleep", "30000"}, {}, "", "", process_capture,
                    &l_recorder);
    ASSERT_TRUE(l_recorder.wait_output("\nchild "));
    std::string const l_output = l_recorder.output();
    // The two lines may come in either order: the grandchild can write before the child does.
    long l_first = 0;
    long l_first_parent = 0;
    long l_second = 0;
    long l_second_parent = 0;
    ASSERT_EQ(std::sscanf(l_output.c_str(), "child %ld of %ld\nchild %ld of %ld", &l_first, &l_first_parent, &l_second,
                          &l_second_parent),
              4)
        << l_output;
    if (l_first_parent == l_second) {
        std::swap(l_first, l_second);
    }
    l_child.terminate_process_tree(false);
    ASSERT_TRUE(l_recorder.wait_finished());
    for (int l_try = 0; l_try < 200 && !is_dead(l_first); ++l_try) {
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_TRUE(is_dead(l_first));
    EXPECT_FALSE(is_dead(l_second));
    kill_process(l_second);
}

} // namespace
