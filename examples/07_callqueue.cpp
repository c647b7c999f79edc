// SPDX-License-Identifier: MIT
#include <cstdio>

#include <ordwel/ordwel.h>

using namespace ordwel;

struct hello : callqueue_object {
    void operator()() override { std::printf("hello from the owner\n"); }
};

struct worker : thread_base {
    semaphore m_done;
    void operator()() override
    {
        callqueue::instance().add_call(ptr_refcount<callqueue_object>(new hello), "hello", callqueue_blocking);
        m_done.post();
    }
};

int main()
{
    callqueue &queue = callqueue::instance();         // the first caller owns the queue
    worker body;
    {
        thread runner(body);                          // stopped and joined when it goes
        while (!body.m_done.wait(timestamp(10, 1000))) {   // wait up to 10 ms, then run what is queued
            queue.run();
        }
    }
    queue.exit();
}
