// SPDX-License-Identifier: MIT
#ifndef ORDWEL_PROCESS_H
#define ORDWEL_PROCESS_H

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <ordwel/export.h>
#include <ordwel/mutex.h>
#include <ordwel/thread.h>
#include <ordwel/timestamp.h>
#include <ordwel/types.h>

namespace ordwel {

/// The one flag of process: the child's standard input comes from the text given to the
/// constructor, and its standard output and error arrive at the status object in pieces.
constexpr unsigned process_capture = 1;

/// One child program, started by the constructor and watched by a monitor thread that serves this
/// child alone until its end. There is no start call and no wait call: a caller learns of the end
/// through its status object (finished) or by polling the getters. The destructor does not kill
/// the child; a caller who wants it gone calls terminate first. After the destructor the monitor
/// still waits for the child's end, reaps it and reports nothing: once the destructor has
/// returned, no call of the status object runs or starts, so the caller may free it (a destructor
/// called from inside a call on the monitor thread returns at once; that call itself is the
/// caller's).
///
/// Monitor threads are kept by the library between children: one that has reported its child
/// waits, parked, for the next, and a few such threads stay parked at most. On Linux a child
/// without process_capture holds no thread until it ends: the parked threads wait on all such
/// children at once, and one of them takes the child up at its end. The parked threads end before
/// the process forks, and on POSIX when the library is unloaded or the process exits; a monitor
/// still watching a child ends with that child.
class ORDWEL_API process : public thread_base {
public:
    /// What the monitor tells its caller. Both calls come on the monitor thread, with no lock of
    /// the process held.
    class ORDWEL_API status {
    public:
        /// The interface holds no state: constructing, copying and assigning do nothing.
        ///@{
        status() = default;
        status(status const &) {}
        status &operator=(status const &) { return *this; }
        ///@}
        /// Destroyed by its owner, which keeps it alive as long as the child runs.
        virtual ~status();

        /// Once, when every result of a_process is final. Not called when the monitor was cancelled
        /// or its wait failed.
        virtual void finished(process *a_process) = 0;
        /// A piece of at most 4,096 bytes of the child's output, standard output and standard
        /// error mixed as the child wrote them; with process_capture only. Does nothing by default.
        virtual void stdout_data(unsigned char const *a_data, unsigned int a_size);
    };

    /// Starts a_program with a_args (see command_line_with_args), the environment a_env (empty:
    /// the parent's; see environment_block_with_map), in a_working_directory (empty: the
    /// parent's). Raises es::call when a pipe, the child or the monitor thread cannot be made; a
    /// child started before the monitor failed is killed and reaped first. With process_capture
    /// the input goes in while the output is taken, so input of any size works; no output is
    /// reported before all input is in. An environment entry of
    /// 4,096 characters or more leaves the object with no child and raises nothing.
    process(std::string const &a_id, std::string const &a_program, std::vector<std::string> const &a_args,
            std::map<std::string, std::string> const &a_env, std::string const &a_working_directory,
            std::string const &a_stdin_data, unsigned a_flags, status *a_status);
    /// Cancels the monitor and frees the object; the child runs on.
    ~process() override;

    process(process const &) = delete;
    process &operator=(process const &) = delete;

    /// The caller's name for this child, as given to the constructor. None of the getters locks: a
    /// value read while the child ends may still be the old one.
    [[nodiscard]] std::string const &get_id() const;
    /// The child's process id; 0 when no child was started.
    [[nodiscard]] int get_pid() const;
    /// -1 until the child has ended and its exit code could be read.
    [[nodiscard]] int get_status() const;
    /// The UTC time taken just before the child was created.
    [[nodiscard]] timestamp get_starttime() const;
    /// Seconds from the start to the moment the monitor saw the end; 0 until then.
    [[nodiscard]] double get_real_time() const;
    /// Seconds of processor time the child spent in user mode and in the kernel; 0 until the end,
    /// and 0 when the platform does not tell.
    ///@{
    [[nodiscard]] double get_user_time() const;
    [[nodiscard]] double get_system_time() const;
    ///@}
    /// Seconds since the start, growing on after the end; the real time when no child exists.
    [[nodiscard]] double get_uptime() const;

    /// Suspends or resumes every thread of the child; suspensions count, so two pauses take two
    /// resumes. Raises es::call when the child's threads cannot be listed.
    ///@{
    void pause();
    void resume();
    ///@}
    /// Kills a child that has not ended yet. With a_cancel_monitor the monitor records nothing
    /// and never calls finished, and once this returns no call of the status object runs or
    /// starts (as after the destructor). Otherwise it reports, but the exit code and processor times can
    /// no longer be read: they stay -1 and 0.
    void terminate(bool a_cancel_monitor);
    /// Kills the child's direct children (not theirs), then the child.
    void terminate_process_tree(bool a_cancel_monitor);
    /// thread_base's request to stop, which does nothing here.
    using thread_base::terminate;

    /// thread_base's body, not for callers. It does nothing: the monitor's work belongs to a record
    /// that the object shares with its monitor thread, and runs there.
    void operator()() override;

private:
    struct info;
    class watcher;
    class input_feeder;

    static void cancel_reports(info &a_info);
    static bool owner_reachable(info &a_info);
    static void abandon_child(info &a_info);
    static void report_output(info &a_info, unsigned char const *a_data, unsigned a_size);
    static void report_held(info &a_info);
    static void take_output(info &a_info, unsigned char const *a_data, unsigned a_size);
    static void drain_output(info &a_info);
    static void start_feeding(info &a_info);
    static void watch(info &a_info);
    int create_child_process(char const *a_command_line, char const *a_environment);
    void read_child_output();

    std::shared_ptr<info> m_info;
    // Never started: the monitor runs on a thread of the library's pool of monitor threads.
    thread m_monitor;
    mutex m_mutex;
    std::string m_id;
    std::atomic<bool> m_finished;
    std::atomic<bool> m_paused;
    std::atomic<sint32> m_status;
    timestamp m_starttime;
    std::atomic<double> m_real_time;
    std::atomic<double> m_user_time;
    std::atomic<double> m_system_time;
    sint32 m_pid;
    std::string m_working_directory;
    std::string m_stdin_data;
    unsigned m_flags;
    status *m_listener;
};

/// The child's command line: the program in double quotes with each backslash doubled, a blank,
/// then each argument followed by one blank. Arguments are neither quoted nor escaped, so one
/// with a blank reaches the child as two.
[[nodiscard]] ORDWEL_API std::string command_line_with_args(std::string const &a_program,
                                                            std::vector<std::string> const &a_args);

/// The child's environment block: "key=value" entries with their NULs, in key order, and one more
/// NUL to close it; an entry with an empty key or value is left out. An empty a_block (the map was
/// empty or all its entries were left out) means the parent's environment. Returns false, with
/// a_block unspecified, for an entry of 4,096 characters or more; raises es::call when the whole
/// block would exceed 32,768 bytes.
ORDWEL_API bool environment_block_with_map(std::map<std::string, std::string> const &a_env, std::string &a_block);

/// The arguments that a Windows program's runtime reads from a command line: blanks and tabs
/// separate, double quotes group, 2n backslashes before a quote give n and open or close a
/// group, 2n+1 give n and a literal quote, "" inside a group gives a literal quote, other
/// backslashes are literal. The first argument, the program, ends at its closing quote or the
/// first blank and knows no escapes.
[[nodiscard]] ORDWEL_API std::vector<std::string> argv_with_command_line(std::string const &a_command_line);

} // namespace ordwel

#endif
