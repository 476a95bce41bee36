// SPDX-License-Identifier: MIT
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <utility>

namespace velkor {

// Owns one Core Foundation reference and releases it exactly once. The
// constructor adopts a reference obtained under the Create or Copy rule;
// retain() takes an extra reference to one obtained under the Get rule.
template <typename T> class CFRef
{
public:
    CFRef() = default;
    explicit CFRef(T adopted) : m_ref(adopted) {}
    ~CFRef() { reset(); }

    static CFRef retain(T borrowed)
    {
        if (borrowed)
            CFRetain(borrowed);
        return CFRef(borrowed);
    }

    CFRef(const CFRef& other) : m_ref(other.m_ref)
    {
        if (m_ref)
            CFRetain(m_ref);
    }
    CFRef(CFRef&& other) noexcept : m_ref(std::exchange(other.m_ref, nullptr)) {}
    CFRef& operator=(CFRef other) noexcept
    {
        std::swap(m_ref, other.m_ref);
        return *this;
    }

    T get() const { return m_ref; }
    explicit operator bool() const { return m_ref != nullptr; }

    // For Copy calls that hand their result back through a pointer.
    T* receive()
    {
        reset();
        return &m_ref;
    }

    void reset()
    {
        if (m_ref)
            CFRelease(m_ref);
        m_ref = nullptr;
    }

private:
    T m_ref = nullptr;
};

} // namespace velkor
