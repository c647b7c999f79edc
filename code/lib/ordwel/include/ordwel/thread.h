// SPDX-License-Identifier: MIT
#ifndef ORDWEL_THREAD_H
#define ORDWEL_THREAD_H

#include <ordwel/export.h>

namespace ordwel {

/// What a thread runs. terminate() asks a running body to stop; it is called from another thread
/// while the body runs, so a derived class makes it safe for that.
class ORDWEL_API thread_base {
public:
    /// An empty base.
    thread_base() = default;
    /// Copying a body copies nothing of the base.
    ///@{
    thread_base(thread_base const &) {}
    thread_base &operator=(thread_base const &) { return *this; }
    ///@}
    /// Does nothing; a derived body that owns its thread sees it ended before its data goes.
    virtual ~thread_base();

    /// The request to stop, called from another thread while the body runs. Does nothing here.
    virtual void terminate();
    /// The body: what the thread runs. An exception that leaves it ends the process.
    virtual void operator()() = 0;
};

/// A handle over a POSIX thread. The body belongs to the caller and must outlive the thread. When
/// the handle goes (or starts another body) it stops its thread: terminate() on the body, a
/// cancellation as well while an exception unwinds the caller, and a join. An exception that leaves
/// a body ends the process with a message.
class ORDWEL_API thread {
public:
    /// No body, no thread.
    thread();
    /// Starts a thread that runs a_body; raises es::call "thread create failed" when it cannot.
    explicit thread(thread_base &a_body);
    /// Stops the thread (see the class); a thread that destroys its own handle is detached instead.
    ~thread();

    thread(thread const &) = delete;
    thread &operator=(thread const &) = delete;

    /// Stops the thread running, if any, then starts one that runs a_body. Raises es::call "thread
    /// create failed" when it cannot; the handle then holds the body and no thread.
    void start(thread_base &a_body);
    /// Waits for the thread to end by itself and clears the handle. From the thread itself it does
    /// nothing; on a detached thread it raises, since that thread can no longer be joined.
    void join();
    /// The thread runs on unjoined; the handle still calls terminate() on the body when it goes.
    void detach();
    /// Asks for the thread's cancellation (es::call "thread cancel failed" when refused), or sends
    /// it the signal a_signal (es::call "thread signal failed"). Both do nothing without a thread,
    /// and raise on a detached thread: it may have ended, and its handle with it.
    ///@{
    void cancel();
    void signal(int a_signal);
    ///@}

    /// A point where a pending cancellation of the calling thread takes effect.
    static void cancel_point();
    /// Ends the calling thread at once.
    [[noreturn]] static void exit();
    /// Lets other threads run; raises es::call "thread yield failed" when the platform refuses.
    static void yield();

    /// The bytes reserved in the object for the platform's thread handle.
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
