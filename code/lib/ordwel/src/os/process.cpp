// SPDX-License-Identifier: MIT
#include <ordwel/process.h>

#include <algorithm>
#include <cstdio>
#include <thread>

#include <ordwel/condition.h>
#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "diag/raise.h"
#include "os/monitor_pool.h"
#include "platform/process.h"

namespace ordwel {

namespace {

constexpr std::size_t k_environment_size = 32768;
constexpr std::size_t k_entry_size = 4096;
constexpr unsigned k_read_size = 4096;

// How often a thread that must wait for a report's end yields before it sleeps.
constexpr unsigned k_report_end_yields = 64;

} // namespace

// The monitor's body: waits for the child's end, records the results and reports them. It runs on
// a thread of the pool of monitor threads, and only once the child has ended where the platform
// lets the pool wait for that.
class process::watcher : public thread_base {
public:
    explicit watcher(info &a_info) : m_info(a_info) {}
    void operator()() override;

private:
    info &m_info;
};

// Writes the child's whole input and closes the pipe, then lets the monitor report output. It
// runs on a pooled thread of its own, so that the monitor takes output while the input goes in.
class process::input_feeder : public thread_base {
public:
    explicit input_feeder(info &a_info) : m_info(a_info) {}
    void operator()() override;

private:
    info &m_info;
};

// What the monitor shares with its process. The monitor may outlive the object, so everything it
// still reads lives here, kept alive by both. m_lock orders the monitor's recording against the
// destructor and terminate, and every signal to the child against its reaping, so that no signal
// ever reaches a process that reused the child's id.
struct process::info : std::enable_shared_from_this<process::info> {
    mutex m_lock;
    condition m_changed;

    platform::child_record m_child;
    platform::handle m_out_read = platform::k_no_handle;
    platform::handle m_out_write = platform::k_no_handle;
    platform::handle m_in_read = platform::k_no_handle;
    platform::handle m_in_write = platform::k_no_handle;

    bool m_capture = false;
    std::string m_stdin_data;
    process::status *m_listener = nullptr;
    // The object, for the recording and the reports; touched only under m_lock, once m_ready is
    // set and while m_cancelled is not.
    process *m_owner = nullptr;
    watcher m_watcher{*this};
    input_feeder m_feeder{*this};
    // Output that came while the input still went in, reported once all of it is in.
    std::string m_held;
    bool m_input_done = false; // all input is in (or could not go in): output may be reported

    bool m_ready = false;     // the constructor is done with the object
    bool m_cancelled = false; // the monitor is to record and report nothing
    bool m_closed = false;    // terminate closed the child's handles
    bool m_reaped = false;    // the child's id is no longer ours
    bool m_reporting = false; // a call of the status object runs on the monitor
    std::thread::id m_monitor_id;

