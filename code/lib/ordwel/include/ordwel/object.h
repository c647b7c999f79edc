#ifndef ORDWEL_OBJECT_H
#define ORDWEL_OBJECT_H

#include <atomic>

#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {

// An empty class at the root of the object model.
class ORDWEL_API object {
public:
    object() {}
    object(object const &) {}
    ~object() {}
    object &operator=(object const &) { return *this; }
};

// The base of everything whose life is shared. The count starts at 0 (no owner yet), belongs to
// one instance and is never copied. Counting is atomic, so owners in different threads may retain
// and release one object at once.
class ORDWEL_API object_refcount {
public:
    object_refcount() : m_refcount(0) {}
    object_refcount(object_refcount const &) : m_refcount(0) {}
    // Assignment leaves both counts as they are.
    object_refcount &operator=(object_refcount const &) { return *this; }
    virtual ~object_refcount();

    void retain() const { m_refcount.fetch_add(1, std::memory_order_relaxed); }
    // Takes one reference away; at 0 the object is destroyed through its virtual destructor.
    void release() const
    {
        if (object_refcount const *const l_last = drop()) {
            delete l_last;
        }
    }
    // Takes one reference away without destroying anything. At 0 gives the object's own address:
    // nobody else holds it and its disposal is now the caller's. Else null.
    object_refcount const *drop() const
    {
        return m_refcount.fetch_sub(1, std::memory_order_acq_rel) == 1 ? this : nullptr;
    }
    uint32 refcount() const { return m_refcount.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<uint32> m_refcount;
};

// A handle that keeps an object_refcount alive: it retains on construction from a pointer and on
// copy, and releases on destruction. It may be null.
template <class T> class ptr_refcount {
public:
    ptr_refcount() noexcept : m_ptr(nullptr) {}
    ptr_refcount(decltype(nullptr)) noexcept : m_ptr(nullptr) {}
    // Takes a share of a_ptr: a new object (count 0) is owned by this handle afterwards.
    explicit ptr_refcount(T *a_ptr) : m_ptr(a_ptr) { retain(); }
    ptr_refcount(ptr_refcount const &a_other) : m_ptr(a_other.m_ptr) { retain(); }
    ptr_refcount(ptr_refcount &&a_other) noexcept : m_ptr(a_other.m_ptr) { a_other.m_ptr = nullptr; }
    template <class U> ptr_refcount(ptr_refcount<U> const &a_other) : m_ptr(a_other.get()) { retain(); }
    ~ptr_refcount() { release(); }

    ptr_refcount &operator=(ptr_refcount const &a_other)
    {
        ptr_refcount(a_other).swap(*this);
        return *this;
    }
    ptr_refcount &operator=(ptr_refcount &&a_other) noexcept
    {
        ptr_refcount(static_cast<ptr_refcount &&>(a_other)).swap(*this);
        return *this;
    }

    void reset() { ptr_refcount().swap(*this); }
    void reset(T *a_ptr) { ptr_refcount(a_ptr).swap(*this); }
    void swap(ptr_refcount &a_other) noexcept
    {
        T *const l_ptr = m_ptr;
        m_ptr = a_other.m_ptr;
        a_other.m_ptr = l_ptr;
    }

    T *get() const noexcept { return m_ptr; }
    T &operator*() const noexcept { return *m_ptr; }
    T *operator->() const noexcept { return m_ptr; }
    explicit operator bool() const noexcept { return m_ptr != nullptr; }

private:
    void retain() const
    {
        if (m_ptr != nullptr) {
            m_ptr->retain();
        }
    }
    void release() const
    {
        if (m_ptr != nullptr) {
            m_ptr->release();
        }
    }

    T *m_ptr;
};

template <class T, class U> bool operator==(ptr_refcount<T> const &a_left, ptr_refcount<U> const &a_right) noexcept
{
    return a_left.get() == a_right.get();
}
template <class T, class U> bool operator!=(ptr_refcount<T> const &a_left, ptr_refcount<U> const &a_right) noexcept
{
    return a_left.get() != a_right.get();
}
template <class T> bool operator==(ptr_refcount<T> const &a_left, decltype(nullptr)) noexcept
{
    return a_left.get() == nullptr;
}
template <class T> bool operator!=(ptr_refcount<T> const &a_left, decltype(nullptr)) noexcept
{
    return a_left.get() != nullptr;
}
template <class T, class U> bool operator<(ptr_refcount<T> const &a_left, ptr_refcount<U> const &a_right) noexcept
{
    return a_left.get() < a_right.get();
}

} // namespace ordwel

#endif
