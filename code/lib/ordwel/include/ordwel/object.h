// SPDX-License-Identifier: MIT
#ifndef ORDWEL_OBJECT_H
#define ORDWEL_OBJECT_H

#include <atomic>

#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {

/// An empty class at the root of the object model. It has no state: copying and assigning do
/// nothing.
class ORDWEL_API object {
public:
    object() {}
    /// Copies nothing.
    object(object const &) {}
    ~object() {}
    /// Assigns nothing; gives *this.
    object &operator=(object const &) { return *this; }
};

/// The base of everything whose life is shared. The count starts at 0 (no owner yet), belongs to
/// one instance and is never copied. Counting is atomic, so owners in different threads may retain
/// and release one object at once. An object released to 0 must have been made with new.
class ORDWEL_API object_refcount {
public:
    /// A count of 0.
    object_refcount() : m_refcount(0) {}
    /// A count of 0: the count is not copied.
    object_refcount(object_refcount const &) : m_refcount(0) {}
    /// Assignment leaves both counts as they are.
    object_refcount &operator=(object_refcount const &) { return *this; }
    virtual ~object_refcount();

    /// Adds one reference.
    void retain() const { m_refcount.fetch_add(1, std::memory_order_relaxed); }
    /// Takes one reference away; at 0 the object is destroyed through its virtual destructor.
    void release() const
    {
        if (object_refcount const *const l_last = drop()) {
            delete l_last;
        }
    }
    /// Takes one reference away without destroying anything. At 0 gives the object's own address:
    /// nobody else holds it and its disposal is now the caller's. Else null.
    object_refcount const *drop() const
    {
        return m_refcount.fetch_sub(1, std::memory_order_acq_rel) == 1 ? this : nullptr;
    }
    /// The present count; only a snapshot while other threads hold the object.
    [[nodiscard]] uint32 refcount() const { return m_refcount.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<uint32> m_refcount;
};

/// A handle that keeps an object_refcount alive: it retains on construction from a pointer and on
/// copy, and releases on destruction. It may be null.
template <class T> class ptr_refcount {
public:
    /// A null handle.
    ///@{
    ptr_refcount() noexcept : m_ptr(nullptr) {}
    ptr_refcount(decltype(nullptr)) noexcept : m_ptr(nullptr) {}
    ///@}
    /// Takes a share of a_ptr: a new object (count 0) is owned by this handle afterwards.
    explicit ptr_refcount(T *a_ptr) : m_ptr(a_ptr) { retain(); }
    /// Another share of the other's object.
    ptr_refcount(ptr_refcount const &a_other) : m_ptr(a_other.m_ptr) { retain(); }
    /// Takes over the other's share; the other is null afterwards.
    ptr_refcount(ptr_refcount &&a_other) noexcept : m_ptr(a_other.m_ptr) { a_other.m_ptr = nullptr; }
    /// A share of the other's object, whose type converts to T *.
    template <class U> ptr_refcount(ptr_refcount<U> const &a_other) : m_ptr(a_other.get()) { retain(); }
    /// Gives up the share, which destroys the object when it was the last.
    ~ptr_refcount() { release(); }

    /// Holds the other's object instead, with a share of its own; self-assignment is safe.
    ptr_refcount &operator=(ptr_refcount const &a_other)
    {
        ptr_refcount(a_other).swap(*this);
        return *this;
    }
    /// Takes over the other's share and gives up its own; the other is null afterwards.
    ptr_refcount &operator=(ptr_refcount &&a_other) noexcept
    {
        ptr_refcount(static_cast<ptr_refcount &&>(a_other)).swap(*this);
        return *this;
    }

    /// Gives up the share; the handle is null afterwards.
    void reset() { ptr_refcount().swap(*this); }
    /// Gives up the share and takes one of a_ptr instead.
    void reset(T *a_ptr) { ptr_refcount(a_ptr).swap(*this); }
    /// Exchanges the objects of the two handles; no count changes.
    void swap(ptr_refcount &a_other) noexcept
    {
        T *const l_ptr = m_ptr;
        m_ptr = a_other.m_ptr;
        a_other.m_ptr = l_ptr;
    }

    /// The object, or null.
    [[nodiscard]] T *get() const noexcept { return m_ptr; }
    /// The object; not for a null handle.
    ///@{
    [[nodiscard]] T &operator*() const noexcept { return *m_ptr; }
    [[nodiscard]] T *operator->() const noexcept { return m_ptr; }
    ///@}
    /// Whether the handle holds an object.
    [[nodiscard]] explicit operator bool() const noexcept { return m_ptr != nullptr; }

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

/// Comparisons of the objects' addresses, and against null.
///@{
template <class T, class U>
[[nodiscard]] bool operator==(ptr_refcount<T> const &a_left, ptr_refcount<U> const &a_right) noexcept
{
    return a_left.get() == a_right.get();
}
template <class T, class U>
[[nodiscard]] bool operator!=(ptr_refcount<T> const &a_left, ptr_refcount<U> const &a_right) noexcept
{
    return a_left.get() != a_right.get();
}
template <class T> [[nodiscard]] bool operator==(ptr_refcount<T> const &a_left, decltype(nullptr)) noexcept
{
    return a_left.get() == nullptr;
}
template <class T> [[nodiscard]] bool operator!=(ptr_refcount<T> const &a_left, decltype(nullptr)) noexcept
{
    return a_left.get() != nullptr;
}
template <class T, class U>
[[nodiscard]] bool operator<(ptr_refcount<T> const &a_left, ptr_refcount<U> const &a_right) noexcept
{
    return a_left.get() < a_right.get();
}
///@}

} // namespace ordwel

#endif