    ~info()
    {
        platform::handle_close(m_out_read);
        platform::handle_close(m_out_write);
        platform::handle_close(m_in_read);
        platform::handle_close(m_in_write);
        platform::child_release(m_child);
        platform::child_release_wait(m_child);
    }
};

process::status::~status() = default;

void process::status::stdout_data(unsigned char const *, unsigned int)
{
}

std::string command_line_with_args(std::string const &a_program, std::vector<std::string> const &a_args)
{
    std::string l_line = "\"";
    l_line += string_replaced(a_program, "\\", "\\\\");
    l_line += "\" ";
    for (std::string const &l_arg : a_args) {
        l_line += l_arg;
        l_line += ' ';
    }
    return l_line;
}

bool environment_block_with_map(std::map<std::string, std::string> const &a_env, std::string &a_block)
{
    a_block.clear();
    for (auto const &l_entry : a_env) {
        if (l_entry.first.empty() || l_entry.second.empty()) {
            continue;
        }
        std::size_t const l_length = l_entry.first.size() + 1 + l_entry.second.size();
        if (l_length >= k_entry_size) {
            return false;
        }
        // The entry, its NUL and the block's closing NUL must fit.
        if (a_block.size() + l_length + 2 > k_environment_size) {
            diag::raise_format<es::call>(ORDWEL_HERE, "environment block exceeds %u bytes",
                                         static_cast<unsigned>(k_environment_size));
        }
        a_block += l_entry.first;
        a_block += '=';
        a_block += l_entry.second;
        a_block += '\0';
    }
    if (!a_block.empty()) {
        a_block += '\0';
    }
    return true;
}

std::vector<std::string> argv_with_command_line(std::string const &a_command_line)
{
    std::vector<std::string> l_args;
    std::size_t l_pos = 0;
    std::size_t const l_end = a_command_line.size();
    auto const l_blank = [](char a_char) { return a_char == ' ' || a_char == '\t'; };

    // The program: up to the closing quote, or up to the first blank; no escapes.
    if (l_pos < l_end) {
        std::string l_program;
        if (a_command_line[l_pos] == '"') {
            ++l_pos;
            while (l_pos < l_end && a_command_line[l_pos] != '"') {
                l_program += a_command_line[l_pos++];
            }
            if (l_pos < l_end) {
                ++l_pos;
            }
        }
        while (l_pos < l_end && !l_blank(a_command_line[l_pos])) {
            l_program += a_command_line[l_pos++];
        }
        l_args.push_back(l_program);
    }

    for (;;) {
        while (l_pos < l_end && l_blank(a_command_line[l_pos])) {
            ++l_pos;
        }
        if (l_pos >= l_end) {
            break;
        }
        std::string l_arg;
        bool l_quoted = false;
        while (l_pos < l_end && (l_quoted || !l_blank(a_command_line[l_pos]))) {
            char const l_char = a_command_line[l_pos];
            if (l_char == '\\') {
                std::size_t l_count = 0;
                while (l_pos < l_end && a_command_line[l_pos] == '\\') {
                    ++l_count;
                    ++l_pos;
                }
                if (l_pos < l_end && a_command_line[l_pos] == '"') {
                    l_arg.append(l_count / 2, '\\');
                    if (l_count % 2 == 1) {
                        l_arg += '"';
                        ++l_pos;
                    }
                } else {
                    l_arg.append(l_count, '\\');
                }
            } else if (l_char == '"') {
                ++l_pos;
                if (l_quoted && l_pos < l_end && a_command_line[l_pos] == '"') {
                    l_arg += '"';
                    ++l_pos;
                } else {
                    l_quoted = !l_quoted;
                }
            } else {
                l_arg += l_char;
                ++l_pos;
            }
        }
        l_args.push_back(l_arg);
    }
    return l_args;
}

process::process(std::string const &a_id, std::string const &a_program, std::vector<std::string> const &a_args,
                 std::map<std::string, std::string> const &a_env, std::string const &a_working_directory,
                 std::string const &a_stdin_data, unsigned a_flags, status *a_status)
    : m_info(std::make_shared<info>()), m_id(a_id), m_finished(false), m_paused(false), m_status(-1),
      m_starttime(timestamp_with_utc(0, 0)), m_real_time(0.0), m_user_time(0.0), m_system_time(0.0), m_pid(0),
      m_working_directory(a_working_directory), m_stdin_data(a_stdin_data), m_flags(a_flags), m_listener(a_status)
{
    info &l_info = *m_info;
    l_info.m_capture = (m_flags & process_capture) != 0;
    l_info.m_listener = m_listener;

    if (l_info.m_capture) {
        if (platform::pipe_create(l_info.m_out_read, l_info.m_out_write).failed()) {
            es::call::raise(ORDWEL_HERE, "failed to create pipe (child stdout)");
        }
        if (platform::handle_set_uninheritable(l_info.m_out_read).failed()) {
            es::call::raise(ORDWEL_HERE, "failed to configure pipe (child stdout)");
        }
        if (platform::pipe_create(l_info.m_in_read, l_info.m_in_write).failed()) {
            es::call::raise(ORDWEL_HERE, "failed to create pipe");
        }
        if (platform::handle_set_uninheritable(l_info.m_in_write).failed()) {
            es::call::raise(ORDWEL_HERE, "failed to configure pipe (child stdin)");
        }
        l_info.m_stdin_data = m_stdin_data;
    }

    std::string l_environment;
    if (!environment_block_with_map(a_env, l_environment)) {
        return;
    }
    std::string const l_command_line = command_line_with_args(a_program, a_args);

    int const l_error =
        create_child_process(l_command_line.c_str(), l_environment.empty() ? nullptr : l_environment.data());
    if (l_error != 0) {
        diag::raise_format<es::call>(ORDWEL_HERE, "failed to create child process (error code %i)", l_error);
    }
    // The child holds its own copy of its input's read end: the parent's goes at once, so that a
    // child that ends without reading breaks the pipe instead of leaving the monitor's write
    // blocked. The output's write end stays until the monitor ends: the end of the child is seen
    // by the process wait, never by the end of the pipe.
    platform::handle_close(l_info.m_in_read);

    // The monitor comes from a pool of threads kept between children. Without captured pipes
    // it has nothing to do before the child's end, so the pool starts it only then, where it can
    // wait for the child's handle: handing the child over then wakes no thread.
    l_info.m_owner = this;
    try {
        monitor_pool::current()->run(l_info.m_watcher, m_info,
                                     l_info.m_capture ? platform::k_no_handle : l_info.m_child.wait);
    } catch (...) {
        // Nobody would watch or reap the child: it goes before the exception leaves.
        abandon_child(l_info);
        throw;
    }
    // The monitor may already be waiting to report; a report may destroy the object, so nothing
    // here touches it after this, and the record's signal goes out under its lock.
    scoped_mutex::lock l_lock(l_info.m_lock);
    l_info.m_ready = true;
    l_info.m_changed.broadcast();
}

process::~process()
{
    {
        scoped_mutex::lock l_lock(m_info->m_lock);
        cancel_reports(*m_info);
    }
    m_info.reset();
}

std::string const &process::get_id() const
{
    return m_id;
}

int process::get_pid() const
{
    return m_pid;
}

int process::get_status() const
{
    return m_status.load(std::memory_order_relaxed);
}

timestamp process::get_starttime() const
{
    return m_starttime;
}

double process::get_real_time() const
{
    return m_real_time.load(std::memory_order_relaxed);
}

double process::get_user_time() const
{
    return m_user_time.load(std::memory_order_relaxed);
}

double process::get_system_time() const
{
    return m_system_time.load(std::memory_order_relaxed);
}

double process::get_uptime() const
{
    if (m_pid == 0) {
        return get_real_time();
    }
    fraction<unsigned long long> const l_elapsed = timestamp_with_utc(0, 0) - m_starttime;
    return static_cast<double>(l_elapsed.numer()) / static_cast<double>(l_elapsed.denom());
}

void process::pause()
{
    platform::status l_status;
    platform::walk_step l_failed = platform::walk_step::snapshot;
    {
        scoped_mutex::lock l_lock(m_info->m_lock);
        if (m_pid != 0 && !m_info->m_reaped) {
            l_status = platform::child_suspend(m_info->m_child, l_failed);
        }
    }
    if (l_status.failed()) {
        es::call::raise(ORDWEL_HERE, l_failed == platform::walk_step::snapshot
                                         ? "pause failed, CreateToolhelp32Snapshot failed"
                                         : "pause failed, Thread32First failed");
    }
    m_paused = true;
}

void process::resume()
{
    platform::status l_status;
    platform::walk_step l_failed = platform::walk_step::snapshot;
    {
        scoped_mutex::lock l_lock(m_info->m_lock);
        if (m_pid != 0 && !m_info->m_reaped) {
            l_status = platform::child_resume(m_info->m_child, l_failed);
        }
    }
    if (l_status.failed()) {
        es::call::raise(ORDWEL_HERE, l_failed == platform::walk_step::snapshot
                                         ? "resume failed, CreateToolhelp32Snapshot failed"
                                         : "resume failed, Thread32First failed");
    }
    m_paused = false;
}

void process::terminate(bool a_cancel_monitor)
{
    if (a_cancel_monitor) {
        // The monitor's cancellation: it ends at its cancel point, after the child's end, without
        // results and without a report. Cancelling a monitor that has recorded its results
        // changes nothing, but a report still running must end before the caller may drop its
        // status object.
        scoped_mutex::lock l_lock(m_info->m_lock);
        cancel_reports(*m_info);
    }
    {
        scoped_mutex::lock l_guard(m_mutex);
        if (m_finished) {
            return;
        }
    }
    if (m_paused) {
        resume();
    }
    scoped_mutex::lock l_lock(m_info->m_lock);
    if (m_pid != 0 && !m_info->m_reaped) {
        platform::child_kill(m_info->m_child, 0);
    }
    platform::child_release(m_info->m_child);
    m_info->m_closed = true;
}

void process::terminate_process_tree(bool a_cancel_monitor)
{
    {
        scoped_mutex::lock l_lock(m_info->m_lock);
        if (m_pid != 0 && !m_info->m_reaped) {
            platform::child_kill_children(m_info->m_child);
        }
    }
    terminate(a_cancel_monitor);
}

int process::create_child_process(char const *a_command_line, char const *a_environment)
{
    info &l_info = *m_info;
    platform::status const l_status =
        platform::child_create(a_command_line, argv_with_command_line(a_command_line), a_environment,
                               m_working_directory.empty() ? nullptr : m_working_directory.c_str(), l_info.m_capture,
                               l_info.m_in_read, l_info.m_out_write, l_info.m_child);
    if (l_status.failed()) {
        return static_cast<int>(l_status.m_code);
    }
    m_pid = l_info.m_child.pid;
    return 0;
}

void process::cancel_reports(info &a_info)
{
    a_info.m_cancelled = true;
    // A call of the status object on another thread is let to end. On the monitor thread itself
    // (a call that cancels or destroys its own process) it is the caller: waiting would never end.
    if (!a_info.m_reporting || a_info.m_monitor_id == std::this_thread::get_id()) {
        return;
    }
    // Typically finished has just woken this thread and is returning: the monitor clears the
    // flag a few hundred instructions later. Yielding for a while lets it do so without this
    // thread going to sleep and being woken again, which costs far more where an idle processor
    // halts.
    for (unsigned l_round = 0; a_info.m_reporting && l_round < k_report_end_yields; ++l_round) {
        scoped_mutex::unlock l_unlock(a_info.m_lock);
        std::this_thread::yield();
    }
    while (a_info.m_reporting) {
        a_info.m_changed.wait(a_info.m_lock);
    }
}

bool process::owner_reachable(info &a_info)
{
    // A child may end before the constructor has returned; a report that destroys the object
    // must find the constructor done with it.
    while (!a_info.m_ready && !a_info.m_cancelled) {
        a_info.m_changed.wait(a_info.m_lock);
    }
    return !a_info.m_cancelled;
}

void process::abandon_child(info &a_info)
{
    platform::child_kill(a_info.m_child, 0);
    for (;;) {
        platform::wait_result l_result = platform::wait_result::other;
        if (platform::child_wait(a_info.m_child, platform::k_no_handle, l_result).failed() ||
            l_result == platform::wait_result::ended) {
            break;
        }
    }
    platform::child_outcome l_outcome;
    platform::child_collect(a_info.m_child, l_outcome);
    a_info.m_reaped = true;
    platform::child_release(a_info.m_child);
    platform::child_release_wait(a_info.m_child);
    platform::handle_close(a_info.m_out_read);
    platform::handle_close(a_info.m_out_write);
    platform::handle_close(a_info.m_in_write);
}

void process::report_output(info &a_info, unsigned char const *a_data, unsigned a_size)
{
    process::status *l_listener = nullptr;
    {
        scoped_mutex::lock l_lock(a_info.m_lock);
        // Without a status object, or once cancelled, the output is read and dropped, so that
        // the child never blocks on a full pipe.
        if (!owner_reachable(a_info) || a_info.m_listener == nullptr) {
            return;
        }
        l_listener = a_info.m_listener;
        a_info.m_reporting = true;
    }
    l_listener->stdout_data(a_data, a_size);
    {
        scoped_mutex::lock l_lock(a_info.m_lock);
        a_info.m_reporting = false;
    }
    a_info.m_changed.broadcast();
}

void process::report_held(info &a_info)
{
    std::string l_held;
    {
        scoped_mutex::lock l_lock(a_info.m_lock);
        l_held.swap(a_info.m_held);
    }
    for (std::size_t l_pos = 0; l_pos < l_held.size(); l_pos += k_read_size) {
        std::size_t const l_size = std::min<std::size_t>(k_read_size, l_held.size() - l_pos);
        report_output(a_info, reinterpret_cast<unsigned char const *>(l_held.data()) + l_pos,
                      static_cast<unsigned>(l_size));
    }
}

void process::take_output(info &a_info, unsigned char const *a_data, unsigned a_size)
{
    bool l_input_done = false;
    {
        scoped_mutex::lock l_lock(a_info.m_lock);
        l_input_done = a_info.m_input_done;
        if (!l_input_done && !a_info.m_cancelled) {
            // The status object sees no output before all input is in; until then the output
            // waits here, so that a child blocked on its full output pipe never stops reading.
            a_info.m_held.append(reinterpret_cast<char const *>(a_data), a_size);
            return;
        }
    }
    if (l_input_done) {
        report_held(a_info);
    }
    report_output(a_info, a_data, a_size);
}

void process::drain_output(info &a_info)
{
    unsigned char l_buffer[k_read_size];
    unsigned l_available = 0;
    if (platform::pipe_available(a_info.m_out_read, l_available).failed()) {
        return;
    }
    while (l_available > 0) {
        unsigned l_read = 0;
        if (platform::pipe_read(a_info.m_out_read, l_buffer, k_read_size, l_read).failed() || l_read == 0) {
            break;
        }
        take_output(a_info, l_buffer, l_read);
        if (platform::pipe_available(a_info.m_out_read, l_available).failed()) {
            break;
        }
    }
}

void process::read_child_output()
{
    drain_output(*m_info);
}

void process::input_feeder::operator()()
{
    // A failed write (the child ended without reading all) counts as done: the rest of the
    // input has nowhere to go.
    platform::pipe_write(m_info.m_in_write, m_info.m_stdin_data.data(), m_info.m_stdin_data.size());
    platform::handle_close(m_info.m_in_write);
    scoped_mutex::lock l_lock(m_info.m_lock);
    m_info.m_input_done = true;
    m_info.m_changed.broadcast();
}

void process::start_feeding(info &a_info)
{
    if (!a_info.m_stdin_data.empty()) {
        try {
            monitor_pool::current()->run(a_info.m_feeder, a_info.shared_from_this());
            return;
        } catch (es::call const &) {
            // No thread for the input: it goes in here, before any output is read, which is
            // enough for input that fits the pipe.
        }
    }
    a_info.m_feeder();
}

void process::operator()()
{
    // The monitor's work is the shared record's, which may outlive this object: it runs on a
    // thread of the pool of monitor threads (watcher), and nothing is left to run here.
}

void process::watcher::operator()()
{
    watch(m_info);
}

void process::watch(info &a_info)
{
    // The pool keeps the record alive while this runs. The object itself is touched only under
    // the record's lock, once the constructor is done with it and while the monitor is not
    // cancelled: the destructor cancels it under that lock.
    {
        scoped_mutex::lock l_lock(a_info.m_lock);
        a_info.m_monitor_id = std::this_thread::get_id();
    }

    // The input goes in on another thread while this one takes the output, so that no size of
    // input deadlocks against a child that writes as it reads.
    if (a_info.m_capture) {
        start_feeding(a_info);
    }

    platform::handle const l_output = a_info.m_capture ? a_info.m_out_read : platform::k_no_handle;
    for (bool l_waiting = true; l_waiting;) {
        platform::wait_result l_result = platform::wait_result::other;
        platform::status const l_status = platform::child_wait(a_info.m_child, l_output, l_result);
        if (l_status.failed()) {
            platform::handle_close(a_info.m_out_read);
            std::fprintf(stderr, "WaitForSingleObject returned error: %i\n", static_cast<int>(l_status.m_code));
            return;
        }
        switch (l_result) {
        case platform::wait_result::ended:
            l_waiting = false;
            break;
        case platform::wait_result::timeout:
            if (a_info.m_capture) {
                drain_output(a_info);
            }
            break;
        case platform::wait_result::other:
            break;
        }
    }

    if (a_info.m_capture) {
        drain_output(a_info);
        {
            // The child has ended, so the feeder's write ends too (the pipe broke, if nothing
            // else).
            scoped_mutex::lock l_lock(a_info.m_lock);
            while (!a_info.m_input_done) {
                a_info.m_changed.wait(a_info.m_lock);
            }
        }
        report_held(a_info);
        platform::handle_close(a_info.m_out_read);
        platform::handle_close(a_info.m_out_write);
    }

    platform::child_outcome l_outcome;
    process::status *l_listener = nullptr;
    process *l_owner = nullptr;
    {
        scoped_mutex::lock l_lock(a_info.m_lock);
        platform::child_collect(a_info.m_child, l_outcome);
        a_info.m_reaped = true;
        if (!owner_reachable(a_info)) {
            return;
        }
        l_owner = a_info.m_owner;
        {
            scoped_mutex::lock l_guard(l_owner->m_mutex);
            l_owner->m_finished = true;
            // Once terminate has closed the child's handles, neither the exit code nor the
            // times can be read any more.
            if (l_outcome.has_code && !a_info.m_closed) {
                l_owner->m_status = l_outcome.code;
            }
            fraction<unsigned long long> const l_elapsed = timestamp_with_utc(0, 0) - l_owner->m_starttime;
            l_owner->m_real_time = static_cast<double>(l_elapsed.numer()) / static_cast<double>(l_elapsed.denom());
            if (l_outcome.has_times && !a_info.m_closed) {
                l_owner->m_user_time = static_cast<double>(l_outcome.user) / 10000000.0;
                l_owner->m_system_time = static_cast<double>(l_outcome.kernel) / 10000000.0;
            }
        }
        l_listener = a_info.m_listener;
        a_info.m_reporting = l_listener != nullptr;
    }
    if (l_listener != nullptr) {
        l_listener->finished(l_owner);
        {
            scoped_mutex::lock l_lock(a_info.m_lock);
            a_info.m_reporting = false;
        }
        a_info.m_changed.broadcast();
    }
}

} // namespace ordwel
