#ifndef ORDWEL_THREAD_H
#define ORDWEL_THREAD_H

#include <ordwel/export.h>

namespace ordwel {

/// What a thread runs. terminate() asks a running body to stop; it is called from another thread
/// while the body runs, so a derived class makes it safe for that.
class ORDWEL_API thread_base {
public:
    thread_base() = default;
    /// Copying a body copies nothing of the base.
    thread_base(thread_base const &) {}
    thread_base &operator=(thread_base const &) { return *this; }
    virtual ~thread_base();

    virtual void terminate();
    virtual void operator()() = 0;
};

/// A handle over a POSIX thread. The body belongs to the caller and must outlive the thread. When
/// the handle goes (or starts another body) it stops its thread: terminate() on the body, a
/// cancellation as well while an exception unwinds the caller, and a join. An exception that leaves
/// a body ends the process with a message.
class ORDWEL_API thread {
public:
    thread();
    explicit thread(thread_base &a_body);
    ~thread();

    thread(thread const &) = delete;
    thread &operator=(thread const &) = delete;

    void start(thread_base &a_body);
    /// Waits for the thread to end by itself and clears the handle. From the thread itself it does
    /// nothing; on a detached thread it raises, since that thread can no longer be joined.
    void join();
    /// The thread runs on unjoined; the handle still calls terminate() on the body when it goes.
    void detach();
    /// cancel and signal raise on a detached thread: it may have ended, and its handle with it.
    void cancel();
    void signal(int a_signal);

    static void cancel_point();
    [[noreturn]] static void exit();
    static void yield();

    static constexpr unsigned k_native_size = 8;

private:
    void stop() noexcept;

    thread_base *m_body;
    alignas(8) unsigned char m_handle[k_native_size];
    bool m_attached;
    bool m_detached;
};

} // namespace ordwel

#endif
