#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#if defined(__SANITIZE_THREAD__)
#define KELVANE_THREAD_CHECKER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KELVANE_THREAD_CHECKER 1
#endif
#endif

#ifdef KELVANE_THREAD_CHECKER
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace kelvane {

// Qt hands work, calls and results from thread to thread under locks of its own, which the thread
// checker cannot see while Qt itself is not built for it: to the checker, everything a task reads
// of what its poster wrote would look unsynchronised. These mark the same hand-offs in Kelvane's
// own code, so that the checker knows what Qt guarantees and reports only what it does not.
// Outside the checker they are nothing.
//
// `handOver(token)`: what this thread wrote so far belongs to whoever takes `token` over next.
// `takeOver(token)`: this thread goes on from where the last hand-over of `token` left things.
inline void handOver([[maybe_unused]] const void* token)
{
#ifdef KELVANE_THREAD_CHECKER
    __tsan_release(const_cast<void*>(token));
#endif
}

inline void takeOver([[maybe_unused]] const void* token)
{
#ifdef KELVANE_THREAD_CHECKER
    __tsan_acquire(const_cast<void*>(token));
#endif
}

// A value that crosses threads inside Qt: a task given to a pool or a queued call (call it), or a
// future's result (dereference it). Every copy takes over what its source was handed and hands
// itself over once made, so that the copy Qt finally keeps carries the writes of the thread that
// made it; a call or a read takes over before touching the value.
template <class T>
class Handed {
public:
    Handed() requires std::is_default_constructible_v<T> { handOver(this); }
    Handed(T value)
        : m_value(std::move(value))
    {
        handOver(this);
    }
    Handed(const Handed& other)
        : m_value((takeOver(&other), other.m_value))
    {
        handOver(this);
    }
    Handed(Handed&& other) noexcept(std::is_nothrow_move_constructible_v<T>)
        : m_value((takeOver(&other), std::move(other.m_value)))
    {
        handOver(this);
    }
    Handed& operator=(const Handed& other)
    {
        takeOver(this);
        takeOver(&other);
        m_value = other.m_value;
        handOver(this);
        return *this;
    }
    Handed& operator=(Handed&& other) noexcept(std::is_nothrow_move_assignable_v<T>)
    {
        takeOver(this);
        takeOver(&other);
        m_value = std::move(other.m_value);
        handOver(this);
        return *this;
    }
    ~Handed() { takeOver(this); }

    T& operator*()
    {
        takeOver(this);
        return m_value;
    }
    const T& operator*() const
    {
        takeOver(this);
        return m_value;
    }
    T* operator->() { return &**this; }
    const T* operator->() const { return &**this; }

    // Runs the task; what it wrote is handed over under `this` again, for whoever destroys it.
    template <class... Args>
    decltype(auto) operator()(Args&&... args)
    {
        takeOver(this);
        if constexpr (std::is_void_v<std::invoke_result_t<T&, Args...>>) {
            std::invoke(m_value, std::forward<Args>(args)...);
            handOver(this);
        } else {
            decltype(auto) result = std::invoke(m_value, std::forward<Args>(args)...);
            handOver(this);
            return result;
        }
    }

private:
    T m_value;
};

template <class T>
Handed(T) -> Handed<T>;

} // namespace kelvane
