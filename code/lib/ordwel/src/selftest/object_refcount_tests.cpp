// SPDX-License-Identifier: MIT
// The self-test units "object_refcount" and "object" of suite "ordwel".
#include <ordwel/es.h>
#include <ordwel/object.h>
#include <ordwel/test.h>

namespace ordwel {
namespace test {

// Read by the registry's accessor, so that a static link keeps this file's units.
extern int const g_anchor_object_refcount_tests;
int const g_anchor_object_refcount_tests = 1;

namespace {

class t__unit__object_refcount : public unit {
public:
    t__unit__object_refcount() : unit("ordwel", "object_refcount")
    {
        testcase("default creation", default_creation);
        testcase("trivial copy creation", trivial_copy_creation);
        testcase("copy creation", copy_creation);
        testcase("new, retain and release", new_retain_release);
    }

private:
    static void default_creation()
    {
        object_refcount const l_object;
        if (l_object.refcount() != 0) {
            fail::raise(ORDWEL_HERE, nullptr);
        }
    }

    static void trivial_copy_creation()
    {
        object_refcount const l_object;
        object_refcount const l_copy(l_object);
        if (l_copy.refcount() != 0) {
            fail::raise(ORDWEL_HERE, nullptr);
        }
    }

    // The count belongs to the instance: a copy of a retained object starts with none.
    static void copy_creation()
    {
        object_refcount l_object;
        l_object.retain();
        l_object.retain();
        object_refcount const l_copy(l_object);
        bool const l_ok = l_copy.refcount() == 0 && l_object.refcount() == 2;
        static_cast<void>(l_object.drop());
        static_cast<void>(l_object.drop());
        if (!l_ok) {
            fail::raise(ORDWEL_HERE, nullptr);
        }
    }

    static void new_retain_release()
    {
        // The subject: a heap object that tells when its destructor has run.
        class refcounted : public object_refcount {
        public:
            explicit refcounted(bool &a_destroyed) : m_destroyed(a_destroyed) {}
            ~refcounted() override { m_destroyed = true; }

        private:
            bool &m_destroyed;
        };

        bool l_destroyed = false;
        refcounted *const l_object = new refcounted(l_destroyed);
        // Until the final release the object is this case's: a failed check frees it on the way out.
        struct owner {
            refcounted *m_object;
            ~owner() { delete m_object; }
        } l_owner{l_object};

        l_object->retain();
        if (l_object->refcount() != 1) {
            fail::raise(ORDWEL_HERE, "invalid reference count");
        }
        l_object->retain();
        if (l_object->refcount() != 2) {
            fail::raise(ORDWEL_HERE, "invalid reference count");
        }
        if (l_object->drop() != nullptr) {
            fail::raise(ORDWEL_HERE, "invalid pointer returned");
        }
        if (l_object->refcount() != 1) {
            fail::raise(ORDWEL_HERE, "invalid reference count");
        }
        if (l_object->drop() != l_object) {
            fail::raise(ORDWEL_HERE, "invalid pointer returned");
        }
        if (l_object->refcount() != 0 || l_destroyed) {
            fail::raise(ORDWEL_HERE, "invalid reference count");
        }
        l_object->retain();
        if (l_object->refcount() != 1) {
            fail::raise(ORDWEL_HERE, "invalid reference count");
        }
        l_owner.m_object = nullptr;
        l_object->release();
        if (!l_destroyed) {
            fail::raise(ORDWEL_HERE, "destructor not called");
        }
    }
};

// An object has nothing to check: its cases pass if the class compiles.
class t__unit__object : public unit {
public:
    t__unit__object() : unit("ordwel", "object")
    {
        testcase("default creation", default_creation);
        testcase("copy creation", copy_creation);
    }

private:
    static void default_creation() { object const l_object; }

    static void copy_creation()
    {
        object const l_object;
        object const l_copy(l_object);
        static_cast<void>(l_copy);
    }
};

t__unit__object_refcount const g_unit_object_refcount;
t__unit__object const g_unit_object;

} // namespace
} // namespace test
} // namespace ordwel
